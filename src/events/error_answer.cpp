// The error event's way back: whoever fires it waits for its own record to be answered.
//
// The answer can come from the application (through the window), from Clear (the record was still queued) and from
// closing. On the thread that owns the window the wait runs that thread's messages, or nothing would ever arrive; and
// two cases end it without the application: an application that froze its own events and then waits in a print call
// could never unfreeze them, so half a minute of frozen time counts as CLEAR; and inside an event delivery the event
// thread cannot post another event, so the record goes to the window procedure directly.

#include <algorithm>

#include "events/event_handler.h"
#include "opos/common.h"
#include "platform/memory.h"
#include "support/service_log.h"

namespace marbex::events {

using platform::LockHold;
using platform::WaitForMemory;
using support::LogWrite;

namespace {

constexpr uint32_t kNetAnswerMilliseconds = 1000;
constexpr uint64_t kFrozenLimitMilliseconds = 30000;
constexpr uint32_t kLookMilliseconds = 50;  // how often a wait on the window's thread looks at the freeze

}  // namespace

int32_t CEventHandler::FireErrorEvent(int32_t resultCode, int32_t resultCodeExtended, int32_t presetAnswer,
                                      ErrorOrigin origin)
{
    LogWrite("[CEventHandler] --- FireErrorEvent Begin (%d, %d)", resultCode, resultCodeExtended);
    const bool net = netMode.load();
    const auto record = WaitForMemory(clock_, [=] {
        return std::make_shared<ErrorEventRecord>(resultCode, resultCodeExtended, opos::OPOS_EL_OUTPUT,
                                                  net ? opos::OPOS_ER_CLEAR : presetAnswer, origin);
    });
    WaitForMemory(clock_, [&] { Await(record); });
    if (!record->IsResolved()) {
        const bool windowThread = IsWindowThread();
        const bool handDirectly = windowThread && DeliversOnCallingThread();
        if (!handDirectly) DoQueueEvent(record);
        LogWrite("[CEventHandler] --- FireErrorEvent Wait For Response...");
        if (net) {
            platform::WaitObject& answered = *record->ErrorResponseReturned;
            if (handDirectly) {
                window->DeliverDirectly(record);
            } else if (windowThread) {
                platform::WaitForOneRunningMessages(answered, kNetAnswerMilliseconds);
            } else {
                platform::WaitForOne(answered, kNetAnswerMilliseconds);
            }
            record->Resolve(opos::OPOS_ER_CLEAR);
        } else if (windowThread) {
            WaitOnWindowThread(record, handDirectly);
        } else {
            platform::WaitForOne(*record->ErrorResponseReturned, platform::kForever);
        }
    }
    StopAwaiting(*record);
    LogWrite("[CEventHandler] --- FireErrorEvent End");
    return record->Answer();
}

void CEventHandler::WaitOnWindowThread(const std::shared_ptr<ErrorEventRecord>& record, bool handDirectly)
{
    uint64_t frozenMilliseconds = 0;
    uint64_t lookedAt = clock_.Milliseconds();
    while (!record->IsResolved()) {
        if (handDirectly && !IsFrozen()) {
            window->DeliverDirectly(record);
            // Without a receiver nobody answered, and nobody will.
            record->Resolve(record->errorResponse.load());
            return;
        }
        platform::WaitForOneRunningMessages(*record->ErrorResponseReturned, kLookMilliseconds);
        const uint64_t now = clock_.Milliseconds();
        if (IsFrozen()) frozenMilliseconds += now - lookedAt;
        lookedAt = now;
        if (frozenMilliseconds >= kFrozenLimitMilliseconds && (handDirectly || Unqueue(*record))) {
            LogWrite("[CEventHandler] --- FireErrorEvent Events stay frozen, Withdrawn");
            record->Resolve(opos::OPOS_ER_CLEAR);
        }
    }
}

void CEventHandler::Await(const std::shared_ptr<ErrorEventRecord>& record)
{
    LockHold hold(awaitedLock_);
    // Under the lock, so that closing either finds the record here or is seen here.
    if (closing_.load()) record->Resolve(opos::OPOS_ER_CLEAR);
    awaited_.push_back({record, platform::CurrentThreadId()});
}

void CEventHandler::StopAwaiting(const ErrorEventRecord& record)
{
    LockHold hold(awaitedLock_);
    std::erase_if(awaited_, [&record](const Awaited& awaited) { return awaited.record.get() == &record; });
}

void CEventHandler::BeginClosing()
{
    LockHold hold(awaitedLock_);
    closing_ = true;
    for (const Awaited& awaited : awaited_)
        awaited.record->Resolve(opos::OPOS_ER_CLEAR);
}

bool CEventHandler::ErrorAnswerAwaitedElsewhere() const
{
    LockHold hold(awaitedLock_);
    return std::any_of(awaited_.begin(), awaited_.end(), [](const Awaited& awaited) {
        return !awaited.record->IsResolved() && awaited.thread != platform::CurrentThreadId();
    });
}

}  // namespace marbex::events
