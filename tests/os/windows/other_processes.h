#pragma once

#include <string>
#include <vector>

namespace marbex::tests {

// Runs one test of this program in other processes, all at once, each with one of the values in the environment
// variable, and waits for them; whether all passed.
bool RunInOtherProcesses(const std::string& test, const char* variable, const std::vector<std::string>& values);

}  // namespace marbex::tests
