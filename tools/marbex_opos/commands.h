#pragma once

// The commands of the program. Each returns the program's exit status: 0 when it did what was asked, 1 when it could
// not (the reason is on standard error), and for the console 2 when a statement failed.

#include <string>
#include <vector>

namespace marbex::tools {

struct ConsoleOptions {
    std::string server;  // library to load; empty: the registered one
    std::string script;  // empty: standard input
    bool echo = false;
};
int RunConsole(const ConsoleOptions& options);

}  // namespace marbex::tools
