#pragma once

#include "platform/stop_signal.h"

namespace marbex::comm {

// Whether a link is given up: while its user is closing it has been waited for in vain once, so that nothing waits for
// it again. Or closing would take as long for each transfer that is still to come as it took for the first.
class GivenUp {
public:
    explicit GivenUp(const platform::StopSignal& stop) : stop_(stop) {}

    void WaitedInVain() { waited_ = stop_.IsSet(); }
    explicit operator bool() const { return waited_ && stop_.IsSet(); }

private:
    const platform::StopSignal& stop_;
    bool waited_ = false;
};

}  // namespace marbex::comm
