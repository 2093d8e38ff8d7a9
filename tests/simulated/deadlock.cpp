// What the report of a run says that cannot go on.

#include <cstdio>
#include <cstdlib>

#include "platform/clock.h"
#include "platform/kernel.h"
#include "platform/simulated/machine/scheduler.h"
#include "run.h"

namespace marbex::tests {

using platform::Mutex;

void RunDeadlock()
{
    const auto report = [](const std::string& why) {
        std::printf("%s", why.c_str());
        std::fflush(stdout);
        std::_Exit(0);
    };
    simulated::Processor().Run(1, {}, report, [] {
        const auto one = Mutex::Create("one");
        const auto other = Mutex::Create("other");
        const auto takeBoth = [](Mutex& first, Mutex& second) {
            const platform::MutexHold holdFirst(first);
            platform::SystemClock().Sleep(10);
            const platform::MutexHold holdSecond(second);
        };
        const auto thread = platform::Thread::Start([&] { takeBoth(*other, *one); });
        takeBoth(*one, *other);
    });
    std::_Exit(1);
}

}  // namespace marbex::tests
