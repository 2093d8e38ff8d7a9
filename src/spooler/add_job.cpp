// The way into the spooler: the requests of the device, and AddJob, which prints, queues or collects them.

#include <string>

#include "opos/common.h"
#include "spooler/print_spooler.h"
#include "support/service_log.h"

namespace marbex::spooler {

using support::LogWrite;

namespace {

// Bits of the mode prefix, ESC "!" n.
constexpr uint8_t kBold = 0x08;
constexpr uint8_t kDoubleHeight = 0x10;
constexpr uint8_t kDoubleWidth = 0x20;
constexpr uint8_t kItalic = 0x40;
constexpr uint8_t kUnderlined = 0x80;
constexpr uint8_t kNoMode = 0x02;

int32_t ChangeFlag(std::atomic<uint8_t>& modes, uint8_t bit, bool flag)
{
    if (flag) {
        modes |= bit;
    } else {
        modes &= static_cast<uint8_t>(~bit);
    }
    return 0;
}

// Gives the admission of one AddJob back, whatever way it ends.
class Admission {
public:
    explicit Admission(platform::Semaphore& semaphore) : semaphore_(semaphore) {}
    ~Admission() { semaphore_.Release(); }
    Admission(const Admission&) = delete;
    Admission& operator=(const Admission&) = delete;

private:
    platform::Semaphore& semaphore_;
};

}  // namespace

int32_t CPrintSpooler::SetBold(bool flag)
{
    return ChangeFlag(pendingModes_, kBold, flag);
}
int32_t CPrintSpooler::SetDoubleWidth(bool flag)
{
    return ChangeFlag(pendingModes_, kDoubleWidth, flag);
}
int32_t CPrintSpooler::SetItalic(bool flag)
{
    return ChangeFlag(pendingModes_, kItalic, flag);
}
int32_t CPrintSpooler::SetDoubleHeight(bool flag)
{
    return ChangeFlag(pendingModes_, kDoubleHeight, flag);
}
int32_t CPrintSpooler::SetUnderlined(bool flag)
{
    return ChangeFlag(pendingModes_, kUnderlined, flag);
}

int32_t CPrintSpooler::ClearCutSent()
{
    if (printer::CPrinterEncoder* encoder = printer.load()) encoder->ClearCutSent();
    return 0;
}

std::string CPrintSpooler::WithModePrefix(const std::string& data)
{
    const uint8_t pending = pendingModes_.exchange(0);
    std::string text;
    text.reserve(data.size() + 3);
    text += "\x1B!";
    text += static_cast<char>(pending != 0 ? pending : kNoMode);
    text += data;
    return text;
}

int32_t CPrintSpooler::PrintNormal(const std::string& data, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- PrintNormal Begin", traits.tag);
    const int32_t type = Number(JobMeaning::kPrintNormal);
    const int32_t result =
        traits.textHasModePrefix ? AddJob(type, WithModePrefix(data), outputId) : AddJob(type, data, outputId);
    LogWrite("[%s] --- PrintNormal End", traits.tag);
    return result;
}

int32_t CPrintSpooler::PrintImmediate(const std::string& data)
{
    LogWrite("[%s] --- PrintImmediate Begin", traits.tag);
    LogWrite("PRINTIMMEDIATE");
    const int32_t type = Number(JobMeaning::kPrintImmediate);
    const int32_t result =
        traits.textHasModePrefix ? AddJob(type, WithModePrefix(data), nullptr) : AddJob(type, data, nullptr);
    LogWrite("[%s] --- PrintImmediate End", traits.tag);
    return result;
}

int32_t CPrintSpooler::CutPaper(int32_t percentage, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- CutPaper Begin", traits.tag);
    const int32_t result = AddJob(Number(JobMeaning::kCutPaper), std::to_string(percentage), outputId);
    LogWrite("[%s] --- CutPaper End", traits.tag);
    return result;
}

int32_t CPrintSpooler::DirectIO(DirectIOPayload buffer, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- DirectIO Begin", traits.tag);
    const int32_t result = AddJob(Number(JobMeaning::kDirectIO), std::move(buffer),
                                  static_cast<uint32_t>(sizeof(printer::DirectIODataStruct)), outputId);
    LogWrite("[%s] --- DirectIO End", traits.tag);
    return result;
}

int32_t CPrintSpooler::DirectIO2nd(DirectIOPayload buffer, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- DirectIO2nd Begin", traits.tag);
    const int32_t result = AddJob(Number(JobMeaning::kDirectIO2nd), std::move(buffer),
                                  static_cast<uint32_t>(sizeof(printer::DirectIODataStruct)), outputId);
    LogWrite("[%s] --- DirectIO2nd End", traits.tag);
    return result;
}

int32_t CPrintSpooler::PrintTransaction()
{
    LogWrite("[%s] --- PrintTransaction Begin", traits.tag);
    int32_t result = 0;
    if (transactionNumber.load() == 0) {
        LogWrite("[%s] --- PrintTransaction Refused!", traits.tag);
    } else {
        result = AddJob(Number(JobMeaning::kPrintTransaction), std::string(), nullptr);
    }
    LogWrite("[%s] --- PrintTransaction End", traits.tag);
    return result;
}

int32_t CPrintSpooler::AddJob(int32_t type, JobPayload buffer, uint32_t length, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- AddJob Begin (%d, Data Buffer)", traits.tag, type);
    return Admit(type, std::string(), std::move(buffer), length, outputId);
}

int32_t CPrintSpooler::AddJob(int32_t type, const std::string& text, std::atomic<int32_t>* outputId)
{
    LogWrite("[%s] --- AddJob Begin (%d, %s)", traits.tag, type, text.c_str());
    return Admit(type, text, JobPayload(), 0, outputId);
}

int32_t CPrintSpooler::RefuseAsBusy()
{
    LogWrite("[%s] --- AddJob ** BUSY **", traits.tag);
    LogWrite("[%s] --- AddJob End", traits.tag);
    return kBusy;
}

int32_t CPrintSpooler::Admit(int32_t type, const std::string& text, JobPayload buffer, uint32_t length,
                             std::atomic<int32_t>* outputId)
{
    if (!IsReady() || !platform::WaitForOne(*hSyncSemaphore, 0).Obtained()) return RefuseAsBusy();
    int32_t result = 0;
    {
        Admission admission(*hSyncSemaphore);
        if (!IsReady()) return RefuseAsBusy();  // closed while it was being admitted

        if (outputId != nullptr) {
            if (++outputIdCounter == 0) outputIdCounter = 1;
            *outputId = static_cast<int32_t>(outputIdCounter);
        }
        auto job = std::make_shared<CSpoolJob>(type, text, std::move(buffer), length, outputIdCounter);

        const JobMeaning meaning = JobMeaningOf(type, traits.numbering);
        const bool async = asyncMode.load() != 0;
        if (meaning == JobMeaning::kPrintImmediate) {
            result = RunImmediate(*job);
        } else if (meaning == JobMeaning::kPrintTransaction) {
            if (async) {
                LogWrite("[%s] --- AddJob ASYNC Transaction Start PUT in Queue", traits.tag);
                // Closed and queued in one step: what comes next is queued behind it, on its own.
                platform::MutexHold hold(*hMutexQueue);
                TakeTransaction(*job);
                Enqueue(std::move(job));
            } else {
                LogWrite("[%s] --- AddJob SYNC Transaction Start Execute", traits.tag);
                {
                    platform::MutexHold hold(*hMutexQueue);
                    TakeTransaction(*job);
                }
                result = RunTransaction(*job);
            }
        } else if (transactionNumber.load() != 0 && JoinTransaction(job)) {
            // The record waits in the transaction list, or its text in the record before it.
        } else if (async) {
            LogWrite("[%s] --- AddJob ASYNC PrintNormal PUT in Queue", traits.tag);
            Enqueue(std::move(job));
        } else {
            LogWrite("[%s] --- AddJob SYNC PrintNormal Execute", traits.tag);
            result = RunSynchronously(*job);
        }
        if (result == kBusy) LogWrite("[%s] --- AddJob ** BUSY **", traits.tag);
    }
    LogWrite("[%s] --- AddJob End", traits.tag);
    return result;
}

int32_t CPrintSpooler::RunSynchronously(CSpoolJob& job)
{
    InvokeCallback(CB_BEGINPRINTJOB, 0, static_cast<intptr_t>(job.outputId));
    const int32_t result = DoJob(job, nullptr);
    if (result == 0) InvokeCallback(CB_JOBCOMPLETE, 0, static_cast<intptr_t>(job.outputId));
    return result;
}

int32_t CPrintSpooler::RunTransaction(CSpoolJob& job)
{
    InvokeCallback(CB_BEGINPRINTJOB, 0, static_cast<intptr_t>(job.outputId));
    const int32_t result = DoPrintTransaction(job);
    if (result == 0) InvokeCallback(CB_JOBCOMPLETE, 0, static_cast<intptr_t>(job.outputId));
    return result;
}

int32_t CPrintSpooler::RunImmediate(const CSpoolJob& job)
{
    LogWrite("[%s] --- AddJob PrintImmediate WAIT Mutex", traits.tag);
    if (!AcquirePrinter()) return kBusy;
    const HeldPrinter printerHeld(*this);
    int32_t result = 0;
    if (printer::CPrinterEncoder* encoder = printer.load()) {
        result = opos::OPOS_E_FAILURE;  // unless it is printed
        printer::PrinterStatus status;
        if (encoder->NeedsRecovery()) {
            LogWrite("[%s] --- AddJob PrintImmediate Printer WAS in ERROR, Check Status", traits.tag);
            encoder->RecoverFromError();
            encoder->GetStatus(status, false);
        }
        if (!encoder->IsInError()) {
            LogWrite("[%s] --- AddJob PrintImmediate Printer OK, Send line", traits.tag);
            result = encoder->PrintText(job.text);
        }
        if (encoder->IsInError()) {
            LogWrite("[%s] --- AddJob PrintImmediate Printer STILL in ERROR!", traits.tag);
            encoder->GetStatus(status, false);
            if (status.CoverOpen()) {
                result = kCoverOpenResult;
            } else if (status.PaperEnd()) {
                result = kPaperEmptyResult;
            } else {
                if (result == printer::kEncoderTextNotSent) encoder->NoteTornOutput();
                if (status.NoResponse()) result = opos::OPOS_E_NOHARDWARE;
            }
            LogWrite("[%s] --- AddJob PrintImmediate Printer STILL in ERROR! (%d)", traits.tag, result);
        }
    }
    lastActivityTime = clock.Seconds();
    return result;
}

}  // namespace marbex::spooler
