#include "companions/line_display_driver.h"

namespace marbex::companions {

namespace {

constexpr CompanionTraits kTraits = {
    .tag = "MarbexOposLineDisplayDriver",
    .deviceName = "Service.MarbexOposLineDisplayDriver",
    .deviceDescription = "Marbex OPOS LineDisplay",
    .hardwareMissing = "This printer doesn't support Line Display",
    .modelFlag = &support::PrinterModelStruct::HasLineDisplay,
    .zeroProperties = {},
};

}  // namespace

MarbexOposLineDisplayDriver::MarbexOposLineDisplayDriver() : CompanionService(kTraits) {}

int32_t MarbexOposLineDisplayDriver::ClearText()
{
    const auto printer = Enter("ClearText Begin");
    if (printer == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!VerifyMayUse()) return ResultCode();
    const int32_t result = printer->External_LineDisplay_ClearText();
    Leave("ClearText End");
    return result;
}

int32_t MarbexOposLineDisplayDriver::DisplayText(const std::string& Data, int32_t Attribute)
{
    const auto printer = Enter("DisplayText Begin");
    if (printer == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!VerifyMayUse()) return ResultCode();
    const int32_t result = printer->External_LineDisplay_DisplayText(Data, Attribute);
    Leave("DisplayText End");
    return result;
}

int32_t MarbexOposLineDisplayDriver::DisplayTextAt(int32_t Row, int32_t Column, const std::string& Data,
                                                   int32_t Attribute)
{
    const auto printer = Enter("DisplayTextAt Begin");
    if (printer == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!VerifyMayUse()) return ResultCode();
    const int32_t result = printer->External_LineDisplay_DisplayTextAt(Row, Column, Data, Attribute);
    Leave("DisplayTextAt End");
    return result;
}

int32_t MarbexOposLineDisplayDriver::DirectIO(int32_t Command, int32_t*, std::u16string*)
{
    if (Enter("DirectIO Begin (" + std::to_string(Command) + ")") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!IsClosed() && Command != 0) SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
    Leave("DirectIO End");
    return ResultCode();
}

void MarbexOposLineDisplayDriver::SetPropertyNumber(int32_t PropIndex, int32_t Number)
{
    const auto printer = Enter("SetPropertyNumber Begin");
    if (printer == nullptr) return;
    if (PropIndex == opos::PIDX_DeviceEnabled) {
        SetDeviceEnabled(Number != 0);
    } else {
        printer->SetPropertyNumber(PropIndex, Number);
    }
    Leave("SetPropertyNumber End");
}

void MarbexOposLineDisplayDriver::SetPropertyString(int32_t PropIndex, const std::string& String)
{
    const auto printer = Enter("SetPropertyString Begin");
    if (printer == nullptr) return;
    printer->SetPropertyString(PropIndex, String);
    Leave("SetPropertyString End");
}

int32_t MarbexOposLineDisplayDriver::ClearDescriptors()
{
    return RefuseUnsupported("ClearDescriptors Begin", "ClearDescriptors Not Supported");
}

int32_t MarbexOposLineDisplayDriver::SetDescriptor(int32_t, int32_t)
{
    return RefuseUnsupported("SetDescriptor Begin", "SetDescriptor Not Supported");
}

int32_t MarbexOposLineDisplayDriver::CreateDisplayWindow(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t)
{
    return RefuseUnsupported("CreateWindow Begin", "CreateWindow Not Supported");
}

int32_t MarbexOposLineDisplayDriver::DestroyWindow()
{
    return RefuseUnsupported("DestroyWindow Begin", "DestroyWindow Not Supported");
}

int32_t MarbexOposLineDisplayDriver::RefreshWindow(int32_t)
{
    return RefuseUnsupported("RefreshWindow Begin", "RefreshWindow Not Supported");
}

int32_t MarbexOposLineDisplayDriver::ScrollText(int32_t, int32_t)
{
    return RefuseUnsupported("ScrollText Begin", "ScrollText Not Supported");
}

int32_t MarbexOposLineDisplayDriver::DefineGlyph(int32_t, const std::string&)
{
    return RefuseUnsupported("DefineGlyph Begin", "DefineGlyph Not Supported");
}

int32_t MarbexOposLineDisplayDriver::ReadCharacterAtCursor(int32_t)
{
    return RefuseUnsupported("ReadCharacterAtCursor Begin", "ReadCharacterAtCursor Not Supported");
}

int32_t MarbexOposLineDisplayDriver::DisplayBitmap(const std::string&, int32_t, int32_t, int32_t)
{
    return RefuseUnsupported("DisplayBitmap Begin", "DisplayBitmap Not Supported");
}

int32_t MarbexOposLineDisplayDriver::SetBitmap(int32_t, const std::string&, int32_t, int32_t, int32_t)
{
    return RefuseUnsupported("SetBitmap Begin", "SetBitmap Not Supported");
}

}  // namespace marbex::companions
