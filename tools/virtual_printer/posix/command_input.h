#pragma once

#include <optional>
#include <string>

#include "virtual_printer/posix/descriptor.h"

namespace marbex::virtual_printer {

// The lines of standard input, until a signal asks the program to end (SIGINT, SIGTERM). Make it before any thread.
//
// The end of a pipe or of a terminal's input ends the lines; without input (/dev/null, a file that has been read) only
// a signal does, so that the program can be run in the background.
class CommandInput {
public:
    CommandInput();
    std::optional<std::string> NextLine();

private:
    void ReadMore();

    Descriptor signals_;
    std::string text_;
    bool tooLong_ = false;  // the beginning of the line has been thrown away
    bool atEnd_ = false;
    bool endsWithInput_ = false;
};

}  // namespace marbex::virtual_printer
