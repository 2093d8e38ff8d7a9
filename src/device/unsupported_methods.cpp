// What none of the printers can do: a line in the log, 106, nothing else.

#include "device/printer_device.h"
#include "opos/common.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

int32_t PrinterDevice::GetOpenResult()
{
    LogWrite("[%s] GetOpenResult NOT SUPPORTED!!!", tag_);
    return opos::OPOS_OR_FAILEDOPEN;
}

int32_t PrinterDevice::ResetStatistics(const std::string&)
{
    LogWrite("[%s] ResetStatistics NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::UpdateStatistics(const std::string&)
{
    LogWrite("[%s] UpdateStatistics NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::RetrieveStatistics(std::string*)
{
    LogWrite("[%s] RetrieveStatistics NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::BeginInsertion(int32_t)
{
    LogWrite("[%s] BeginInsertion NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::BeginRemoval(int32_t)
{
    LogWrite("[%s] BeginRemoval NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::ChangePrintSide(int32_t)
{
    LogWrite("[%s] ChangePrintSide NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::EndInsertion()
{
    LogWrite("[%s] EndInsertion NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::EndRemoval()
{
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::PrintTwoNormal(int32_t, const std::string&, const std::string&)
{
    LogWrite("[%s] PrintTwoNormal NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::SetBitmap(int32_t, int32_t, const std::string&, int32_t, int32_t)
{
    LogWrite("[%s] SetBitmap NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::SetLogo(int32_t, const std::string&)
{
    LogWrite("[%s] SetLogo NOT SUPPORTED!!!", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::CompareFirmwareVersion(const std::string&, int32_t)
{
    LogWrite("[%s] CompareFirmwareVersion Unsupported", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::UpdateFirmware(const std::string&)
{
    LogWrite("[%s] UpdateFirmware Unsupported", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::ClearPrintArea()
{
    LogWrite("[%s] ClearPrintArea Unsupported", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

int32_t PrinterDevice::PageModePrint(int32_t)
{
    LogWrite("[%s] PageModePrint Unsupported", tag_);
    return Refuse(opos::OPOS_E_ILLEGAL);
}

}  // namespace marbex::device
