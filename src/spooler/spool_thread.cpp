// The spool thread: prints what is queued and watches the printer while nothing is.
//
// Who waits for whom, and why it always ends:
//
// - The thread waits for DataInQueue, at most 2 s at a time. Close sets it, and the thread then prints what was queued
//   before and leaves; a job queued later is refused, so the drain is finite.
// - Its first status query waits for a printer to be attached, or for Close.
// - While it asks the application about a failed job it holds hMutexPrinter and waits, in the device's callback, for an
//   answer that only the application's thread can give. That thread may itself wait for hMutexPrinter (an immediate
//   print), for the admission of AddJob, or for this thread's end (Close). Every such wait goes through
//   ApplicationThread, which runs the thread's messages meanwhile, so the question reaches the application; and when
//   the question cannot be put (the thread is inside an event already, or the events stay frozen), the wait gives up
//   with BUSY. A closing device answers every question with CLEAR at once, so Close waits for the healthy part of the
//   queue and one failing transfer at most.
// - A pause before a repeated attempt is ended by Clear and by closing; it lasts half a second otherwise.
// - hMutexQueue is held for a few list operations only and never while anything else is waited for.

#include <new>

#include "platform/memory.h"
#include "spooler/print_spooler.h"
#include "support/service_log.h"

namespace marbex::spooler {

using printer::PrinterStatus;
using support::LogWrite;

namespace {

constexpr uint32_t kWaitMilliseconds = 2000;
constexpr int32_t kIdleSecondsBeforeQuery = 2;
constexpr int32_t kIdleSecondsBeforeNearEndQuery = 5;
constexpr int64_t kSecondsBetweenNearEndQueries = 10;

}  // namespace

void CPrintSpooler::ThreadSpool()
{
    spoolThreadId_ = platform::CurrentThreadId();
    LogWrite("[%s] --- ThreadSpool Started", traits.tag);
    platform::WaitForOne(*printerAttached_, platform::kForever);
    CheckPrinterInMemory(true);
    for (;;) {
        LogWrite("[%s] --- ThreadSpool Suspended", traits.tag);
        if (!platform::WaitForOne(*DataInQueue, kWaitMilliseconds).Obtained()) {
            if (!terminateRequest.load() && GetInactivityTime() > kIdleSecondsBeforeQuery) CheckPrinterInMemory(false);
            continue;
        }
        if (terminateRequest.load()) {
            Drain();
            LogWrite("[%s] --- ThreadSpool FOUND Terminating Request", traits.tag);
            break;
        }
        LogWrite("[%s] --- ThreadSpool Awaiked", traits.tag);
        Drain();
        InvokeCallback(CB_IDLE, 0, 0);
        LogWrite("[%s] --- ThreadSpool NO JOB Pending, IDLE", traits.tag);
    }
    terminateRequest = false;
    LogWrite("[%s] --- ThreadSpool Stopped", traits.tag);
}

void CPrintSpooler::Drain()
{
    while (platform::WaitForMemory(clock, [this] { return MoveHeadToInProgress(); })) {
        while (const std::shared_ptr<CSpoolJob> job = HeadInProgress()) {
            RunQueuedInMemory(*job);
            RemoveFromInProgress(*job);
        }
    }
}

// The thread goes on, with the next job, when there is no memory even to tell of this one.
void CPrintSpooler::RunQueuedInMemory(CSpoolJob& job)
{
    try {
        RunQueued(job);
    } catch (const std::bad_alloc&) {
        LogWrite("[%s] --- ThreadSpool Not enough memory, job dropped", traits.tag);
        droppedOutput_ = true;
    }
}

// What is not asked, or not told, now is the next time.
void CPrintSpooler::CheckPrinterInMemory(bool force)
{
    try {
        DoCheckPrinterStatus(force);
    } catch (const std::bad_alloc&) {
        LogWrite("[%s] --- DoCheckPrinterStatus Not enough memory", traits.tag);
    }
}

void CPrintSpooler::RunQueued(CSpoolJob& job)
{
    int32_t result = 0;
    if (JobMeaningOf(job.type, traits.numbering) == JobMeaning::kPrintTransaction) {
        LogWrite("[%s] --- ThreadSpool RUN JOB_PRINT_TRANSACTION", traits.tag);
        result = RunTransaction(job);
    } else {
        LogWrite("[%s] --- ThreadSpool RUN DoJob %d", traits.tag, static_cast<int>(job.outputId));
        result = RunSynchronously(job);
    }
    if (result != 0 && closing.load()) droppedOutput_ = true;
}

int32_t CPrintSpooler::DoCheckPrinterStatus(bool force)
{
    printer::CPrinterEncoder* const encoder = printer.load();
    if (encoder == nullptr) return 0;
    if (!platform::WaitForOne(*hMutexPrinter, platform::kForever).Obtained()) return 0;
    LogWrite("[%s] --- DoCheckPrinterStatus Begin", traits.tag);
    bool askNearEnd = false;
    if (GetInactivityTime() >= kIdleSecondsBeforeNearEndQuery &&
        clock.Seconds() - lastNearEndQueryTime.load() >= kSecondsBetweenNearEndQueries) {
        askNearEnd = true;
        lastNearEndQueryTime = clock.Seconds();
        LogWrite("[%s] --- DoCheckPrinterStatus Time for NEAR END Status Asking", traits.tag);
    }
    LogWrite("[%s] --- DoCheckPrinterStatus Ask Status...", traits.tag);
    PrinterStatus newStatus;
    uint32_t fullStatus = 0;
    bool failed = false;
    {
        const HeldPrinter printerHeld(*this);
        failed = encoder->GetStatus(newStatus, askNearEnd, &fullStatus) != 0;
    }

    if (failed && (options.load() & kOptionSignalFailedQuery) != 0) {
        lastStatus = newStatus;
        polling_ = true;
        InvokeCallback(CB_PRINTERROR, reinterpret_cast<intptr_t>(&lastStatus), 0);
        polling_ = false;
        LogWrite("[%s] --- DoCheckPrinterStatus Get Status Failed... Signal it!", traits.tag);
        return 1;
    }
    if (newStatus == lastStatus && !force) {
        LogWrite("[%s] --- DoCheckPrinterStatus End", traits.tag);
        return 0;
    }
    lastStatus = newStatus;
    const intptr_t argument2 = traits.reportsFullStatus && !failed ? static_cast<intptr_t>(fullStatus) : 0;
    InvokeCallback(CB_STATUSCHANGE, reinterpret_cast<intptr_t>(&lastStatus), argument2);
    LogWrite("[%s] --- DoCheckPrinterStatus Status Changed... Signal it!", traits.tag);
    LogWrite("[%s] --- DoCheckPrinterStatus End", traits.tag);
    return 0;
}

}  // namespace marbex::spooler
