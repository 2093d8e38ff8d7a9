#include "device/activity.h"

#include "opos/common.h"

namespace marbex::device {

using platform::LockHold;

int32_t Activity::Resting(int32_t errorsAside) const
{
    if (errors_ > errorsAside) return opos::OPOS_S_ERROR;
    return queuedJob_ || jobOfCall_ ? opos::OPOS_S_BUSY : opos::OPOS_S_IDLE;
}

void Activity::Become(int32_t state)
{
    if (!closing_.load() && state_.load() != opos::OPOS_S_CLOSED) state_ = state;
}

void Activity::Open()
{
    const LockHold hold(lock_);
    errors_ = 0;
    queuedJob_ = false;
    jobOfCall_ = false;
    callThread_ = 0;
    state_ = opos::OPOS_S_IDLE;
}

void Activity::Close()
{
    const LockHold hold(lock_);
    state_ = opos::OPOS_S_CLOSED;
}

void Activity::JobOfCallBegins(int32_t depth)
{
    const LockHold hold(lock_);
    jobOfCall_ = true;
    callThread_ = platform::CurrentThreadId();
    callDepth_ = depth;
    Become(Resting());
}

void Activity::JobOfCallIsComplete()
{
    const LockHold hold(lock_);
    jobOfCall_ = false;
    Become(Resting());
}

void Activity::CallEnds(int32_t depth)
{
    const LockHold hold(lock_);
    if (callThread_ != platform::CurrentThreadId() || callDepth_ != depth) return;
    callThread_ = 0;
    if (!jobOfCall_) return;
    jobOfCall_ = false;
    Become(Resting());
}

void Activity::QueuedJobBegins()
{
    const LockHold hold(lock_);
    queuedJob_ = true;
    Become(Resting());
}

void Activity::QueuedJobIsComplete()
{
    const LockHold hold(lock_);
    queuedJob_ = false;
    Become(Resting());
}

void Activity::QueueIsEmpty()
{
    QueuedJobIsComplete();
}

void Activity::ErrorBegins()
{
    const LockHold hold(lock_);
    ++errors_;
    Become(opos::OPOS_S_ERROR);
}

void Activity::ErrorIsDelivered()
{
    const LockHold hold(lock_);
    Become(opos::OPOS_S_ERROR);
}

void Activity::ErrorIsAnswered(bool ofPolling)
{
    const LockHold hold(lock_);
    if (ofPolling || errors_ > 1) {
        Become(Resting(1));
    } else {
        Become(opos::OPOS_S_IDLE);
    }
}

void Activity::ErrorEnds(bool ofPolling, int32_t answer)
{
    const LockHold hold(lock_);
    --errors_;
    if (ofPolling || errors_ > 0) {
        if (state_.load() == opos::OPOS_S_ERROR) Become(Resting());
    } else {
        Become(answer == opos::OPOS_ER_CLEAR ? opos::OPOS_S_IDLE : opos::OPOS_S_BUSY);
    }
}

bool Activity::IsLastError() const
{
    const LockHold hold(lock_);
    return errors_ == 1;
}

}  // namespace marbex::device
