#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace marbex::tests {

// Runs one test of this program in other processes, all at once, each with one of the values in the environment
// variable, and waits for them; whether all passed.
inline bool RunInOtherProcesses(const std::string& test, const char* variable, const std::vector<std::string>& values)
{
    std::vector<pid_t> children;
    for (const std::string& value : values) {
        const pid_t child = fork();
        if (child == 0) {
            setenv(variable, value.c_str(), 1);
            execl("/proc/self/exe", "test", ("--gtest_filter=" + test).c_str(), "--gtest_brief=1", nullptr);
            _exit(127);
        }
        children.push_back(child);
    }
    bool passed = true;
    for (const pid_t child : children) {
        int status = -1;
        passed = child > 0 && waitpid(child, &status, 0) == child && status == 0 && passed;
    }
    return passed;
}

}  // namespace marbex::tests
