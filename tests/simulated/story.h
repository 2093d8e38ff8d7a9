#pragma once

// What happened in a run, line by line: printed when somebody reads along, and one number that two equal runs share.

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/simulated/machine/scheduler.h"

namespace marbex::tests {

class Story {
public:
    bool aloud = false;

    void Tell(std::string_view line)
    {
        const simulated::Scheduler& processor = simulated::Processor();
        const auto now = static_cast<unsigned long long>(processor.Now());
        char place[64];
        std::snprintf(place, sizeof place, "%8llu.%03llu %-2llu ", now / 1000, now % 1000,
                      static_cast<unsigned long long>(processor.IsRunning() ? simulated::Processor().Current().id : 0));
        Add(place);
        Add(line);
        ++lines_;
        if (aloud) std::printf("%s%.*s\n", place, static_cast<int>(line.size()), line.data());
    }

    // Beyond what is told: logs and bytes.
    void Add(std::string_view bytes)
    {
        // FNV-1a, 64 bits.
        for (const char byte : bytes)
            fingerprint_ = (fingerprint_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }

    uint64_t Fingerprint() const { return fingerprint_; }
    uint64_t Lines() const { return lines_; }

private:
    uint64_t fingerprint_ = 0xCBF29CE484222325;
    uint64_t lines_ = 0;
};

}  // namespace marbex::tests
