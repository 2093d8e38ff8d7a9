#include "marbex_opos/printing/printer_session.h"

#include "marbex_opos/devices/device_store.h"
#include "marbex_opos/opos/code_names.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr int32_t kClaimTimeout = 5000;         // ms
constexpr int32_t kCommandRawBytes = 0;         // DirectIO
constexpr int32_t kCommandConfirmOutput = 100;  // DirectIO

}  // namespace

PrinterSession::PrinterSession(const std::string& serverPath, const std::string& device)
    : session_(serverPath, [](const Event&) {})
{
    // The service answers an unknown name with a default profile; a person who mistypes a name wants to be told.
    DeviceStore store;
    problem_ = store.RegistryProblem();
    const std::optional<DeviceView> view = problem_.empty() ? store.View(device) : std::nullopt;
    if (problem_.empty() && !view) problem_ = store.NoDevice(device);
    if (!problem_.empty()) return;
    profile_ = view->profile;
    Open(view->name);
    if (!problem_.empty()) problem_ = device + ": " + problem_;
}

void PrinterSession::Open(const std::string& name)
{
    printer_ = session_.Object(ObjectKind::kPrinter, problem_);
    if (printer_ == nullptr) return;
    const int32_t opened = printer_->CallNumber("OpenService", {u"POSPrinter", platform::Utf16FromUtf8(name)},
                                                session_.ControlObjectOf(ObjectKind::kPrinter));
    if (opened != opos::OPOS_SUCCESS) {
        problem_ = "OpenService: " + ResultText(opened);
        return;
    }
    Step("ClaimDevice", {kClaimTimeout});
    if (!problem_.empty()) return;
    printer_->Call("SetPropertyNumber", {opos::PIDX_DeviceEnabled, 1});
    if (Number(opos::PIDX_DeviceEnabled) == 0) problem_ = "DeviceEnabled: " + LastResult();
    if (problem_.empty()) Step("DirectIO", {kCommandConfirmOutput, 1, u""});
}

PrinterSession::~PrinterSession()
{
    if (printer_ == nullptr) return;
    session_.RunWaitingMessages();
    printer_->Call("CloseService", {});
}

void PrinterSession::Step(std::string_view method, std::initializer_list<Value> arguments)
{
    const int32_t result = Call(method, arguments);
    if (result != opos::OPOS_SUCCESS) problem_ = std::string(method) + ": " + LastResult();
}

int32_t PrinterSession::Call(std::string_view method, std::initializer_list<Value> arguments)
{
    session_.RunWaitingMessages();
    return printer_->CallNumber(method, arguments);
}

int32_t PrinterSession::PrintNormal(std::u16string_view text)
{
    return Call("PrintNormal", {opos::PTR_S_RECEIPT, std::u16string(text)});
}

int32_t PrinterSession::SendBytes(std::string_view bytes)
{
    std::u16string wide;
    for (const char byte : bytes)
        wide += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return Call("DirectIO", {kCommandRawBytes, static_cast<int32_t>(bytes.size()), wide});
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

std::string PrinterSession::WhyNotPrinted()
{
    const int32_t code = Number(opos::PIDX_ResultCode);
    const int32_t extended = Number(opos::PIDX_ResultCodeExtended);
    if (code == opos::OPOS_E_EXTENDED && extended == opos::OPOS_EPTR_COVER_OPEN) {
        return "the cover is open; close it and print again";
    }
    if (code == opos::OPOS_E_EXTENDED && extended == opos::OPOS_EPTR_REC_EMPTY) {
        return "there is no paper; put a roll in and print again";
    }
    if (code == opos::OPOS_E_NOHARDWARE) return "the printer does not answer: " + ResultText(code);
    return ResultText(code, extended);
}

int32_t PrinterSession::PaperDots()
{
    constexpr int32_t kDotsAMillimetre = 8;
    printer_->Call("SetPropertyNumber", {opos::PIDXPtr_MapMode, opos::PTR_MM_METRIC});
    const int32_t width = Number(opos::PIDXPtr_RecLineWidth);  // hundredths of a millimetre
    printer_->Call("SetPropertyNumber", {opos::PIDXPtr_MapMode, opos::PTR_MM_DOTS});
    return width * kDotsAMillimetre / 100;
}

}  // namespace marbex::tools
