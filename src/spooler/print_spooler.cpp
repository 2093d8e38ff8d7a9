#include "spooler/print_spooler.h"

#include "support/kernel_names.h"
#include "support/service_log.h"

namespace marbex::spooler {

using support::LogWrite;

CPrintSpooler::CPrintSpooler(const SpoolerTraits& modelTraits, platform::Clock& systemClock,
                             ApplicationThread& applicationThread)
    : traits(modelTraits),
      clock(systemClock),
      application(applicationThread),
      DataInQueue(support::CreateOwnedEvent("DataInQueue", this, platform::ResetMode::kAuto, false)),
      hMutexPrinter(support::CreateOwnedMutex("hMutexPrinter", this)),
      hMutexQueue(support::CreateOwnedMutex("hMutexQueue", this)),
      hSyncSemaphore(support::CreateOwnedSemaphore("hSyncSemaphore", this, 1, 1)),
      printerAttached_(platform::Event::Create("", platform::ResetMode::kManual, false)),
      pauseEnded_(platform::Event::Create("", platform::ResetMode::kManual, false)),
      lastActivityTime(systemClock.Seconds()),
      lastNearEndQueryTime(systemClock.Seconds())
{
}

CPrintSpooler::~CPrintSpooler()
{
    CPrintSpooler::Close();
    DropWhatIsLeft();
}

int32_t CPrintSpooler::Open(uint32_t openOptions)
{
    if (thread) Close();
    LogWrite("[%s] --- Open Begin", traits.tag);
    DataInQueue->Reset();
    printerAttached_->Reset();
    pauseEnded_->Reset();
    asyncMode = 1;
    terminateRequest = false;
    closing = false;
    transactionNumber = 0;
    confirmsOutput_ = false;
    droppedOutput_ = false;
    printer = nullptr;
    outputIdCounter = 0;
    options = openOptions;
    opened = true;
    thread = platform::Thread::Start([this] { ThreadSpool(); });
    if (!thread) opened = false;
    LogWrite("[%s] --- Open End", traits.tag);
    return thread ? 0 : -1;
}

int32_t CPrintSpooler::Close()
{
    LogWrite("[%s] --- Close Begin", traits.tag);
    if (thread) {
        BeginClosing();
        terminateRequest = true;
        LogWrite("[%s] --- Close Terminating Thread...", traits.tag);
        printerAttached_->Set();
        DataInQueue->Set();
        application.Wait(*thread, platform::kForever);
        thread.reset();
        LogWrite("[%s] --- Close Thread Terminated", traits.tag);
        // Another thread may still be inside AddJob; it ends, since every error is answered while the device closes.
        if (application.Wait(*hSyncSemaphore, platform::kForever)) hSyncSemaphore->Release();
        opened = false;
        DropWhatIsLeft();
    }
    LogWrite("[%s] --- Close End", traits.tag);
    return 0;
}

void CPrintSpooler::BeginClosing()
{
    closing = true;
    pauseEnded_->Set();
}

int32_t CPrintSpooler::SetCallback(Callback fn, void* context)
{
    LogWrite("[%s] --- SetCallback Begin", traits.tag);
    callbackContext = context;
    callback = fn;
    LogWrite("[%s] --- SetCallback End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::RemoveCallback()
{
    LogWrite("[%s] --- RemoveCallback Begin", traits.tag);
    callback = nullptr;
    LogWrite("[%s] --- RemoveCallback End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::AttachPrinter(printer::CPrinterEncoder* encoder)
{
    LogWrite("[%s] --- AttachPrinter Begin", traits.tag);
    printer = encoder;
    printerAttached_->Set();
    LogWrite("[%s] --- AttachPrinter End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::DetachPrinter()
{
    LogWrite("[%s] --- DetachPrinter Begin", traits.tag);
    printer = nullptr;
    LogWrite("[%s] --- DetachPrinter End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::SetAsyncMode()
{
    LogWrite("[%s] --- SetAsyncMode Begin", traits.tag);
    asyncMode = 1;
    LogWrite("[%s] --- SetAsyncMode End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::SetSyncMode()
{
    LogWrite("[%s] --- SetSyncMode Begin", traits.tag);
    asyncMode = 0;
    LogWrite("[%s] --- SetSyncMode End", traits.tag);
    return 0;
}

int32_t CPrintSpooler::GetInactivityTime()
{
    LogWrite("[%s] --- GetInactivityTime Begin", traits.tag);
    const int64_t seconds = clock.Seconds() - lastActivityTime.load();
    LogWrite("[%s] --- GetInactivityTime End", traits.tag);
    return static_cast<int32_t>(seconds);
}

int32_t CPrintSpooler::InvokeCallback(int32_t code, intptr_t argument1, intptr_t argument2)
{
    LogWrite("[%s] --- InvokeCallback Begin (%d)", traits.tag, code);
    int32_t answer = -1;
    if (const Callback fn = callback.load()) {
        const uint64_t begin = clock.Milliseconds();
        answer = fn(callbackContext.load(), code, argument1, argument2);
        LogWrite("[%s] --- InvokeCallback CALLBACKTIME = %d", traits.tag,
                 static_cast<int>(clock.Milliseconds() - begin));
    }
    LogWrite("[%s] --- InvokeCallback End", traits.tag);
    return answer;
}

}  // namespace marbex::spooler
