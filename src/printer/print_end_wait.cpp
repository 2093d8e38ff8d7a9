#include "printer/print_end_wait.h"

#include "printer/status_query.h"

namespace marbex::printer {

namespace {

constexpr uint32_t kFirstPauseMilliseconds = 100;
constexpr uint32_t kPauseMilliseconds = 50;
constexpr uint64_t kLimitMilliseconds = 60000;
constexpr uint32_t kFailureBits = kFullStatusPaperEnd | kFullStatusCover | kFullStatusJam;

int32_t AskUntilPrinted(const PrinterLink& link, platform::Clock& clock, const std::atomic<bool>& stop)
{
    const uint64_t start = clock.Milliseconds();
    while (!stop.load() && clock.Milliseconds() - start < kLimitMilliseconds) {
        std::optional<uint32_t> fullStatus;
        if (const int32_t written = AskFullStatus(link, fullStatus)) return written;
        if (fullStatus) {
            if ((*fullStatus & kFailureBits) != 0) return 1;
            if ((*fullStatus & kFullStatusPrinting) == 0) return 0;
        }
        clock.Sleep(kPauseMilliseconds);
    }
    return 1;
}

}  // namespace

int32_t WaitForPrintEnd(const PrinterLink& link, platform::Clock& clock, const std::atomic<bool>& stop)
{
    link.CleanInput();
    clock.Sleep(kFirstPauseMilliseconds);
    const int32_t result = AskUntilPrinted(link, clock, stop);
    link.CleanInput();
    return result;
}

}  // namespace marbex::printer
