#pragma once

#include <list>
#include <optional>
#include <string>

#include "virtual_printer/posix/descriptor.h"

namespace marbex::virtual_printer {

// The lines of standard input, and of those who connect to a unix socket, until a signal asks the program to end
// (SIGINT, SIGTERM). Make it before any thread.
//
// The end of a pipe or of a terminal's input ends the lines; without input (/dev/null, a file that has been read) only
// a signal does, so that the program can be run in the background. With a socket standard input may end.
class CommandInput {
public:
    // socket: the path of the socket, which only the user may use; empty for none. Throws std::system_error when it
    // cannot be made.
    explicit CommandInput(const std::string& socket = {});
    ~CommandInput();
    CommandInput(const CommandInput&) = delete;
    CommandInput& operator=(const CommandInput&) = delete;

    std::optional<std::string> NextLine();
    // Answers whom the last line came from, when that was a connection. One that does not read is closed.
    void Reply(const std::string& line);

private:
    // Where lines come from. Standard input is the first one.
    struct Source {
        Descriptor connection;
        int fd = -1;
        std::string text;
        bool tooLong = false;  // the beginning of the line has been thrown away
        bool atEnd = false;
    };
    static std::optional<std::string> LineOf(Source& source);
    static void ReadMore(Source& source);
    std::optional<std::string> LineAtHand();
    bool WaitForMore();  // false when a signal asks for the end

    static constexpr std::size_t kMostConnections = 16;

    Descriptor signals_;
    std::string socket_;
    Descriptor listener_;
    std::list<Source> sources_;
    Source* last_ = nullptr;  // whom the last line came from
    bool endsWithInput_ = false;
};

}  // namespace marbex::virtual_printer
