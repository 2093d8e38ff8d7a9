#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "events/event_interface.h"
#include "events/event_record.h"
#include "platform/clock.h"
#include "platform/kernel.h"
#include "platform/lock.h"

namespace marbex::events {

inline constexpr int32_t CB_DIRECTIOEVENT = 0;
inline constexpr int32_t CB_ERROREVENT = 1;
inline constexpr int32_t CB_OUTPUTCOMPLETEEVENT = 2;
inline constexpr int32_t CB_STATUSUPDATEEVENT = 3;

// The events of one device: fired by any thread, queued in order, delivered one at a time on the thread that opened the
// handler, held back while frozen. An error event brings the application's answer back to whoever fired it.
//
// Fire..., Clear and the freezes may be called from any thread; Open and Close from the application's. The essay on who
// waits for whom is in event_thread.cpp.
class CEventHandler {
public:
    using Callback = int32_t (*)(void* context, int32_t code, EventRecord& record);

    explicit CEventHandler(platform::Clock& clock);
    virtual ~CEventHandler();
    CEventHandler(const CEventHandler&) = delete;
    CEventHandler& operator=(const CEventHandler&) = delete;

    virtual int32_t Open();  // -1 when no window or thread can be had; closes first when open
    virtual void Close();    // delivers nothing more
    // Null pointers stand for 0 and empty text.
    virtual void FireDirectIOEvent(int32_t eventNumber, const int32_t* pData, const std::u16string* pString);
    virtual void FireOutputCompleteEvent(int32_t outputId);
    // Returns the application's answer. presetAnswer is what the application finds in the response and what stands when
    // it leaves it alone; in NET mode it is OPOS_ER_CLEAR whatever is given.
    virtual int32_t FireErrorEvent(int32_t resultCode, int32_t resultCodeExtended, int32_t presetAnswer,
                                   ErrorOrigin origin);
    virtual void FireStatusUpdateEvent(int32_t data);
    virtual void SetNetMode(bool mode) { netMode = mode; }
    // An error event taken out of the queue is answered OPOS_ER_CLEAR.
    enum class ErrorEvents : uint8_t { kCleared, kKept };
    virtual int32_t Clear(ErrorEvents errors = ErrorEvents::kCleared);
    virtual void SetCallback(Callback fn, void* context);
    virtual void RemoveCallback() { callback = nullptr; }
    virtual void COFreezeEvents(bool freeze);
    virtual void FreezeEvents(bool freeze);
    virtual int32_t DirectIOEventCode() const { return CB_DIRECTIOEVENT; }
    virtual int32_t ErrorEventCode() const { return CB_ERROREVENT; }
    virtual int32_t OutputCompleteEventCode() const { return CB_OUTPUTCOMPLETEEVENT; }
    virtual int32_t StatusUpdateEventCode() const { return CB_STATUSUPDATEEVENT; }

    // Used by the window.
    int32_t InvokeCallback(int32_t code, EventRecord& record);

    // Whose life a delivery holds; when it has expired nothing is delivered any more.
    void SetOwner(std::weak_ptr<void> owner);
    bool HasOwner() const { return hasOwner_.load(); }
    std::shared_ptr<void> Owner() const;

    // The device is about to close: every error answer that is awaited, and every later one, is OPOS_ER_CLEAR at once.
    void BeginClosing();
    bool IsClosing() const { return closing_.load(); }

    bool IsFrozen() const;
    bool IsWindowThread() const { return window->BelongsToCallingThread(); }
    bool DeliversOnCallingThread() const { return window->DeliversOnCallingThread(); }
    // Whether a thread other than the calling one waits for the answer to an error event.
    bool ErrorAnswerAwaitedElsewhere() const;

private:
    struct Awaited {
        std::shared_ptr<ErrorEventRecord> record;
        platform::ThreadId thread;
    };

    void DoQueueEvent(const std::shared_ptr<EventRecord>& record);
    bool Unqueue(const EventRecord& record);
    void Switch(platform::Event& unfrozen, bool freeze);
    void Await(const std::shared_ptr<ErrorEventRecord>& record);
    void StopAwaiting(const ErrorEventRecord& record);
    void WaitOnWindowThread(const std::shared_ptr<ErrorEventRecord>& record, bool handDirectly);
    void EventThread();
    std::shared_ptr<EventRecord> TakeHead();
    bool Post(const std::shared_ptr<EventRecord>& record);
    void DeliverOne(const std::shared_ptr<EventRecord>& record);
    void SuspendWhenEmpty();
    void RemoveAllQueued();

    platform::Clock& clock_;
    std::atomic<bool> netMode{false};
    const std::shared_ptr<CEventInterface> window;
    std::atomic<bool> terminateRequest{false};
    std::atomic<bool> closing_{false};

    const std::unique_ptr<platform::Mutex> EventQueueAvailable;
    const std::unique_ptr<platform::Event> EventThreadActive;
    const std::unique_ptr<platform::Event> FreezeEventsUnfrozen;
    const std::unique_ptr<platform::Event> COFreezeEventsUnfrozen;
    std::deque<std::shared_ptr<EventRecord>> queue MARBEX_GUARDED_BY(*EventQueueAvailable);

    std::atomic<Callback> callback{nullptr};
    std::atomic<void*> callbackContext{nullptr};
    std::unique_ptr<platform::Thread> thread;

    mutable platform::Lock awaitedLock_;
    std::vector<Awaited> awaited_ MARBEX_GUARDED_BY(awaitedLock_);
    mutable platform::Lock ownerLock_;
    std::weak_ptr<void> owner_ MARBEX_GUARDED_BY(ownerLock_);
    std::atomic<bool> hasOwner_{false};
};

}  // namespace marbex::events
