#pragma once

#include <atomic>
#include <cstdint>

#include "platform/kernel.h"
#include "platform/lock.h"

namespace marbex::device {

// What the device is doing, and the State property that follows from it: ERROR while an error waits for its answer,
// else BUSY while a job is under way, else IDLE. A job is under way from the spooler's report that it begins until it
// is complete or, for one that fails, until the next report or the end of the call that printed it.
//
// Any thread. Nothing changes the state of a device that is closed or closing.
class Activity {
public:
    // state is the property, which others read without a lock; closing says that the device answers as closed.
    Activity(std::atomic<int32_t>& state, const std::atomic<bool>& closing) : state_(state), closing_(closing) {}
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    void Open();
    void Close();

    // The job of a call on the calling thread; depth tells that call from one that an event handler makes inside it.
    void JobOfCallBegins(int32_t depth);
    void JobOfCallIsComplete();
    // The call ends, whatever became of its job, if it had one.
    void CallEnds(int32_t depth);

    void QueuedJobBegins();
    void QueuedJobIsComplete();
    void QueueIsEmpty();

    void ErrorBegins();
    void ErrorIsDelivered();
    // The application's handler has returned. Until the thread that asked goes on, a job's error leaves the device
    // idle.
    void ErrorIsAnswered(bool ofPolling);
    // The thread that asked goes on with the answer.
    void ErrorEnds(bool ofPolling, int32_t answer);
    bool IsLastError() const;

private:
    int32_t Resting(int32_t errorsAside = 0) const MARBEX_REQUIRES(lock_);
    void Become(int32_t state) MARBEX_REQUIRES(lock_);

    std::atomic<int32_t>& state_;
    const std::atomic<bool>& closing_;
    mutable platform::Lock lock_;
    int32_t errors_ MARBEX_GUARDED_BY(lock_) = 0;  // whose answer is awaited
    bool queuedJob_ MARBEX_GUARDED_BY(lock_) = false;
    bool jobOfCall_ MARBEX_GUARDED_BY(lock_) = false;
    // The call whose job it is, or was until it failed.
    platform::ThreadId callThread_ MARBEX_GUARDED_BY(lock_) = 0;
    int32_t callDepth_ MARBEX_GUARDED_BY(lock_) = 0;
};

}  // namespace marbex::device
