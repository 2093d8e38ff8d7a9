// What the spooler reports becomes state and events. Runs on the spool thread, for synchronous jobs on the
// application's.

#include "device/printer_device.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/memory.h"
#include "support/service_log.h"

namespace marbex::device {

using printer::PrinterStatus;
using support::LogWrite;

namespace {

constexpr uint32_t kPaperJamBit = 0x400000;
constexpr int32_t kPaperJamEvent = 2;

}  // namespace

int32_t PrinterDevice::SpoolerCallback(void* context, int32_t code, intptr_t argument1, intptr_t argument2)
{
    return static_cast<PrinterDevice*>(context)->OnSpooler(code, argument1, argument2);
}

int32_t PrinterDevice::OnSpooler(int32_t code, intptr_t argument1, intptr_t argument2)
{
    // The first status report comes while the service is still being opened.
    platform::WaitForOne(*openSettled_, platform::kForever);
    LogWrite("[%s] SpoolerCallback Begin (%d)", tag_, code);
    int32_t answer = 0;
    switch (code) {
        case spooler::CB_PRINTERROR:
            LogWrite("[%s] CB_PRINTERROR", tag_);
            answer = OnPrinterError(*reinterpret_cast<const PrinterStatus*>(argument1));
            break;
        case spooler::CB_STATUSCHANGE:
            LogWrite("[%s] CB_STATUSCHANGE", tag_);
            OnStatusChange(*reinterpret_cast<const PrinterStatus*>(argument1), static_cast<uint32_t>(argument2));
            break;
        case spooler::CB_BEGINPRINTJOB:
            if (Spooler.RunsOnSpoolThread()) {
                activity_.QueuedJobBegins();
            } else {
                activity_.JobOfCallBegins(calls_.Depth());
            }
            LogWrite("[%s] CB_BEGINPRINTJOB", tag_);
            break;
        case spooler::CB_JOBCOMPLETE:
            if (Spooler.RunsOnSpoolThread()) {
                activity_.QueuedJobIsComplete();
            } else {
                activity_.JobOfCallIsComplete();
            }
            LogWrite("[%s] CB_JOBCOMPLETE", tag_);
            Events.FireOutputCompleteEvent(static_cast<int32_t>(argument2));
            break;
        case spooler::CB_IDLE:
            activity_.QueueIsEmpty();
            if (FlagWhenIdle.exchange(0) != 0) Events.FireStatusUpdateEvent(opos::PTR_SUE_IDLE);
            break;
        default:
            LogWrite("[%s] Unhandled CPrintSpooler CB_message", tag_);
            break;
    }
    LogWrite("[%s] SpoolerCallback End", tag_);
    return answer;
}

int32_t PrinterDevice::OnPrinterError(const PrinterStatus& status)
{
    const bool polling = Spooler.ReportsPolling();
    activity_.ErrorBegins();
    const int32_t answer = platform::WaitForMemory(clock_, [&] { return AskAboutError(status); });
    if (activity_.IsLastError()) {
        ErrorLevel = opos::PTR_EL_NONE;
        ErrorString.Set({});
    }
    activity_.ErrorEnds(polling, answer);
    return answer;
}

int32_t PrinterDevice::AskAboutError(const PrinterStatus& status)
{
    if (status.CoverOpen()) return FireError(opos::OPOS_E_EXTENDED, opos::OPOS_EPTR_COVER_OPEN);
    if (status.PaperEnd()) return FireError(opos::OPOS_E_EXTENDED, opos::OPOS_EPTR_REC_EMPTY);
    if (status.NoResponse()) return FireError(opos::OPOS_E_NOHARDWARE, 0);
    // A jam has an event of its own; its job ends.
    if (status.PaperJam()) return 0;
    return FireError(opos::OPOS_E_FAILURE, 0);
}

void PrinterDevice::DescribeError(int32_t resultCode, int32_t resultCodeExtended)
{
    const char* description = "Printer disconnected";
    if (resultCode == opos::OPOS_E_FAILURE) description = "Output not sent";
    if (resultCodeExtended == opos::OPOS_EPTR_COVER_OPEN) description = "Cover Open";
    if (resultCodeExtended == opos::OPOS_EPTR_REC_EMPTY) description = "Paper End";
    ErrorLevel = opos::PTR_EL_RECOVERABLE;
    ErrorStation = opos::PTR_S_RECEIPT;
    ErrorString.Set(description);
}

int32_t PrinterDevice::FireError(int32_t resultCode, int32_t resultCodeExtended)
{
    DescribeError(resultCode, resultCodeExtended);
    // Queued output is retried unless the application says otherwise; in a call of the application's own an error that
    // nobody handles belongs in the call's result.
    const int32_t preset = Spooler.RunsOnSpoolThread() ? opos::OPOS_ER_RETRY : opos::OPOS_ER_CLEAR;
    return Events.FireErrorEvent(resultCode, resultCodeExtended, preset,
                                 Spooler.ReportsPolling() ? events::ErrorOrigin::kPolling : events::ErrorOrigin::kJob);
}

void PrinterDevice::OnStatusChange(const PrinterStatus& status, uint32_t fullStatus)
{
    // The properties change first: the application reads them when the event tells it to.
    if (status.CoverOpen() && CoverOpen.load() == 0) {
        CoverOpen = 1;
        Events.FireStatusUpdateEvent(opos::PTR_SUE_COVER_OPEN);
    } else if (!status.CoverOpen() && CoverOpen.load() != 0) {
        CoverOpen = 0;
        Events.FireStatusUpdateEvent(opos::PTR_SUE_COVER_OK);
    }
    const int32_t paperEnd = status.PaperEnd() ? 1 : 0;
    const int32_t nearEnd = status.PaperNearEnd() ? 1 : 0;
    if (paperEnd != RecEmpty.load() || nearEnd != RecNearEnd.load()) {
        RecEmpty = paperEnd;
        RecNearEnd = nearEnd;
        if (paperEnd != 0) {
            Events.FireStatusUpdateEvent(opos::PTR_SUE_REC_EMPTY);
        } else if (nearEnd != 0) {
            Events.FireStatusUpdateEvent(opos::PTR_SUE_REC_NEAREMPTY);
        } else {
            Events.FireStatusUpdateEvent(opos::PTR_SUE_REC_PAPEROK);
        }
    }
    if (model_.reportsPaperJam) ReportPaperJam(fullStatus, !status.NoResponse());
}

void PrinterDevice::ReportPaperJam(uint32_t fullStatus, bool answered)
{
    if (!answered) return;
    const bool jam = (fullStatus & kPaperJamBit) != 0;
    if (paperJam_.exchange(jam) == jam) return;
    if (jam) {
        LogWrite("[%s] Call DirectIOEvent for Paper Jam SET (0x%08X)", tag_, fullStatus);
    } else {
        LogWrite("[%s] Call DirectIOEvent for Paper Jam RESET (0x%08X)", tag_, fullStatus);
    }
    const auto data = static_cast<int32_t>(fullStatus);
    const std::u16string none;
    Events.FireDirectIOEvent(kPaperJamEvent, &data, &none);
}

}  // namespace marbex::device
