#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace marbex::virtual_printer {

// A line of a script: a command, when it is to be done included, or a time to wait.
struct ScriptStep {
    int line = 0;  // of the file, from 1
    std::string command;
    std::chrono::milliseconds wait{0};  // without a command
};

// A script that cannot be read or understood; tells the file, the line and what is wrong there.
class BadScript : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The steps of a file. Empty lines and those that begin with # are none. wrong: what is wrong with a command, or
// nothing. Throws BadScript.
std::vector<ScriptStep> ReadScript(const std::string& file,
                                   const std::function<std::string(const std::string& command)>& wrong);

}  // namespace marbex::virtual_printer
