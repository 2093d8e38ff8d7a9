#include "device/printer_device.h"

#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

PrinterDevice::PrinterDevice(const ModelDescription& model, platform::Registry& registry, platform::Clock& clock)
    : model_(model),
      tag_(model.tag),
      systemRegistry_(registry),
      clock_(clock),
      openSettled_(platform::Event::Create("", platform::ResetMode::kManual, true)),
      converter_(model.converter),
      PrinterEncoder(model.encoder, clock),
      Spooler(model.spooler, clock, *this),
      Events(clock),
      Registry(registry)
{
}

PrinterDevice::~PrinterDevice()
{
    // The front closes a device before it lets go of it; this is for whoever did not.
    if (State.load() != opos::OPOS_S_CLOSED) {
        BeginClosing();
        FinishClosing();
    }
}

void PrinterDevice::SetErrorCode(int32_t code, int32_t extended)
{
    LogWrite("[%s] SetErrorCode Begin (%d, %d)", tag_, code, extended);
    ResultCode = code;
    ResultCodeExtended = extended;
    if (code != 0) {
        LogWrite("[%s] SetErrorCode ** ERROR **", tag_);
    } else {
        LogWrite("[%s] SetErrorCode ** OK **", tag_);
    }
    LogWrite("[%s] SetErrorCode End", tag_);
}

int32_t PrinterDevice::Refuse(int32_t code)
{
    SetErrorCode(code, 0);
    return code;
}

int32_t PrinterDevice::Refusal(int32_t flags)
{
    constexpr int32_t kClaimed = 2;
    constexpr int32_t kEnabled = 4;
    LogWrite("[%s] VerifyMayUseAfter Begin (%d)", tag_, flags);
    int32_t refusal = opos::OPOS_SUCCESS;
    if (IsClosed()) {
        refusal = opos::OPOS_E_CLOSED;
    } else if ((flags & kClaimed) != 0 && Claimed.load() == 0) {
        refusal = opos::OPOS_E_NOTCLAIMED;
    } else if ((flags & kEnabled) != 0 && DeviceEnabled.load() == 0) {
        refusal = opos::OPOS_E_DISABLED;
    }
    if (refusal != opos::OPOS_SUCCESS) {
        SetErrorCode(refusal, 0);
    } else {
        LogWrite("[%s] VerifyMayUseAfter End", tag_);
    }
    return refusal;
}

}  // namespace marbex::device
