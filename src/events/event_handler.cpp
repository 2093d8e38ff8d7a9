#include "events/event_handler.h"

#include <algorithm>
#include <utility>

#include "opos/common.h"
#include "platform/memory.h"
#include "support/kernel_names.h"
#include "support/service_log.h"

namespace marbex::events {

using platform::LockHold;
using platform::MutexHold;
using platform::ResetMode;
using platform::WaitForMemory;
using support::LogWrite;

CEventHandler::CEventHandler(platform::Clock& clock)
    : clock_(clock),
      window(std::make_shared<CEventInterface>()),
      EventQueueAvailable(support::CreateOwnedMutex("EventQueueAvailable", this)),
      EventThreadActive(support::CreateOwnedEvent("EventThreadActive", this, ResetMode::kManual, false)),
      FreezeEventsUnfrozen(support::CreateOwnedEvent("FreezeEventsUnfrozen", this, ResetMode::kManual, true)),
      COFreezeEventsUnfrozen(support::CreateOwnedEvent("COFreezeEventsUnfrozen", this, ResetMode::kManual, true))
{
}

CEventHandler::~CEventHandler()
{
    if (thread) CEventHandler::Close();
    window->Close();
    window->DestroyNativeWindow();
}

int32_t CEventHandler::Open()
{
    if (thread) Close();
    LogWrite("[CEventHandler] --- Open Begin");
    window->Open(this);
    if (!window->CreateNativeWindow()) {
        LogWrite("[CEventHandler] --- Open The delivery window could not be created");
        window->Close();
        return -1;
    }
    window->AllowDeliveries();
    terminateRequest = false;
    closing_ = false;
    EventThreadActive->Reset();
    FreezeEventsUnfrozen->Set();
    COFreezeEventsUnfrozen->Set();
    thread = platform::Thread::Start([this] { EventThread(); });
    if (!thread) {
        LogWrite("[CEventHandler] --- Open The event thread could not be started");
        window->Close();
        return -1;
    }
    LogWrite("[CEventHandler] --- Open End");
    return 0;
}

void CEventHandler::Close()
{
    LogWrite("[CEventHandler] --- Close Begin");
    BeginClosing();
    {
        // Under the mutex, so that nobody resets what wakes the thread once it has been told to end.
        MutexHold hold(*EventQueueAvailable);
        terminateRequest = true;
        EventThreadActive->Set();
        FreezeEventsUnfrozen->Set();
        COFreezeEventsUnfrozen->Set();
    }
    window->StopDeliveries();
    if (thread) platform::WaitForOne(*thread, platform::kForever);
    window->Close();
    thread.reset();
    LogWrite("[CEventHandler] --- Close End");
}

void CEventHandler::SetOwner(std::weak_ptr<void> owner)
{
    LockHold hold(ownerLock_);
    owner_ = std::move(owner);
    hasOwner_ = true;
}

std::shared_ptr<void> CEventHandler::Owner() const
{
    LockHold hold(ownerLock_);
    return owner_.lock();
}

void CEventHandler::SetCallback(Callback fn, void* context)
{
    LogWrite("[CEventHandler] --- SetCallback Begin");
    callbackContext = context;
    callback = fn;
    LogWrite("[CEventHandler] --- SetCallback End");
}

int32_t CEventHandler::InvokeCallback(int32_t code, EventRecord& record)
{
    LogWrite("[CEventHandler] --- SetCallback Begin");
    const Callback fn = callback.load();
    if (fn == nullptr) {
        LogWrite("[CEventHandler] --- SetCallback NO CALLBACK SET!");
        LogWrite("[CEventHandler] --- SetCallback End");
        return -1;
    }
    return fn(callbackContext.load(), code, record);
}

void CEventHandler::FireDirectIOEvent(int32_t eventNumber, const int32_t* pData, const std::u16string* pString)
{
    LogWrite("[CEventHandler] --- FireDirectIOEvent Begin (%d)", eventNumber);
    DoQueueEvent(WaitForMemory(clock_, [=] {
        return std::make_shared<DirectIOEventRecord>(eventNumber, pData != nullptr ? *pData : 0,
                                                     pString != nullptr ? *pString : std::u16string());
    }));
    LogWrite("[CEventHandler] --- FireDirectIOEvent End");
}

void CEventHandler::FireOutputCompleteEvent(int32_t outputId)
{
    LogWrite("[CEventHandler] --- FireOutputCompleteEvent Begin (%d)", outputId);
    DoQueueEvent(WaitForMemory(clock_, [=] { return std::make_shared<OutputCompleteEventRecord>(outputId); }));
    LogWrite("[CEventHandler] --- FireOutputCompleteEvent End");
}

void CEventHandler::FireStatusUpdateEvent(int32_t data)
{
    LogWrite("[CEventHandler] --- FireStatusUpdateEvent Begin (%d)", data);
    DoQueueEvent(WaitForMemory(clock_, [=] { return std::make_shared<StatusUpdateEventRecord>(data); }));
    LogWrite("[CEventHandler] --- FireStatusUpdateEvent End");
}

void CEventHandler::DoQueueEvent(const std::shared_ptr<EventRecord>& record)
{
    LogWrite("[CEventHandler] --- DoQueueEvent Begin");
    WaitForMemory(clock_, [&] {
        MutexHold hold(*EventQueueAvailable);
        queue.push_back(record);
        EventThreadActive->Set();
    });
    LogWrite("[CEventHandler] --- DoQueueEvent End");
}

bool CEventHandler::Unqueue(const EventRecord& record)
{
    MutexHold hold(*EventQueueAvailable);
    const auto found =
        std::find_if(queue.begin(), queue.end(), [&record](const auto& queued) { return queued.get() == &record; });
    if (found == queue.end()) return false;
    queue.erase(found);
    return true;
}

int32_t CEventHandler::Clear(ErrorEvents errors)
{
    LogWrite("[CEventHandler] --- Clear Begin");
    std::deque<std::shared_ptr<EventRecord>> removed;
    {
        MutexHold hold(*EventQueueAvailable);
        if (errors == ErrorEvents::kKept) {
            std::erase_if(queue, [](const auto& record) { return record->message != WM_SO_ERROR_EVENT_MESSAGE; });
        } else {
            removed.swap(queue);
        }
        if (queue.empty() && !terminateRequest.load()) EventThreadActive->Reset();
    }
    for (const auto& record : removed) {
        if (auto* error = dynamic_cast<ErrorEventRecord*>(record.get())) error->Resolve(opos::OPOS_ER_CLEAR);
    }
    LogWrite("[CEventHandler] --- Clear End");
    return 0;
}

void CEventHandler::Switch(platform::Event& unfrozen, bool freeze)
{
    MutexHold hold(*EventQueueAvailable);
    if (!freeze) {
        unfrozen.Set();
    } else if (!terminateRequest.load()) {
        unfrozen.Reset();
    }
}

void CEventHandler::FreezeEvents(bool freeze)
{
    LogWrite("[CEventHandler] --- FreezeEvents Begin (%d)", freeze ? 1 : 0);
    Switch(*FreezeEventsUnfrozen, freeze);
    LogWrite("[CEventHandler] --- FreezeEvents End");
}

void CEventHandler::COFreezeEvents(bool freeze)
{
    LogWrite("[CEventHandler] --- COFreezeEvents Begin (%d)", freeze ? 1 : 0);
    Switch(*COFreezeEventsUnfrozen, freeze);
    LogWrite("[CEventHandler] --- COFreezeEvents End");
}

bool CEventHandler::IsFrozen() const
{
    return !platform::WaitForOne(*FreezeEventsUnfrozen, 0).Obtained() ||
           !platform::WaitForOne(*COFreezeEventsUnfrozen, 0).Obtained();
}

}  // namespace marbex::events
