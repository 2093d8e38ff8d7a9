#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace marbex::printer {

// The two seconds that a printer has for an answer. Counted in whole seconds they last until the third second of the
// clock has begun, so up to one second longer.
class AnswerTimeLimit {
public:
    enum class Unit : uint8_t { kMilliseconds, kWholeSeconds };

    AnswerTimeLimit(const platform::Clock& clock, Unit unit) : clock_(clock), unit_(unit), start_(Now()) {}

    bool Passed() const { return Now() - start_ > (unit_ == Unit::kWholeSeconds ? 2 : 2000); }

private:
    int64_t Now() const
    {
        return unit_ == Unit::kWholeSeconds ? clock_.Seconds() : static_cast<int64_t>(clock_.Milliseconds());
    }

    const platform::Clock& clock_;
    Unit unit_;
    int64_t start_;
};

// Between two reads of a port that comes back at once with nothing.
inline constexpr uint32_t kEmptyReadPauseMilliseconds = 10;

}  // namespace marbex::printer
