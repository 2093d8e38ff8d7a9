#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>

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
    bool Has(const std::string& line) const { return Text().find(line + "\n") != std::string::npos; }

    // The last line says what a person who looks for the code must find.
    std::string Last() const
    {
        const auto lines = ReadLogLines(path_);
        return lines.empty() ? "" : lines.back();
    }

private:
    TemporaryFolder folder_;
    std::string path_ = folder_.File("comm.log");
};

}  // namespace marbex::tests
