#pragma once

#include <string>
#include <utility>

#include "platform/lock.h"

namespace marbex::device {

// A text that one thread sets while another reads it.
class LockedText {
public:
    std::string Get() const
    {
        platform::LockHold hold(lock_);
        return text_;
    }

    void Set(std::string text)
    {
        platform::LockHold hold(lock_);
        text_ = std::move(text);
    }

private:
    mutable platform::Lock lock_;
    std::string text_ MARBEX_GUARDED_BY(lock_);
};

}  // namespace marbex::device
