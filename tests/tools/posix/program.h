#pragma once

// The program as a shell runs it, with a registry of the test's own.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>

#include "temp_registry.h"

namespace marbex::tools {

struct Finished {
    int status = -1;
    std::string output;  // standard output and error
};

// Runs a line of the shell.
inline Finished Finish(const std::string& command)
{
    Finished finished;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer;
    for (std::size_t got = 0; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        finished.output.append(buffer.data(), got);
    finished.status = WEXITSTATUS(pclose(pipe));
    return finished;
}

class ProgramTest : public ::testing::Test {
protected:
    Finished Run(const std::string& arguments, const std::string& input = "")
    {
        const std::string inputFile = registry_.Folder() + "/input";
        std::ofstream(inputFile, std::ios::binary) << input;
        const std::string command = "'" MARBEX_PROGRAM_FILE "' " + arguments + " --registry '" + registry_.File() +
                                    "' 2>&1 <'" + inputFile + "'";
        return Finish(command);
    }
    void AddTill(uint16_t port)
    {
        const Finished added =
            Run("devices add Till1 'PrinterModel=TALIS ETHERNET' IPAddress=127.0.0.1 LogPath=" + registry_.Folder() +
                " Port=" + std::to_string(port));
        ASSERT_EQ(added.status, 0) << added.output;
    }

    tests::TempRegistry registry_;
};

}  // namespace marbex::tools
