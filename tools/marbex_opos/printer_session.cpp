#include "marbex_opos/printer_session.h"

#include "marbex_opos/device_store.h"
#include "marbex_opos/output.h"
#include "marbex_opos/result_names.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr int32_t kClaimTimeout = 5000;  // ms
constexpr int32_t kFirstStatus = 1500;   // ms; an open device asks its printer at once
const std::string kIdle = std::to_string(opos::PTR_SUE_IDLE);

}  // namespace

PrinterSession::PrinterSession(const std::string& serverPath, const std::string& device)
    : session_(serverPath, [this](const Event& event) { OnEvent(event); })
{
    // The service answers an unknown name with a default profile; a person who mistypes a name wants to be told.
    DeviceStore store;
    problem_ = store.RegistryProblem();
    if (problem_.empty() && !store.View(device)) problem_ = "there is no such device";
    if (!problem_.empty()) return;

    printer_ = session_.Object(ObjectKind::kPrinter, problem_);
    if (printer_ == nullptr) return;
    const int32_t opened = printer_->CallNumber("OpenService", {u"POSPrinter", platform::Utf16FromUtf8(device)},
                                                session_.ControlObjectOf(ObjectKind::kPrinter));
    if (opened != opos::OPOS_SUCCESS) {
        problem_ = "OpenService: " + ResultText(opened);
        return;
    }
    Step("ClaimDevice", {kClaimTimeout});
    if (!problem_.empty()) return;
    printer_->Call("SetPropertyNumber", {opos::PIDX_DeviceEnabled, 1});
    if (Number(opos::PIDX_DeviceEnabled) == 0) problem_ = "DeviceEnabled: " + LastResult();
}

PrinterSession::~PrinterSession()
{
    if (printer_ == nullptr) return;
    session_.RunWaitingMessages();
    printer_->Call("CloseService", {});
}

void PrinterSession::OnEvent(const Event& event)
{
    Print("event: " + std::string(EventName(event.kind)) + " " + event.arguments + "\n");
    hasReported_ = hasReported_ || (event.kind == EventKind::kStatusUpdate && event.arguments != kIdle);
}

void PrinterSession::AwaitStatus()
{
    session_.RunMessagesUntil(kFirstStatus, [this] { return hasReported_; });
}

void PrinterSession::Step(std::string_view method, std::initializer_list<Value> arguments)
{
    const int32_t result = Call(method, arguments);
    if (result != opos::OPOS_SUCCESS) problem_ = std::string(method) + ": " + LastResult();
}

int32_t PrinterSession::Call(std::string_view method, std::initializer_list<Value> arguments)
{
    return printer_->CallNumber(method, arguments);
}

int32_t PrinterSession::Number(int32_t property)
{
    return printer_->CallNumber("GetPropertyNumber", {property});
}

std::string PrinterSession::Text(int32_t property)
{
    const CallOutcome outcome = printer_->Call("GetPropertyString", {property});
    const auto* text = std::get_if<std::u16string>(&outcome.result);
    return text != nullptr ? platform::Utf8FromUtf16(*text) : std::string();
}

std::string PrinterSession::LastResult()
{
    const int32_t code = Number(opos::PIDX_ResultCode);
    return ResultText(code, Number(opos::PIDX_ResultCodeExtended));
}

}  // namespace marbex::tools
