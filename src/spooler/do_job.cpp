// Executing jobs: one job with its attempts, a transaction with its passes, and the protocol by which the application
// decides what happens to output that the printer refused, or that it has not told to have received.

#include <algorithm>
#include <cstdlib>
#include <new>

#include "opos/common.h"
#include "platform/memory.h"
#include "spooler/print_spooler.h"
#include "support/service_log.h"

namespace marbex::spooler {

using printer::OutputMark;
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

// Whether an operation failed since the link did not take every byte. A picture's other failure is that of a printer
// that never said it had printed it.
bool LinkRefused(int32_t result, JobMeaning meaning)
{
    const bool waitRanOut = meaning == JobMeaning::kPrintBitmap && result == printer::kEncoderTextNotSent;
    return !waitRanOut && (result == printer::kEncoderTextNotSent || result == printer::kEncoderPortNotOpen ||
                           result == printer::kEncoderPortFailed);
}

// Direct I/O on its own may be anything, a question to the printer too.
bool IsConfirmable(JobMeaning meaning)
{
    return meaning == JobMeaning::kPrintNormal || meaning == JobMeaning::kCutPaper ||
           meaning == JobMeaning::kPrintBarcode || meaning == JobMeaning::kPrintBitmap;
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

// The records that a thread executes, or waits to execute: a clear marks them. Needs hMutexQueue for moments only.
class CPrintSpooler::Execution {
public:
    explicit Execution(CPrintSpooler& spooler) : spooler_(spooler) {}
    ~Execution() { End(); }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    void Add(CSpoolJob& job)
    {
        platform::WaitForMemory(spooler_.clock, [&] {
            platform::MutexHold hold(*spooler_.hMutexQueue);
            jobs_.reserve(jobs_.size() + 1);
            spooler_.executing_.push_back(&job);
            jobs_.push_back(&job);
        });
    }

    void End()
    {
        platform::MutexHold hold(*spooler_.hMutexQueue);
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
    const HeldPrinter printerHeld(*this);
    return DoAcquiredJob(nullptr, job, retry);
}

int32_t CPrintSpooler::DoAcquiredJob(Pass* pass, CSpoolJob& job, bool* retry)
{
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
            result = Attempt(pass, job, retry);
            break;
    }
    lastActivityTime = clock.Seconds();
    LogWrite("[%s] --- DoJob End (%d)", traits.tag, result);
    return result;
}

// What came of an attempt.
enum class CPrintSpooler::Trouble : uint8_t {
    kNone,     // or what only the job's own result tells
    kPrinter,  // the printer does not answer, or says why it takes nothing
    kLink,     // the printer answers and is well, but has not got all of it
    kOther,    // there would be no sense in another attempt
};

bool CPrintSpooler::IsToBeConfirmed(const Pass* pass, const CSpoolJob& job) const
{
    if (!confirmsOutput_.load()) return false;
    return pass != nullptr ? pass->last : IsConfirmable(JobMeaningOf(job.type, traits.numbering));
}

int32_t CPrintSpooler::Attempt(Pass* pass, CSpoolJob& job, bool* retry)
{
    printer::CPrinterEncoder* const encoder = printer.load();
    if (encoder == nullptr) return 0;

    const bool confirms = IsToBeConfirmed(pass, job);
    PrinterStatus status;
    int32_t result = 0;
    bool received = false;  // the printer has all of it and cannot print it yet
    OutputMark begin{};
    for (;;) {
        if (job.cancelled.load()) return result != 0 ? result : opos::OPOS_E_FAILURE;

        Trouble trouble = Trouble::kNone;
        if (!received) {
            trouble = SendInMemory(job, begin, status, result);
            if (pass != nullptr) begin = pass->begin.emplace(pass->begin.value_or(begin));
        }
        if (trouble == Trouble::kNone && confirms && (received || result == 0)) {
            trouble = Confirm(begin, status, result);
            received = trouble != Trouble::kNone && !status.NoResponse() && (status.CoverOpen() || status.PaperEnd());
        }
        bool answerRetry = false;
        if (trouble != Trouble::kNone) {
            result = trouble == Trouble::kPrinter ? ErrorResultOf(status) : opos::OPOS_E_FAILURE;
            answerRetry = AskWhetherToRetry(job, status, result) && trouble != Trouble::kOther;
        }
        // A transaction is repeated from its beginning, by whoever asked for this part of it.
        const bool leavesRetry = retry != nullptr && !received;
        if (retry != nullptr) *retry = answerRetry && leavesRetry;
        if (!answerRetry || leavesRetry) return result;
        PauseBeforeRetry(job);
    }
}

// Without memory for what goes with an attempt it has failed.
CPrintSpooler::Trouble CPrintSpooler::SendInMemory(const CSpoolJob& job, OutputMark& begin, PrinterStatus& status,
                                                   int32_t& result)
{
    try {
        return Send(job, begin, status, result);
    } catch (const std::bad_alloc&) {
        LogWrite("[%s] --- DoJob Not enough memory", traits.tag);
        result = opos::OPOS_E_FAILURE;
        return RunsOnSpoolThread() ? Trouble::kOther : Trouble::kNone;
    }
}

// One attempt to hand all of the job to the link, from begin on. result is the operation's own.
CPrintSpooler::Trouble CPrintSpooler::Send(const CSpoolJob& job, OutputMark& begin, PrinterStatus& status,
                                           int32_t& result)
{
    printer::CPrinterEncoder& encoder = *printer.load();
    if (encoder.NeedsRecovery()) {
        const bool told = encoder.RecoverFromError() == 0;
        result = encoder.GetStatus(status, false);
        // Asking may have found a lost link again, over which the printer has not been told yet.
        if (!told && !encoder.IsInError()) encoder.RecoverFromError();
    }
    bool torn = false;
    if (!encoder.IsInError()) {
        encoder.BeginOutput();
        result = ExecuteInMemory(job);
        begin = encoder.OutputBegin();
        if (result == 0) return Trouble::kNone;
        encoder.GetStatus(status, false);
        // A printer that stopped taking data answers status queries all the same.
        if (status.CoverOpen() || status.PaperEnd()) return Trouble::kPrinter;
        torn = LinkRefused(result, JobMeaningOf(job.type, traits.numbering));
        if (torn) encoder.NoteTornOutput();
    }
    if (encoder.IsInError()) return Trouble::kPrinter;
    // The link is well again. A call of the application's own is told by its result; queued output has only the event.
    if (!RunsOnSpoolThread()) return Trouble::kNone;
    return torn ? Trouble::kLink : Trouble::kOther;
}

// Whether the printer has all that was written since begin and prints it. status is its answer, result 0 or what the
// job has come to.
CPrintSpooler::Trouble CPrintSpooler::Confirm(const OutputMark& begin, PrinterStatus& status, int32_t& result)
{
    const bool told = printer.load()->ConfirmReceipt(begin, status);
    if (told && !status.CoverOpen() && !status.PaperEnd() && !status.PaperJam()) {
        LogWrite("[%s] --- DoJob CONFIRMED", traits.tag);
        result = 0;
        return Trouble::kNone;
    }
    result = ErrorResultOf(status);
    LogWrite("[%s] --- DoJob NOT CONFIRMED %d", traits.tag, result);
    return Trouble::kPrinter;
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

// One pass over a transaction, up to the first of its jobs that fails.
int32_t CPrintSpooler::PrintPass(const CSpoolJob& transactionJob, bool& answerRetry)
{
    Pass pass;
    int32_t result = 0;
    answerRetry = false;
    for (const auto& job : transactionJob.transaction) {
        pass.last = job == transactionJob.transaction.back();
        result = DoAcquiredJob(&pass, *job, &answerRetry);
        if (result != 0) break;
    }
    return result;
}

// Pass after pass as long as the application wants another one. The printer is held from the first job to the last, so
// that nothing is printed between them and no part of a transaction is refused when another one is on paper.
int32_t CPrintSpooler::PrintAsOne(CSpoolJob& transactionJob)
{
    // A clear that came before it was executing has marked the transaction alone.
    int32_t result = transactionJob.cancelled.load() ? opos::OPOS_E_FAILURE : 0;
    if (result != 0 || transactionJob.transaction.empty()) return result;
    if (!AcquirePrinter()) return kBusy;
    const HeldPrinter printerHeld(*this);
    for (bool answerRetry = true; answerRetry;) {
        result = PrintPass(transactionJob, answerRetry);
        if (answerRetry) PauseBeforeRetry(transactionJob);
    }
    return result;
}

int32_t CPrintSpooler::DoPrintTransaction(CSpoolJob& transactionJob)
{
    LogWrite("[%s] --- DoPrintTransaction Begin", traits.tag);
    Execution execution(*this);
    execution.Add(transactionJob);
    for (const auto& job : transactionJob.transaction)
        execution.Add(*job);

    const int32_t result = PrintAsOne(transactionJob);
    if (result != kBusy || !PutTransactionBack(transactionJob)) {
        LogWrite("[%s] --- ClearTransaction Begin", traits.tag);
        LogWrite("[%s] --- ClearTransactionList Begin", traits.tag);
        execution.End();
        transactionJob.transaction.clear();
        LogWrite("[%s] --- ClearTransactionList End", traits.tag);
        LogWrite("[%s] --- ClearTransaction End", traits.tag);
    }
    LogWrite("[%s] --- DoPrintTransaction End", traits.tag);
    return result;
}

}  // namespace marbex::spooler
