#include "device/posprinter_device.h"

namespace marbex::device {

using opos::OPOS_E_ILLEGAL;

int32_t POSPrinterDevice::OpenService(const std::string&, const std::string&, IDispatch*)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::CloseService()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ClaimDevice(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::GetOpenResult()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::COFreezeEvents(bool)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ResetStatistics(const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::UpdateStatistics(const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::BeginInsertion(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::BeginRemoval(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ChangePrintSide(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::CutPaper(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::EndInsertion()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::EndRemoval()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::MarkFeed(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::CompareFirmwareVersion(const std::string&, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::UpdateFirmware(const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ClearPrintArea()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PageModePrint(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintBarCode(int32_t, const std::string&, int32_t, int32_t, int32_t, int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintBitmap(int32_t, const std::string&, int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintImmediate(int32_t, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintNormal(int32_t, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintTwoNormal(int32_t, const std::string&, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::RotatePrint(int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::SetBitmap(int32_t, int32_t, const std::string&, int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::SetLogo(int32_t, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::TransactionPrint(int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ValidateData(int32_t, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::GetPropertyNumber(int32_t)
{
    return OPOS_E_ILLEGAL;
}
std::optional<std::string> POSPrinterDevice::GetPropertyString(int32_t)
{
    return std::string();
}
void POSPrinterDevice::SetPropertyString(int32_t, const std::string&) {}
void POSPrinterDevice::SetPropertyNumber(int32_t, int32_t) {}
int32_t POSPrinterDevice::ReleaseDevice()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::DirectIO(int32_t, int32_t*, std::u16string*)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::CheckHealth(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::ClearOutput()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::RetrieveStatistics(std::string*)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::Claim(int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::Close()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::Release()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::PrintMemoryBitmap(int32_t, const std::string&, int32_t, int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::DrawRuledLine(int32_t, const std::string&, int32_t, int32_t, int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::OpenService_NET(const std::string&, const std::string&, const std::string&)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::External_CashDrawer_OpenDrawer(int32_t, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::External_LineDisplay_ClearText()
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::External_LineDisplay_DisplayText(const std::string&, int32_t)
{
    return OPOS_E_ILLEGAL;
}
int32_t POSPrinterDevice::External_LineDisplay_DisplayTextAt(int32_t, int32_t, const std::string&, int32_t)
{
    return OPOS_E_ILLEGAL;
}

}  // namespace marbex::device
