#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "events/event_record.h"
#include "platform/kernel.h"
#include "platform/lock.h"
#include "platform/window.h"

namespace marbex::events {

class CEventHandler;

// The delivery window: hidden, bound to the thread that opened the service, where every event is handed back to the
// handler and so to the control object. Only the event thread posts to it, one record at a time.
//
// Shared, because it outlives its handler when that is destroyed on another thread: the native window can be destroyed
// on its own thread only. Who waits for whom stands in event_interface.cpp.
class CEventInterface final : public platform::WindowProcedure, public std::enable_shared_from_this<CEventInterface> {
public:
    CEventInterface();
    ~CEventInterface();

    void Open(CEventHandler* newHandler);
    void Close();

    // The native window. Create keeps one that belongs to the calling thread and replaces any other; false when the
    // system refuses. Destroy returns before it has happened when called on another thread.
    bool CreateNativeWindow();
    void DestroyNativeWindow();
    bool BelongsToCallingThread() const;

    // Whether the calling thread is inside the delivery of an event.
    bool DeliversOnCallingThread() const { return BelongsToCallingThread() && deliveryDepth_.load() > 0; }

    // The event thread's side. Post makes record the outstanding one and posts it; false when posting failed or the
    // window has been told to stop. Forget ends the wait for it.
    bool Post(const std::shared_ptr<EventRecord>& record);
    void Forget();

    // No record is accepted any more and whoever waits for EventProcessingComplete is released. On the window's own
    // thread a message that has been posted is taken back; elsewhere it arrives late and is only acknowledged.
    void StopDeliveries();
    void AllowDeliveries();

    // Runs the window procedure's steps for a record on the calling thread, which must own the window.
    void DeliverDirectly(const std::shared_ptr<EventRecord>& record);

    // Manual-reset: set after each event message has been handled.
    const std::unique_ptr<platform::Event> EventProcessingComplete;

    int OnCreate() override;
    void OnDestroy() override;
    intptr_t WindowProc(uint32_t message, uintptr_t wParam, intptr_t lParam,
                        const std::function<intptr_t()>& defaultProcedure) override;

private:
    // What a delivery needs, taken in one step so that the handler cannot go away meanwhile.
    struct Receiver {
        CEventHandler* handler = nullptr;
        std::shared_ptr<void> owner;
    };

    std::shared_ptr<EventRecord> TakePosted(uintptr_t wParam);
    Receiver ReceiverOf() MARBEX_REQUIRES(lock_);
    void Hand(EventRecord& record, const Receiver& receiver);
    void HandTo(CEventHandler& target, EventRecord& record);

    mutable platform::Lock lock_;
    CEventHandler* handler MARBEX_GUARDED_BY(lock_) = nullptr;
    bool stopped_ MARBEX_GUARDED_BY(lock_) = false;
    std::shared_ptr<EventRecord> outstanding_ MARBEX_GUARDED_BY(lock_);
    std::vector<std::shared_ptr<EventRecord>> posted_ MARBEX_GUARDED_BY(lock_);  // whose message has not arrived yet
    std::shared_ptr<platform::Window> native_ MARBEX_GUARDED_BY(lock_);
    // Native windows that exist: one that was replaced lives until its own thread has destroyed it, and for as long as
    // there is one this object does.
    int windows_ MARBEX_GUARDED_BY(lock_) = 0;
    std::shared_ptr<CEventInterface> self_ MARBEX_GUARDED_BY(lock_);
    std::atomic<int> deliveryDepth_{0};
};

}  // namespace marbex::events
