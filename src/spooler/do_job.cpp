// Executing jobs: one job with its attempts, a transaction with its passes, and the protocol by which the application
// decides what happens to output that the printer refused.

#include <cstdlib>
#include <iterator>
#include <utility>

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

int32_t CPrintSpooler::DoJob(CSpoolJob& job, bool* retry)
{
    if (!AcquirePrinter()) {
        if (retry != nullptr) *retry = false;
        return kBusy;
    }
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
            BeginExecuting(job);
            result = Attempt(job, retry);
            EndExecuting(job);
            break;
    }
    lastActivityTime = clock.Seconds();
    ReleasePrinter();
    LogWrite("[%s] --- DoJob End (%d)", traits.tag, result);
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
            result = Execute(job);
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
    queuedAtAnswer_ = UINT64_MAX;
    int32_t answer =
        InvokeCallback(CB_PRINTERROR, reinterpret_cast<intptr_t>(&status), static_cast<intptr_t>(job.outputId));
    // Output that was cleared while the answer was awaited stays cleared.
    if (answer == opos::OPOS_ER_RETRY && job.cancelled.load()) answer = opos::OPOS_ER_CLEAR;
    if (answer == opos::OPOS_ER_RETRY) {
        LogWrite("[%s] --- DoJob CALLBACK says RETRY", traits.tag);
        return true;
    }
    if (answer == opos::OPOS_ER_CLEAR) {
        LogWrite("[%s] --- DoJob CALLBACK says CLEAR", traits.tag);
        ClearInProgressList();
        ClearAsyncList(queuedAtAnswer_.load());
        ClearTransaction();
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

int32_t CPrintSpooler::DoPrintTransaction(uint32_t serial)
{
    LogWrite("[%s] --- DoPrintTransaction Begin", traits.tag);
    // The list is taken whole and the transaction closed in one step: what comes later is queued on its own and cannot
    // vanish in a record that has been printed already.
    JobList jobs;
    {
        platform::MutexHold hold(*hMutexQueue);
        if (transactionNumber.load() != 0 && serial == transactionSerial_) {
            jobs.swap(transactionList);
            transactionNumber = 0;
            for (const auto& job : jobs)
                executing_.push_back(job.get());
        }
    }

    int32_t result = 0;
    bool answerRetry = false;
    do {
        result = 0;
        answerRetry = false;
        for (auto job = jobs.begin(); job != jobs.end() && result == 0; ++job)
            result = DoJob(**job, &answerRetry);
        if (answerRetry) PauseBeforeRetry(*jobs.front());
    } while (answerRetry);

    LogWrite("[%s] --- ClearTransaction Begin", traits.tag);
    LogWrite("[%s] --- ClearTransactionList Begin", traits.tag);
    for (const auto& job : jobs)
        EndExecuting(*job);
    jobs.clear();
    LogWrite("[%s] --- ClearTransactionList End", traits.tag);
    LogWrite("[%s] --- ClearTransaction End", traits.tag);
    LogWrite("[%s] --- DoPrintTransaction End", traits.tag);
    return result;
}

}  // namespace marbex::spooler
