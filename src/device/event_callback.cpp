// The last hop of an event: into the control object, or, for a service opened for a file, as one record at its end.
// Runs on the thread that owns the delivery window.

#include "device/printer_device.h"
#include "device/process_state.h"
#include "opos/common.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::device {

using events::ErrorEventRecord;
using events::EventRecord;
using support::LogWrite;

namespace {

constexpr int kFileAttempts = 100;
constexpr uint32_t kFileAttemptMilliseconds = 500;

// One record of the event file: a letter, fields after tabs, a vertical bar.
std::string FileRecord(int32_t code, const EventRecord& record)
{
    const auto join = [](char letter, std::initializer_list<std::string> fields) {
        std::string line(1, letter);
        for (const std::string& field : fields)
            line += '\t' + field;
        return line + '|';
    };
    switch (code) {
        case events::CB_DIRECTIOEVENT: {
            const auto& event = static_cast<const events::DirectIOEventRecord&>(record);
            return join('A', {std::to_string(event.eventNumber), std::to_string(event.data),
                              platform::NarrowAnsi(event.string)});
        }
        case events::CB_ERROREVENT: {
            const auto& event = static_cast<const ErrorEventRecord&>(record);
            return join('B', {std::to_string(event.resultCode), std::to_string(event.resultCodeExtended),
                              std::to_string(event.errorLocus), std::to_string(event.errorResponse.load())});
        }
        case events::CB_OUTPUTCOMPLETEEVENT:
            return join('C', {std::to_string(static_cast<const events::OutputCompleteEventRecord&>(record).outputId)});
        case events::CB_STATUSUPDATEEVENT:
            return join('D', {std::to_string(static_cast<const events::StatusUpdateEventRecord&>(record).data)});
        default:
            return {};
    }
}

}  // namespace

int32_t PrinterDevice::EventCallback(void* context, int32_t code, EventRecord& record)
{
    return static_cast<PrinterDevice*>(context)->OnEvent(code, record);
}

int32_t PrinterDevice::OnEvent(int32_t code, EventRecord& record)
{
    LogWrite("[%s] EventCallback Begin (%d)", tag_, code);
    if (code == events::CB_ERROREVENT) {
        DeliverError(static_cast<ErrorEventRecord&>(record));
    } else {
        Deliver(code, record);
    }
    LogWrite("[%s] EventCallback End", tag_);
    return 0;
}

void PrinterDevice::Deliver(int32_t code, EventRecord& record)
{
    const bool toFile = TheProcess().NetMode();
    switch (code) {
        case events::CB_DIRECTIOEVENT:
            if (!toFile) {
                const auto& event = static_cast<const events::DirectIOEventRecord&>(record);
                ControlObject_.SODirectIO(event.eventNumber, event.data, event.string);
            }
            break;
        case events::CB_OUTPUTCOMPLETEEVENT:
            if (!toFile) {
                ControlObject_.SOOutputComplete(static_cast<const events::OutputCompleteEventRecord&>(record).outputId);
            }
            break;
        case events::CB_STATUSUPDATEEVENT:
            if (!toFile) {
                ControlObject_.SOStatusUpdate(static_cast<const events::StatusUpdateEventRecord&>(record).data);
            }
            break;
        default:
            LogWrite("[%s] Unhandled CEventHandler CB_message", tag_);
            return;
    }
    if (toFile) AppendEvent(code, record);
}

void PrinterDevice::DeliverError(ErrorEventRecord& record)
{
    const uint32_t generation = openGeneration_.load();
    if (!record.IsResolved()) {
        activity_.ErrorIsDelivered();
        DescribeError(record.resultCode,
                      record.resultCodeExtended);  // another error may have been fired since this one was
    }
    int32_t response = record.errorResponse.load();
    if (TheProcess().NetMode()) {
        AppendEvent(events::CB_ERROREVENT, record);
    } else if (!ControlObject_.SOError(record.resultCode, record.resultCodeExtended, record.errorLocus, response)) {
        response = opos::OPOS_ER_CLEAR;  // nobody could be asked
    }
    // The handler may have closed or reopened the service, and the answer may have been given meanwhile.
    if (generation != openGeneration_.load() || IsClosed() || record.IsResolved()) return;
    activity_.ErrorIsAnswered(record.origin == events::ErrorOrigin::kPolling);
    ErrorResponse = response;
    record.errorResponse = response;
    if (record.origin == events::ErrorOrigin::kJob) Spooler.NoteAnswer(response);
    record.Resolve(response);
}

void PrinterDevice::AppendEvent(int32_t code, const EventRecord& record)
{
    const std::string fileName = TheProcess().EventFileName();
    const std::string line = FileRecord(code, record);
    for (int attempt = 0; attempt < kFileAttempts; ++attempt) {
        if (platform::AppendExclusively(fileName, line)) return;
        if (closing_.load()) break;  // nobody waits for a reader that keeps the file
        clock_.Sleep(kFileAttemptMilliseconds);
    }
    LogWrite("[%s] EventCallback The event file %s cannot be had, event dropped", tag_, fileName.c_str());
}

}  // namespace marbex::device
