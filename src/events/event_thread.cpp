// The event thread: takes the events one by one and gives each to the delivery window.
//
// Who waits for whom, and why it always ends:
//
// - The thread waits until there is an event and neither switch is frozen, all three at once. Close sets all three
//   after it has set terminateRequest.
// - It then waits for the window, in slices of 2 s, and looks at terminateRequest after each (event_interface.cpp).
// - A thread that fired an error event waits for that record's answer (error_answer.cpp). It holds no lock of this
//   handler.
// - EventQueueAvailable is held for list operations only.

#include <new>

#include "events/event_handler.h"
#include "opos/common.h"
#include "support/service_log.h"

namespace marbex::events {

using platform::MutexHold;
using support::LogWrite;

namespace {

constexpr uint32_t kSliceMilliseconds = 2000;

}  // namespace

void CEventHandler::EventThread()
{
    LogWrite("[CEventHandler] --- EventThread Started");
    while (!terminateRequest.load()) {
        LogWrite("[CEventHandler] --- EventThread Suspended");
        platform::WaitObject* const all[] = {EventThreadActive.get(), FreezeEventsUnfrozen.get(),
                                             COFreezeEventsUnfrozen.get()};
        platform::WaitForAll(all, platform::kForever);
        if (terminateRequest.load()) break;
        LogWrite("[CEventHandler] --- EventThread Awaiked");
        if (const std::shared_ptr<EventRecord> record = TakeHead()) DeliverOne(record);
        SuspendWhenEmpty();
    }
    RemoveAllQueued();
    LogWrite("[CEventHandler] --- EventThread Stopped");
}

std::shared_ptr<EventRecord> CEventHandler::TakeHead()
{
    LogWrite("[CEventHandler] --- EventThread WAIT Queue Available");
    MutexHold hold(*EventQueueAvailable);
    LogWrite("[CEventHandler] --- EventThread OK Queue Available");
    if (queue.empty()) return nullptr;
    std::shared_ptr<EventRecord> record = std::move(queue.front());
    queue.pop_front();
    return record;
}

// Without memory for it an event is not posted either.
bool CEventHandler::Post(const std::shared_ptr<EventRecord>& record)
{
    try {
        return window->Post(record);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void CEventHandler::DeliverOne(const std::shared_ptr<EventRecord>& record)
{
    LogWrite("[CEventHandler] --- EventThread SEND Message to Interface");
    platform::Event& complete = *window->EventProcessingComplete;
    while (!Post(record)) {
        if (terminateRequest.load()) break;
        // The window's queue is full, or there is no memory; the event is not given up.
        platform::WaitForOne(complete, kSliceMilliseconds);
    }
    LogWrite("[CEventHandler] --- EventThread WAIT for Interface to Complete Handling");
    while (!platform::WaitForOne(complete, terminateRequest.load() ? 0 : kSliceMilliseconds).Obtained()) {
        if (terminateRequest.load()) {
            LogWrite("[CEventHandler] --- EventThread FOUND Terminating Request");
            break;
        }
    }
    window->Forget();
    LogWrite("[CEventHandler] --- EventThread OK Interface has Finished");
}

void CEventHandler::SuspendWhenEmpty()
{
    LogWrite("[CEventHandler] --- EventThread WAIT Queue Available");
    MutexHold hold(*EventQueueAvailable);
    LogWrite("[CEventHandler] --- EventThread OK Queue Available");
    if (!queue.empty()) return;
    LogWrite("[CEventHandler] --- EventThread Event Queue Empty, SUSPEND Thread");
    if (!terminateRequest.load()) EventThreadActive->Reset();
}

void CEventHandler::RemoveAllQueued()
{
    LogWrite("[CEventHandler] --- EventThread FOUND Terminating Request");
    LogWrite("[CEventHandler] --- EventThread Stopping...");
    for (;;) {
        std::shared_ptr<EventRecord> record;
        {
            MutexHold hold(*EventQueueAvailable);
            if (queue.empty()) break;
            record = std::move(queue.front());
            queue.pop_front();
        }
        LogWrite("[CEventHandler] --- EventThread Removing All Events in Queue...");
        if (auto* error = dynamic_cast<ErrorEventRecord*>(record.get())) error->Resolve(opos::OPOS_ER_CLEAR);
    }
}

}  // namespace marbex::events
