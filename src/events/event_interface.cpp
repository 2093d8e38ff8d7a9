// The delivery window.
//
// Who waits for whom, and why it always ends:
//
// - The event thread posts one record and waits for EventProcessingComplete, in slices of 2 s, so that it notices a
//   request to end even if the window's thread never runs its messages again.
// - The window waits for nobody: it hands the record to the handler's callback and signals. What the application does
//   in its event handler takes as long as it takes; the device and this object are kept alive by references meanwhile.
// - Close on the window's thread takes a posted message back and releases the event thread at once. Close on another
//   thread lets the message arrive late; it is then acknowledged, not delivered, and completes nothing, since it is no
//   longer the outstanding record.
// - A message whose record is unknown here (any process may post to a window) is not touched.

#include "events/event_interface.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "events/event_handler.h"
#include "platform/text.h"
#include "support/kernel_names.h"
#include "support/service_log.h"

namespace marbex::events {

using platform::LockHold;
using support::LogWrite;

namespace {

constexpr const char* kWindowName = "EventInterfaceWindow";

bool IsEventMessage(uint32_t message)
{
    return message >= WM_SO_DIRECTIO_EVENT_MESSAGE && message <= WM_SO_STATUSUPDATE_EVENT_MESSAGE;
}

uintptr_t ParameterOf(const EventRecord& record)
{
    return reinterpret_cast<uintptr_t>(&record);
}

// Counts a delivery while the application's event handler may be running.
class DeliveryScope {
public:
    explicit DeliveryScope(std::atomic<int>& depth) : depth_(depth) { ++depth_; }
    ~DeliveryScope() { --depth_; }
    DeliveryScope(const DeliveryScope&) = delete;
    DeliveryScope& operator=(const DeliveryScope&) = delete;

private:
    std::atomic<int>& depth_;
};

void LogDelivery(const EventRecord& record)
{
    if (!support::LogIsEnabled()) return;
    if (const auto* directIO = dynamic_cast<const DirectIOEventRecord*>(&record)) {
        const std::string text = platform::NarrowAnsi(directIO->string);
        LogWrite(
            "[CEventInterface] ------ WindowProc Callback "
            "[WM_SO_DIRECTIO_EVENT_MESSAGE][Number=%d][Data=%d][String=%s]",
            directIO->eventNumber, directIO->data, text.c_str());
    } else if (const auto* error = dynamic_cast<const ErrorEventRecord*>(&record)) {
        LogWrite(
            "[CEventInterface] ------ WindowProc Callback "
            "[WM_SO_ERROR_EVENT_MESSAGE][ResultCode=%d][ResultCodeExtended=%d][ErrorLocus=%d][ErrorResponse=%d]",
            error->resultCode, error->resultCodeExtended, error->errorLocus, error->errorResponse.load());
    } else if (const auto* complete = dynamic_cast<const OutputCompleteEventRecord*>(&record)) {
        LogWrite("[CEventInterface] ------ WindowProc Callback [WM_SO_OUTPUTCOMPLETE_EVENT_MESSAGE][OutputID=%d]",
                 complete->outputId);
    } else if (const auto* status = dynamic_cast<const StatusUpdateEventRecord*>(&record)) {
        LogWrite("[CEventInterface] ------ WindowProc Callback [WM_SO_STATUSUPDATE_EVENT_MESSAGE][Data=%d]",
                 status->data);
    }
}

}  // namespace

CEventInterface::CEventInterface()
    : EventProcessingComplete(
          support::CreateOwnedEvent("EventProcessingComplete", this, platform::ResetMode::kManual, false))
{
}

CEventInterface::~CEventInterface() = default;

void CEventInterface::Open(CEventHandler* newHandler)
{
    LogWrite("[CEventInterface] ------ Open Begin");
    {
        LockHold hold(lock_);
        handler = newHandler;
    }
    LogWrite("[CEventInterface] ------ Open End");
}

void CEventInterface::Close()
{
    LogWrite("[CEventInterface] ------ Close Begin");
    {
        LockHold hold(lock_);
        handler = nullptr;
    }
    LogWrite("[CEventInterface] ------ Close End");
}

bool CEventInterface::CreateNativeWindow()
{
    if (BelongsToCallingThread()) return true;
    DestroyNativeWindow();
    // The window calls back into this object while it is made, so the lock is not held.
    std::shared_ptr<platform::Window> made = platform::Window::Create(kWindowName, kWindowName, *this);
    if (!made) return false;
    LockHold hold(lock_);
    native_ = std::move(made);
    ++windows_;
    self_ = shared_from_this();
    return true;
}

void CEventInterface::DestroyNativeWindow()
{
    std::shared_ptr<platform::Window> window;
    {
        LockHold hold(lock_);
        window.swap(native_);
    }
}

bool CEventInterface::BelongsToCallingThread() const
{
    LockHold hold(lock_);
    return native_ && native_->BelongsToCallingThread();
}

bool CEventInterface::Post(const std::shared_ptr<EventRecord>& record)
{
    std::shared_ptr<platform::Window> window;
    {
        LockHold hold(lock_);
        if (stopped_ || !native_) return false;
        EventProcessingComplete->Reset();
        outstanding_ = record;
        posted_.push_back(record);
        window = native_;
    }
    if (window->Post(record->message, ParameterOf(*record), 0)) return true;
    LockHold hold(lock_);
    outstanding_.reset();
    posted_.erase(std::remove(posted_.begin(), posted_.end(), record), posted_.end());
    return false;
}

void CEventInterface::Forget()
{
    LockHold hold(lock_);
    outstanding_.reset();
}

void CEventInterface::StopDeliveries()
{
    std::shared_ptr<platform::Window> own;
    {
        LockHold hold(lock_);
        stopped_ = true;
        if (native_ && native_->BelongsToCallingThread()) own = native_;
    }
    if (!own) return;
    own->Withdraw(WM_SO_DIRECTIO_EVENT_MESSAGE, WM_SO_STATUSUPDATE_EVENT_MESSAGE,
                  [this](uintptr_t wParam) { TakePosted(wParam); });
    LockHold hold(lock_);
    outstanding_.reset();
    EventProcessingComplete->Set();
}

void CEventInterface::AllowDeliveries()
{
    LockHold hold(lock_);
    stopped_ = false;
}

std::shared_ptr<EventRecord> CEventInterface::TakePosted(uintptr_t wParam)
{
    LockHold hold(lock_);
    const auto found = std::find_if(posted_.begin(), posted_.end(),
                                    [wParam](const auto& record) { return ParameterOf(*record) == wParam; });
    if (found == posted_.end()) return nullptr;
    std::shared_ptr<EventRecord> record = *found;
    posted_.erase(found);
    return record;
}

CEventInterface::Receiver CEventInterface::ReceiverOf()
{
    if (handler == nullptr) return {};
    Receiver receiver;
    if (handler->HasOwner()) {
        receiver.owner = handler->Owner();
        if (!receiver.owner) return {};  // the device is being destroyed
    }
    receiver.handler = handler;
    return receiver;
}

void CEventInterface::Hand(EventRecord& record, const Receiver& receiver)
{
    try {
        LogDelivery(record);
        if (receiver.handler != nullptr) HandTo(*receiver.handler, record);
    } catch (const std::bad_alloc&) {
        LogWrite("[CEventInterface] ------ WindowProc Not enough memory");
        // As if the application had left the answer as it is: whoever asks may ask again.
        if (auto* const error = dynamic_cast<ErrorEventRecord*>(&record)) error->Resolve(error->errorResponse.load());
    }
}

void CEventInterface::HandTo(CEventHandler& target, EventRecord& record)
{
    int32_t code = 0;
    switch (record.message) {
        case WM_SO_DIRECTIO_EVENT_MESSAGE:
            code = target.DirectIOEventCode();
            break;
        case WM_SO_ERROR_EVENT_MESSAGE:
            code = target.ErrorEventCode();
            break;
        case WM_SO_OUTPUTCOMPLETE_EVENT_MESSAGE:
            code = target.OutputCompleteEventCode();
            break;
        default:
            code = target.StatusUpdateEventCode();
            break;
    }
    const DeliveryScope scope(deliveryDepth_);
    target.InvokeCallback(code, record);
}

void CEventInterface::DeliverDirectly(const std::shared_ptr<EventRecord>& record)
{
    const auto self = shared_from_this();
    LogWrite("[CEventInterface] ------ WindowProc Begin");
    Receiver receiver;
    {
        LockHold hold(lock_);
        receiver = ReceiverOf();
    }
    Hand(*record, receiver);
    LogWrite("[CEventInterface] ------ WindowProc End");
}

int CEventInterface::OnCreate()
{
    LogWrite("[CEventInterface] ------ OnCreate Begin");
    LogWrite("[CEventInterface] ------ OnCreate End");
    return 0;
}

void CEventInterface::OnDestroy()
{
    LogWrite("[CEventInterface] ------ OnDestroy Begin");
    std::shared_ptr<CEventInterface> self;  // may be the last reference: nothing is touched after it goes
    {
        LockHold hold(lock_);
        if (--windows_ == 0) {
            posted_.clear();  // their messages died with the window
            self = std::move(self_);
        }
    }
    LogWrite("[CEventInterface] ------ OnDestroy End");
}

intptr_t CEventInterface::WindowProc(uint32_t message, uintptr_t wParam, intptr_t,
                                     const std::function<intptr_t()>& defaultProcedure)
{
    const auto self = shared_from_this();  // the application may drop the device from inside its event handler
    LogWrite("[CEventInterface] ------ WindowProc Begin");
    const std::shared_ptr<EventRecord> record = IsEventMessage(message) ? TakePosted(wParam) : nullptr;
    if (!record) {
        LogWrite("[CEventInterface] ------ WindowProc Unhandled Message");
        LogWrite("[CEventInterface] ------ WindowProc End");
        return defaultProcedure();
    }
    Receiver receiver;
    {
        LockHold hold(lock_);
        if (outstanding_ == record && !stopped_) receiver = ReceiverOf();
    }
    Hand(*record, receiver);
    {
        LockHold hold(lock_);
        if (outstanding_ == record) EventProcessingComplete->Set();
    }
    LogWrite("[CEventInterface] ------ WindowProc End");
    return 1;
}

}  // namespace marbex::events
