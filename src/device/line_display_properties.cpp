#include "device/line_display_properties.h"

#include <algorithm>

#include "device/printer_device.h"
#include "opos/line_display.h"

namespace marbex::device {

using namespace opos;

bool IsDisplayProperty(int32_t index)
{
    return (index >= PIDXDisp_CharacterSet && index <= PIDXDisp_ScreenMode) ||
           (index >= PIDXDisp_CapBrightness && index <= PIDXDisp_CapScreenMode);
}

std::optional<int32_t> DisplayConstant(int32_t index, const DisplayDescription& display)
{
    switch (index) {
        case PIDXDisp_Columns:
        case PIDXDisp_DeviceColumns:
            return display.columns;
        case PIDXDisp_Rows:
        case PIDXDisp_DeviceRows:
            return display.rows;
        case PIDXDisp_MapCharacterSet:
        case PIDXDisp_CapMapCharacterSet:
            return 1;
        case PIDXDisp_CapCharacterSet:
            return DISP_CCS_UNICODE;
        default:
            break;
    }
    if (index >= PIDXDisp_CapBrightness && index <= PIDXDisp_CapScreenMode) return 0;
    return std::nullopt;
}

int32_t PrinterDevice::DisplayPropertyNumber(int32_t PropIndex)
{
    if (PropIndex == PIDXDisp_CharacterSet) return DisplayCharacterSet.load();
    if (const auto value = DisplayConstant(PropIndex, *model_.display)) return *value;
    SetErrorCode(OPOS_E_ILLEGAL, 0);
    return 0;
}

void PrinterDevice::SetDisplayPropertyNumber(int32_t PropIndex, int32_t Number)
{
    if (PropIndex == PIDXDisp_CharacterSet) {
        const auto offered = model_.display->codePages;
        if (Number == DISP_CS_ANSI || std::find(offered.begin(), offered.end(), Number) != offered.end()) {
            DisplayCharacterSet = Number;
        } else {
            SetErrorCode(OPOS_E_ILLEGAL, 0);
        }
    } else if (!DisplayConstant(PropIndex, *model_.display)) {
        SetErrorCode(OPOS_E_ILLEGAL, 0);
    }
}

}  // namespace marbex::device
