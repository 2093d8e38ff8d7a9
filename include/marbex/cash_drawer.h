#pragma once

// The cash drawer on the printer's connector.

#include <marbex/class_ids.h>
#include <marbex/detail/companion.h>

namespace marbex {

class CashDrawer final : public detail::Companion {
public:
    explicit CashDrawer(Printer& printer) : Companion(kCashDrawerProgId, "CashDrawer", printer) {}
    ~CashDrawer() { CloseQuietly(); }

    // Queued behind the printer's output in its asynchronous mode.
    Result OpenDrawer() { return Output(u"OpenDrawer"); }

    // How long the pulse is and the pause after it: 50 to 510 ms each, 100 at the start. kIllegal outside of that.
    Result SetPulse(std::chrono::milliseconds on, std::chrono::milliseconds off)
    {
        const Result result = SetTime(kOnTime, on);
        return result == Result::kSuccess ? SetTime(kOffTime, off) : result;
    }

private:
    static constexpr int32_t kOnTime = 257;
    static constexpr int32_t kOffTime = 258;

    Result SetTime(int32_t command, std::chrono::milliseconds time)
    {
        int32_t data = Milliseconds(time);
        return Do(u"DirectIO", command, &data, std::string_view());
    }
};

}  // namespace marbex
