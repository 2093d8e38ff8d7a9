// Vendor commands and the health check.

#include <algorithm>
#include <new>
#include <optional>

#include "device/printer_device.h"
#include "opos/common.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

constexpr int32_t kCommandRawBytes = 0;
constexpr int32_t kCommandOpenDrawer = 1;
constexpr int32_t kCommandConfirmOutput = 100;  // pData: 1 on, 0 off, until the device is closed

// ESC p, connector 0x30, on and off times of 0x31 units.
constexpr const char* kOpenDrawer =
    "\x1B"
    "p\x30\x31\x31";

}  // namespace

int32_t PrinterDevice::SendDirectIO(std::string_view bytes, bool secondLink)
{
    auto buffer = std::make_unique<printer::DirectIODataStruct>();
    buffer->count = static_cast<uint32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer->data);
    return secondLink ? Spooler.DirectIO2nd(std::move(buffer), &OutputID)
                      : Spooler.DirectIO(std::move(buffer), &OutputID);
}

int32_t PrinterDevice::DirectIO(int32_t Command, int32_t* pData, std::u16string* pString)
{
    const OperationScope scope(*this);
    LogWrite("[%s] DirectIO Begin (%d)", tag_, Command);
    if (IsClosed()) return Refuse(opos::OPOS_E_CLOSED);
    std::optional<int32_t> result = opos::OPOS_SUCCESS;
    switch (Command) {
        case kCommandRawBytes:
            result = SendRawBytes(pData, pString);
            break;
        case kCommandOpenDrawer:
            result = OpenDrawerDirectly(pData, pString);
            break;
        case kCommandConfirmOutput:
            result = SwitchConfirmation(pData, pString);
            break;
        default:
            SetErrorCode(0, 0);
            break;
    }
    if (!result) return Refuse(opos::OPOS_E_ILLEGAL);
    LogWrite("[%s] DirectIO End", tag_);
    return *result;
}

// The recorded result; none for arguments that name no 1 to 128 bytes.
std::optional<int32_t> PrinterDevice::SendRawBytes(const int32_t* pData, const std::u16string* pString)
{
    constexpr int32_t kLimit = sizeof(printer::DirectIODataStruct::data);
    if (pData == nullptr || pString == nullptr || *pData < 1 || *pData > kLimit ||
        pString->size() < static_cast<std::size_t>(*pData)) {
        LogWrite("[%s] --- DirectIO - Data DirectIO (buffer size) not valid", tag_);
        return std::nullopt;
    }
    std::unique_ptr<printer::DirectIODataStruct> buffer(new (std::nothrow) printer::DirectIODataStruct{});
    if (!buffer) {
        LogWrite("[%s] --- DirectIO - DirectIODataStruct Allocation failure", tag_);
        return std::nullopt;
    }
    buffer->count = static_cast<uint32_t>(*pData);
    for (uint32_t i = 0; i < buffer->count; ++i) {
        buffer->data[i] = static_cast<uint8_t>((*pString)[i] & 0xFF);
        LogWrite("[%s] --- Data buffer DirectIO: %d", tag_, buffer->data[i]);
    }
    const int32_t result = RecordSpoolerResult(Spooler.DirectIO(std::move(buffer), &OutputID));
    Events.FireDirectIOEvent(kCommandRawBytes, pData, pString);
    return result;
}

int32_t PrinterDevice::OpenDrawerDirectly(const int32_t* pData, const std::u16string* pString)
{
    const int32_t result = RecordSpoolerResult(Spooler.PrintImmediate(kOpenDrawer));
    Events.FireDirectIOEvent(kCommandOpenDrawer, pData, pString);
    return result;
}

// The recorded result; none for a value that is neither 0 nor 1.
std::optional<int32_t> PrinterDevice::SwitchConfirmation(const int32_t* pData, const std::u16string* pString)
{
    if (pData == nullptr || *pData < 0 || *pData > 1) return std::nullopt;
    Spooler.ConfirmOutput(*pData == 1);
    SetErrorCode(0, 0);
    Events.FireDirectIOEvent(kCommandConfirmOutput, pData, pString);
    return opos::OPOS_SUCCESS;
}

int32_t PrinterDevice::CheckHealth(int32_t Level)
{
    LogWrite("[%s] CheckHealth Begin (%d)", tag_, Level);
    int32_t result = opos::OPOS_SUCCESS;
    if (Claimed.load() == 0 || IsClosed()) {
        result = opos::OPOS_E_NOTCLAIMED;
    } else if (PrinterEncoder.IsInError()) {
        CheckHealthText.Set("Unable to communicate, hardware may be disconnected");
        result = opos::OPOS_E_NOHARDWARE;
    } else {
        CheckHealthText.Set({});
    }
    LogWrite("[%s] CheckHealth End", tag_);
    SetErrorCode(result, 0);
    return result;
}

}  // namespace marbex::device
