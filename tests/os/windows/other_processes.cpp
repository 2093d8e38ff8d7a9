#include "other_processes.h"

#include <windows.h>

namespace marbex::tests {

bool RunInOtherProcesses(const std::string& test, const char* variable, const std::vector<std::string>& values)
{
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::vector<HANDLE> children;
    for (const std::string& value : values) {
        SetEnvironmentVariableA(variable, value.c_str());
        std::string command = "\"" + std::string(program) + "\" --gtest_filter=" + test + " --gtest_brief=1";
        STARTUPINFOA start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION child{};
        if (!CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &child))
            break;
        CloseHandle(child.hThread);
        children.push_back(child.hProcess);
    }
    SetEnvironmentVariableA(variable, nullptr);
    bool passed = children.size() == values.size();
    for (const HANDLE child : children) {
        DWORD status = 1;
        WaitForSingleObject(child, INFINITE);
        passed = GetExitCodeProcess(child, &status) && status == 0 && passed;
        CloseHandle(child);
    }
    return passed;
}

}  // namespace marbex::tests
