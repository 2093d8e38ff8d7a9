// Executing jobs: one job with its attempts, a transaction with its passes, and the protocol by which the application
// decides what happens to output that the printer refused.

#include <algorithm>
#include <cstdlib>
#include <new>

#include "opos/common.h"
#include "spooler/print_spooler.h"
#include "support/service_log.h"

namespace marbex::spooler {

using printer::PrinterStatus;
using support::LogWrite;

namespace {

constexpr uint32_t kNopMilliseconds = 500;
constexpr uint32_t kPauseBeforeRetryMilliseconds = 500;

int32_t ErrorResultOf(const PrinterStatus& status)
{
    if (status.CoverOpen()) return kCoverOpenResult;
    if (status.PaperEnd()) return kPaperEmptyResult;
    if (status.NoResponse()) return opos::OPOS_E_NOHARDWARE;
    return opos::OPOS_E_FAILURE;
}

}  // namespace

bool CPrintSpooler::AcquirePrinter()
{
    return application.AcquirePrinter(*hMutexPrinter);
}

void CPrintSpooler::ReleasePrinter()
{
    hMutexPrinter->Release();
}

// The printer, from AcquirePrinter to here.
class CPrintSpooler::HeldPrinter {
public:
    explicit HeldPrinter(CPrintSpooler& spooler) : spooler_(spooler) {}
    ~HeldPrinter() { spooler_.ReleasePrinter(); }
    HeldPrinter(const HeldPrinter&) = delete;
    HeldPrinter& operator=(const HeldPrinter&) = delete;

private:
    CPrintSpooler& spooler_;
};

// The records that a thread executes, or waits to execute: a clear marks them. Needs hMutexQueue for moments only.
class CPrintSpooler::Execution {
public:
    explicit Execution(CPrintSpooler& spooler) : spooler_(spooler) {}
    ~Execution() { End(); }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    void Add(CSpoolJob& job)
    {
        platform::MutexHold hold(*spooler_.hMutexQueue);
        jobs_.push_back(&job);
        spooler_.executing_.push_back(&job);
    }

    void End()
    {
        platform::MutexHold hold(*spooler_.hMutexQueue);
        // One entry each: a job of a transaction is entered by the transaction and again by each of its attempts.
        for (CSpoolJob* const job : jobs_)
            spooler_.executing_.erase(std::find(spooler_.executing_.begin(), spooler_.executing_.end(), job));
        jobs_.clear();
    }

private:
    CPrintSpooler& spooler_;
    std::vector<CSpoolJob*> jobs_;
};

int32_t CPrintSpooler::DoJob(CSpoolJob& job, bool* retry)
{
    // Before it waits for the printer: what is cleared meanwhile is not printed.
    Execution execution(*this);
    execution.Add(job);
    if (!AcquirePrinter()) {
        if (retry != nullptr) *retry = false;
        return kBusy;
    }
    const int32_t result = DoAcquiredJob(job, retry);
    LogWrite("[%s] --- DoJob End (%d)", traits.tag, result);
    return result;
}

int32_t CPrintSpooler::DoAcquiredJob(CSpoolJob& job, bool* retry)
{
    const HeldPrinter printerHeld(*this);
    int32_t result = 0;
    LogWrite("[%s] --- DoJob Begin (%d)", traits.tag, static_cast<int>(job.outputId));
    switch (JobMeaningOf(job.type, traits.numbering)) {
        case JobMeaning::kNop:
            LogWrite("[%s] --- DoJob JOB_NOP Debug +", traits.tag);
            clock.Sleep(kNopMilliseconds);
            LogWrite("[%s] --- DoJob JOB_NOP Debug -", traits.tag);
            break;
        case JobMeaning::kNotHandled:
            LogWrite("[%s] --- DoJob JOB_??? **NOT HANDLED**", traits.tag);
            break;
        case JobMeaning::kPrintTransaction:
            LogWrite("[%s] --- DoJob JOB_PRINT_TRANSACTION **ERROR**", traits.tag);
            break;
        case JobMeaning::kPrintImmediate:
        case JobMeaning::kNothing:
            break;
        case JobMeaning::kPrintNormal:
        case JobMeaning::kCutPaper:
        case JobMeaning::kPrintBarcode:
        case JobMeaning::kDirectIO:
        case JobMeaning::kDirectIO2nd:
        case JobMeaning::kPrintBitmap:
            result = Attempt(job, retry);
            break;
    }
    lastActivityTime = clock.Seconds();
    return result;
}

int32_t CPrintSpooler::Attempt(CSpoolJob& job, bool* retry)
{
    printer::CPrinterEncoder* const encoder = printer.load();
    if (encoder == nullptr) return 0;

    PrinterStatus status;
    int32_t result = 0;
    for (;;) {
        if (job.cancelled.load()) return result != 0 ? result : opos::OPOS_E_FAILURE;

        if (encoder->IsInError()) {
            encoder->RecoverFromError();
            result = encoder->GetStatus(status, false);
        }
        bool refused = false;
        if (!encoder->IsInError()) {
            result = ExecuteInMemory(job);
            if (result != 0) {
                encoder->GetStatus(status, false);
                // A printer that stopped taking data answers status queries all the same.
                refused = status.CoverOpen() || status.PaperEnd();
            }
        }
        bool answerRetry = false;
        if (encoder->IsInError() || refused) {
            result = ErrorResultOf(status);
            answerRetry = AskWhetherToRetry(job, status, result);
        }
        if (retry != nullptr) *retry = answerRetry;
        if (retry != nullptr || !answerRetry) return result;
        PauseBeforeRetry(job);
    }
}

bool CPrintSpooler::AskWhetherToRetry(CSpoolJob& job, const PrinterStatus& status, int32_t result)
{
    LogWrite("[%s] --- DoJob Printer Error %d", traits.tag, result);
    {
        platform::MutexHold hold(*hMutexQueue);
        answeredAt_.reset();
    }
    int32_t answer =
        InvokeCallback(CB_PRINTERROR, reinterpret_cast<intptr_t>(&status), static_cast<intptr_t>(job.outputId));
    ClearLimit limit = kEverything;
    {
        // Output that was cleared while the answer was awaited stays cleared, and what has been queued since is not
        // meant: that clear took what there was.
        platform::MutexHold hold(*hMutexQueue);
        if (answeredAt_) limit = *answeredAt_;
        if (job.cancelled.load() && (answer == opos::OPOS_ER_RETRY || !answeredAt_)) {
            if (answer == opos::OPOS_ER_RETRY) answer = opos::OPOS_ER_CLEAR;
            limit = kNothing;
        }
    }
    if (answer == opos::OPOS_ER_RETRY) {
        LogWrite("[%s] --- DoJob CALLBACK says RETRY", traits.tag);
        return true;
    }
    if (answer == opos::OPOS_ER_CLEAR) {
        LogWrite("[%s] --- DoJob CALLBACK says CLEAR", traits.tag);
        ClearInProgressList(limit);
        ClearAsyncList(limit);
        ClearTransactionUpTo(limit);
    }
    return false;
}

void CPrintSpooler::PauseBeforeRetry(const CSpoolJob& job)
{
    // Reset before looking, so that whoever ends the pause after the look is not missed.
    pauseEnded_->Reset();
    if (job.cancelled.load() || closing.load()) return;
    application.Wait(*pauseEnded_, kPauseBeforeRetryMilliseconds);
}

// Text and pictures are copied on their way; what cannot be printed for want of memory fails as a job.
int32_t CPrintSpooler::ExecuteInMemory(const CSpoolJob& job)
{
    try {
        return Execute(job);
    } catch (const std::bad_alloc&) {
        LogWrite("[%s] --- DoJob Not enough memory", traits.tag);
        return opos::OPOS_E_FAILURE;
    }
}

int32_t CPrintSpooler::Execute(const CSpoolJob& job)
{
    printer::CPrinterEncoder& encoder = *printer.load();
    switch (JobMeaningOf(job.type, traits.numbering)) {
        case JobMeaning::kPrintNormal:
            LogWrite("[%s] --- DoJob JOB_PRINT_NORMAL %s", traits.tag, job.text.c_str());
            return encoder.PrintText(job.text);
        case JobMeaning::kCutPaper: {
            const int percentage = std::atoi(job.text.c_str());
            LogWrite("[%s] --- DoJob JOB_CUT_PAPER %d", traits.tag, percentage);
            return encoder.CutPaper(percentage);
        }
        case JobMeaning::kPrintBarcode:
            LogWrite("[%s] --- DoJob JOB_PRINT_BARCODE BarcodeData", traits.tag);
            return encoder.PrintBarcode(*std::get<BarcodePayload>(job.buffer));
        case JobMeaning::kDirectIO:
            LogWrite("[%s] --- DoJob JOB_DIRECTIO", traits.tag);
            return encoder.SendDirect(*std::get<DirectIOPayload>(job.buffer));
        case JobMeaning::kDirectIO2nd:
            LogWrite("[%s] --- DoJob JOB_DIRECTIO2ND", traits.tag);
            return encoder.SendDirectSecondary(*std::get<DirectIOPayload>(job.buffer));
        case JobMeaning::kPrintBitmap:
            LogWrite("[%s] --- DoJob JOB_PRINT_BITMAP BmpData", traits.tag);
            return encoder.PrintBitmap(*std::get<BitmapPayload>(job.buffer));
        default:
            return 0;
    }
}

// The list is taken whole and the transaction closed in one step: what comes later is queued on its own and cannot
// vanish in a record that has been printed already. Returns the number of the transaction, 0 when it is not open.
uint32_t CPrintSpooler::TakeTransaction(uint32_t serial, JobList& jobs, Execution& execution)
{
    platform::MutexHold hold(*hMutexQueue);
    if (transactionNumber.load() == 0 || serial != transactionSerial_) return 0;
    jobs.swap(transactionList);
    for (const auto& job : jobs)
        execution.Add(*job);
    return transactionNumber.exchange(0);
}

// What was refused before it was tried stays collected, so that the application can print it when the printer is free.
// False when it has been cleared, or another transaction has been begun, meanwhile.
bool CPrintSpooler::PutTransactionBack(uint32_t serial, uint32_t number, JobList& jobs)
{
    platform::MutexHold hold(*hMutexQueue);
    if (transactionNumber.load() != 0 || serial != transactionSerial_ || jobs.front()->cancelled.load()) return false;
    transactionList.swap(jobs);
    transactionNumber = number;
    LogWrite("[%s] --- DoPrintTransaction Printer not available, transaction kept", traits.tag);
    return true;
}

int32_t CPrintSpooler::DoPrintTransaction(uint32_t serial)
{
    LogWrite("[%s] --- DoPrintTransaction Begin", traits.tag);
    JobList jobs;
    Execution execution(*this);
    const uint32_t number = TakeTransaction(serial, jobs, execution);

    int32_t result = 0;
    bool answerRetry = false;
    std::size_t printed = 0;
    do {
        result = 0;
        answerRetry = false;
        printed = 0;
        while (printed < jobs.size() && result == 0) {
            result = DoJob(*jobs[printed], &answerRetry);
            if (result == 0) ++printed;
        }
        if (answerRetry) PauseBeforeRetry(*jobs.front());
    } while (answerRetry);

    if (result != kBusy || printed != 0 || !PutTransactionBack(serial, number, jobs)) {
        LogWrite("[%s] --- ClearTransaction Begin", traits.tag);
        LogWrite("[%s] --- ClearTransactionList Begin", traits.tag);
        execution.End();
        jobs.clear();
        LogWrite("[%s] --- ClearTransactionList End", traits.tag);
        LogWrite("[%s] --- ClearTransaction End", traits.tag);
    }
    LogWrite("[%s] --- DoPrintTransaction End", traits.tag);
    return result;
}

}  // namespace marbex::spooler
