#pragma once

// Stories of a transport; what it writes is the communication log. Each is on a machine of its own.

#include <fstream>
#include <string>

#include "comm/com_layer_log.h"
#include "comm/comm_log_file.h"
#include "comm/test_clock.h"
#include "common/story.h"
#include "platform/stop_signal.h"

namespace marbex::tests {

class TransportStory : public StoryTeller {
protected:
    TransportStory()
    {
        log.SetMode(comm::kLogToFile, 13);
        log.SetPath(path_.c_str());
        TransportStory::Forget();
        verbs["mask"] = [this](const Words& words) { return log.SetMode(comm::kLogToFile, Number(words[0])), ""; };
        verbs["wait"] = [this](const Words& words) { return clock.Sleep(Number(words[0])), ""; };
        verbs["closing"] = [this](const Words& words) { return stop.Set(words[0] == "on"), ""; };
    }

    Words Written() const override { return ReadLogLines(path_); }
    void Forget() override { std::ofstream(path_, std::ios::trunc).close(); }

    TestClock clock;
    platform::StopSignal stop;

private:
    TemporaryFolder folder_;
    std::string path_ = folder_.File("comm.log");

protected:
    comm::CComLayerLog log;
};

}  // namespace marbex::tests
