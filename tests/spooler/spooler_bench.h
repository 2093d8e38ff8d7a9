#pragma once

// A spooler on a bench: a printer that fails on demand, and a callback that plays the device and answers errors.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "common/jumping_clock.h"
#include "spooler/fake_printer.h"
#include "spooler/print_spooler.h"

namespace marbex::test {

using Condition = FakePrinter::Condition;

inline constexpr auto kSoon = std::chrono::seconds(20);

struct Report {
    int32_t code;
    int32_t argument2;
};

class SpoolerBench : public testing::Test {
protected:
    void SetUp() override { OpenWith(spooler); }

    void OpenWith(spooler::CPrintSpooler& opened, uint32_t options = 0)
    {
        ASSERT_EQ(opened.Open(options), 0);
        opened.SetCallback(&SpoolerBench::OnReport, this);
        opened.AttachPrinter(&printer);
        opened.Clear();
        AwaitReport(spooler::CB_STATUSCHANGE);
    }

    static int32_t OnReport(void* context, int32_t code, intptr_t, intptr_t argument2)
    {
        auto& self = *static_cast<SpoolerBench*>(context);
        std::function<int32_t()> answer;
        {
            const std::lock_guard hold(self.mutex);
            self.reports.push_back({code, static_cast<int32_t>(argument2)});
            answer = self.onError;
        }
        self.changed.notify_all();
        return code == spooler::CB_PRINTERROR && answer ? answer() : 0;
    }

    bool AwaitReport(int32_t code, std::size_t times = 1)
    {
        std::unique_lock hold(mutex);
        return changed.wait_for(hold, kSoon, [&] { return CountLocked(code) >= times; });
    }

    std::size_t CountLocked(int32_t code) const
    {
        return static_cast<std::size_t>(std::count_if(reports.begin(), reports.end(),
                                                      [code](const Report& report) { return report.code == code; }));
    }

    std::size_t Count(int32_t code)
    {
        const std::lock_guard hold(mutex);
        return CountLocked(code);
    }

    void OnError(std::function<int32_t()> answer)
    {
        const std::lock_guard hold(mutex);
        onError = std::move(answer);
    }

    JumpingClock clock;
    FakePrinter printer{clock};
    spooler::ApplicationThread plain;
    const spooler::SpoolerTraits reference{};
    const spooler::SpoolerTraits second{"CPrintSpoolerOrven", spooler::JobNumbering::kSecond, true, false, false};
    std::atomic<int32_t> id{0};

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Report> reports;
    std::function<int32_t()> onError;

    spooler::CPrintSpooler spooler{reference, clock, plain};
};

}  // namespace marbex::test
