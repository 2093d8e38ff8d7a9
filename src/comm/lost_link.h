#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace marbex::comm {

// Remembers that a link was lost, not closed by its user, and paces the tries to get it back: the first at once, each
// further one at least two seconds after the end of the one before, so that polling a dead printer stays cheap.
class LostLink {
public:
    explicit LostLink(platform::Clock& clock) : clock_(clock) {}

    void Lose()
    {
        lost_ = true;
        tried_ = false;
    }
    void Forget() { lost_ = false; }

    // Runs open (bool()) when the link is lost and a try is due; true when it succeeded.
    template <typename Open>
    bool TryAgain(Open open)
    {
        if (!lost_ || (tried_ && clock_.Milliseconds() - lastTry_ < kPaceMilliseconds)) return false;
        const bool opened = open();
        lost_ = !opened;
        tried_ = true;
        lastTry_ = clock_.Milliseconds();
        return opened;
    }

private:
    static constexpr uint64_t kPaceMilliseconds = 2000;

    platform::Clock& clock_;
    bool lost_ = false;
    bool tried_ = false;
    uint64_t lastTry_ = 0;
};

}  // namespace marbex::comm
