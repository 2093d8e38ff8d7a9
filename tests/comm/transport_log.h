#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "comm/com_layer_log.h"
#include "comm/comm_log_file.h"

namespace marbex::tests {

// A communication log of one transport's own, mask 13 until told otherwise.
class TransportLog {
public:
    TransportLog()
    {
        log.SetMode(comm::kLogToFile, 13);
        log.SetPath(path_.c_str());
        Forget();
    }

    comm::CComLayerLog log;

    void Forget() const { std::ofstream(path_, std::ios::trunc).close(); }
    std::string Text() const { return ReadLog(path_); }
    std::vector<std::string> Lines() const { return ReadLogLines(path_); }

    // The last line says what a person who looks for the code must find.
    std::string Last() const
    {
        const auto lines = Lines();
        return lines.empty() ? "" : lines.back();
    }

private:
    TemporaryFolder folder_;
    std::string path_ = folder_.File("comm.log");
};

}  // namespace marbex::tests
