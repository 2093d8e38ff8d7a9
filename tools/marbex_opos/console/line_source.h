#pragma once

// Where the console's lines come from. While no line is there, the messages of the calling thread run, so that events
// come when they happen.

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marbex::tools {

// How a POSIX line source learns of the messages that the server keeps. On Windows the messages of a thread are the
// system's own: whoever waits there waits for them too and needs none of this.
struct MessageHooks {
    std::function<int()> descriptor;    // readable when messages wait; -1 while there can be none
    std::function<void()> runMessages;  // those that wait
};

class LineSource {
public:
    virtual ~LineSource() = default;
    virtual std::optional<std::string> NextLine() = 0;  // without its end; none when the input has ended
    virtual void BeforeOutput() {}  // a line of output follows: makes room for it on a screen that shows a prompt
    virtual void AfterOutput() {}
};

// Standard input when path is empty. Null when the file cannot be opened.
std::unique_ptr<LineSource> OpenLines(const std::string& path, const MessageHooks& hooks);

// A prompt on the terminal with editing, history and completion.
std::unique_ptr<LineSource> OpenTerminal(const MessageHooks& hooks);

}  // namespace marbex::tools
