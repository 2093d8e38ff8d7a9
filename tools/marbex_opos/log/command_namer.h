#pragma once

// The bytes of a link as a person reads them: what is sent by the names of the printers' commands, what comes back by
// what was asked.

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/language/link_input.h"

namespace marbex::tools {

class CommandNamer {
public:
    CommandNamer();

    // The commands that these bytes complete, a line each; what is left unfinished belongs to the next ones.
    std::vector<std::string> Sent(std::string_view bytes);
    std::string Received(std::string_view bytes);

private:
    void Take(const virtual_printer::Command& command);
    void EndRun();
    void Asked(const std::string& question);

    std::vector<std::string> lines_;
    virtual_printer::Op runOp_ = virtual_printer::Op::kUnknown;
    virtual_printer::Bytes run_;  // characters, or rows of a picture, that stand together
    int rows_ = 0;
    std::deque<std::string> questions_;  // not answered yet
    virtual_printer::LinkInput input_;
};

}  // namespace marbex::tools
