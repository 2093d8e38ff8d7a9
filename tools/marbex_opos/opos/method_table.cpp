#include "marbex_opos/opos/method_table.h"

#include <array>

#include "platform/registry.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kControlObject = ", dispatch ControlObject";

constexpr auto kPrinterMethods = std::to_array<Method>({
    {"OpenService", "string DeviceClass, string DeviceName, dispatch ControlObject"},
    {"CloseService", ""},
    {"ClaimDevice", "long Timeout"},
    {"GetOpenResult", ""},
    {"COFreezeEvents", "BOOL Freeze"},
    {"ResetStatistics", "string StatisticsBuffer"},
    {"UpdateStatistics", "string StatisticsBuffer"},
    {"BeginInsertion", "long Timeout"},
    {"BeginRemoval", "long Timeout"},
    {"ChangePrintSide", "long Side"},
    {"CutPaper", "long Percentage"},
    {"EndInsertion", ""},
    {"EndRemoval", ""},
    {"MarkFeed", "long Type"},
    {"PrintBarCode",
     "long Station, string Data, long Symbology, long Height, long Width, long Alignment, long TextPosition"},
    {"PrintBitmap", "long Station, string FileName, long Width, long Alignment"},
    {"PrintImmediate", "long Station, string Data"},
    {"PrintNormal", "long Station, string Data"},
    {"PrintTwoNormal", "long Stations, string Data1, string Data2"},
    {"RotatePrint", "long Station, long Rotation"},
    {"SetBitmap", "long BitmapNumber, long Station, string FileName, long Width, long Alignment"},
    {"SetLogo", "long Location, string Data"},
    {"TransactionPrint", "long Station, long Control"},
    {"ValidateData", "long Station, string Data"},
    {"GetPropertyNumber", "long PropIndex"},
    {"GetPropertyString", "long PropIndex"},
    {"SetPropertyString", "long PropIndex, string String"},
    {"SetPropertyNumber", "long PropIndex, long Number"},
    {"ReleaseDevice", ""},
    {"DirectIO", "long Command, long* pData, string* pString"},
    {"CheckHealth", "long Level"},
    {"ClearOutput", ""},
    {"RetrieveStatistics", "string* pStatisticsBuffer"},
    {"Claim", "long Timeout"},
    {"Close", ""},
    {"Release", ""},
    {"DirectIO_NET", "long Command, long Data, string String"},
    {"OpenService_NET", "string DeviceClass, string DeviceName, string EventFileName"},
    {"RetrieveStatistics_NET", "string StatisticsBuffer"},
    {"CompareFirmwareVersion", "string FirmwareFileName, long Result"},
    {"UpdateFirmware", "string FirmwareFileName"},
    {"ClearPrintArea", ""},
    {"PageModePrint", "long Control"},
    {"PrintMemoryBitmap", "long Station, string Data, long Type, long Width, long Alignment"},
    {"DrawRuledLine",
     "long Station, string PositionList, long LineDirection, long LineWidth, long LineStyle, long LineColor"},
});

constexpr auto kCashDrawerMethods = std::to_array<Method>({
    {"OpenService", "string DeviceClass, string DeviceName, dispatch ControlObject"},
    {"CloseService", ""},
    {"ClaimDevice", "long Timeout"},
    {"COFreezeEvents", "BOOL Freeze"},
    {"CompareFirmwareVersion", "string FirmwareFileName, long Result"},
    {"UpdateFirmware", "string FirmwareFileName"},
    {"DirectIO", "long Command, long* pData, string* pString"},
    {"CheckHealth", "long Level"},
    {"ReleaseDevice", ""},
    {"GetPropertyNumber", "long PropIndex"},
    {"GetPropertyString", "long PropIndex"},
    {"SetPropertyString", "long PropIndex, string String"},
    {"SetPropertyNumber", "long PropIndex, long Number"},
    {"OpenDrawer", ""},
    {"WaitForDrawerClose", "long BeepTimeout, long BeepFrequency, long BeepDuration, long BeepDelay"},
    {"ResetStatistics", "string StatisticsBuffer"},
    {"RetrieveStatistics", "string* pStatisticsBuffer"},
    {"UpdateStatistics", "string StatisticsBuffer"},
    {"ClearInput", ""},
    {"ClearOutput", ""},
});

constexpr auto kLineDisplayMethods = std::to_array<Method>({
    {"OpenService", "string DeviceClass, string DeviceName, dispatch ControlObject"},
    {"CloseService", ""},
    {"ClaimDevice", "long Timeout"},
    {"COFreezeEvents", "BOOL Freeze"},
    {"ReleaseDevice", ""},
    {"CheckHealth", "long Level"},
    {"DirectIO", "long Command, long* pData, string* pString"},
    {"ClearDescriptors", ""},
    {"SetDescriptor", "long Descriptor, long Attribute", true},
    {"ClearText", ""},
    {"CreateWindow",
     "long ViewportRow, long ViewportColumn, long ViewportHeight, long ViewportWidth, long WindowHeight, "
     "long WindowWidth"},
    {"DestroyWindow", ""},
    {"RefreshWindow", "long Window"},
    {"DisplayText", "string Data, long Attribute"},
    {"DisplayTextAt", "long Row, long Column, string Data, long Attribute"},
    {"ScrollText", "long Direction, long Units"},
    {"CompareFirmwareVersion", "string FirmwareFileName, long Result"},
    {"UpdateFirmware", "string FirmwareFileName"},
    {"ResetStatistics", "string StatisticsBuffer"},
    {"RetrieveStatistics", "string* pStatisticsBuffer"},
    {"UpdateStatistics", "string StatisticsBuffer"},
    {"DefineGlyph", "long GlyphCode, string Glyph"},
    {"ReadCharacterAtCursor", "long Character"},
    {"DisplayBitmap", "string FileName, long Width, long AlignmentX, long AlignmentY"},
    {"SetBitmap", "long BitmapNumber, string FileName, long Width, long AlignmentX, long AlignmentY"},
    {"GetPropertyNumber", "long PropIndex"},
    {"GetPropertyString", "long PropIndex"},
    {"SetPropertyString", "long PropIndex, string String"},
    {"SetPropertyNumber", "long PropIndex, long Number"},
});

ArgumentKind KindNamed(std::string_view type)
{
    if (type == "long") return ArgumentKind::kLong;
    if (type == "long*") return ArgumentKind::kLongInOut;
    if (type == "string") return ArgumentKind::kText;
    if (type == "string*") return ArgumentKind::kTextInOut;
    return type == "BOOL" ? ArgumentKind::kBool : ArgumentKind::kDispatch;
}

}  // namespace

std::span<const Method> MethodsOf(ObjectKind kind)
{
    switch (kind) {
        case ObjectKind::kPrinter:
            return kPrinterMethods;
        case ObjectKind::kCashDrawer:
            return kCashDrawerMethods;
        case ObjectKind::kLineDisplay:
            break;
    }
    return kLineDisplayMethods;
}

const Method* FindMethod(ObjectKind kind, std::string_view name)
{
    for (const Method& method : MethodsOf(kind)) {
        if (platform::SameName(method.name, name)) return &method;
    }
    return nullptr;
}

std::vector<ArgumentKind> ArgumentKinds(const Method& method)
{
    std::vector<ArgumentKind> kinds;
    std::string_view rest = method.arguments;
    while (!rest.empty()) {
        kinds.push_back(KindNamed(rest.substr(0, rest.find(' '))));
        const std::size_t comma = rest.find(", ");
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 2);
    }
    return kinds;
}

std::string Signature(const Method& method)
{
    std::string_view arguments = method.arguments;
    if (arguments.ends_with(kControlObject)) arguments.remove_suffix(kControlObject.size());
    return std::string(method.name) + "(" + std::string(arguments) + ")";
}

}  // namespace marbex::tools
