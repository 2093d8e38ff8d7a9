#include "device/property_table.h"

#include <algorithm>
#include <array>

#include "opos/common.h"
#include "opos/printer.h"

namespace marbex::device {

using namespace opos;  // the table is made of the standard's names

PropertyAccess AccessOf(int32_t index)
{
    const auto between = [index](int32_t first, int32_t last) { return index >= first && index <= last; };
    if (index == PIDX_State) return PropertyAccess::kAlways;
    if (index == PIDX_DeviceEnabled) return PropertyAccess::kOpenClaimed;
    switch (index) {
        case PIDX_Claimed:
        case PIDX_BinaryConversion:
        case PIDX_PowerNotify:
        case PIDX_PowerState:
        case PIDXPtr_AsyncMode:
        case PIDXPtr_ErrorStation:
        case PIDXPtr_FlagWhenIdle:
        case PIDXPtr_MapMode:
            return PropertyAccess::kOpen;
        default:
            break;
    }
    if (between(PIDX_FreezeEvents, PIDX_ServiceObjectVersion) ||
        between(PIDX_CapPowerReporting, PIDX_CapUpdateFirmware) ||
        between(PIDXPtr_ErrorLevel, PIDXPtr_CartridgeNotify) ||
        between(PIDXPtr_MapCharacterSet, PIDXPtr_PageModeVerticalPosition) ||
        between(PIDXPtr_CapConcurrentJrnRec, PIDXPtr_CapSlpRuledLine) ||
        between(PIDX_CheckHealthText, PIDX_ServiceObjectDescription) ||
        between(PIDXPtr_CharacterSetList, PIDXPtr_PageModePrintArea)) {
        return PropertyAccess::kOpen;
    }
    if (between(PIDXPtr_CharacterSet, PIDXPtr_SlpCurrentCartridge)) return PropertyAccess::kOpenClaimedEnabled;
    return PropertyAccess::kRefused;
}

std::span<const NumericProperty> PropertyTable::Numbers()
{
    using Device = PrinterDevice;
    static constexpr NumericProperty kNumbers[] = {
        {PIDX_Claimed, WriteRule::kIgnored, 0, &Device::Claimed},
        {PIDX_DeviceEnabled, WriteRule::kDeviceEnabled, 0, &Device::DeviceEnabled},
        {PIDX_FreezeEvents, WriteRule::kFreezeEvents, 0, &Device::FreezeEvents},
        {PIDX_OutputID, WriteRule::kIgnored, 0, &Device::OutputID},
        {PIDX_ResultCode, WriteRule::kIgnored, 0, &Device::ResultCode, true},
        {PIDX_ResultCodeExtended, WriteRule::kIgnored, 0, &Device::ResultCodeExtended, true},
        {PIDX_ServiceObjectVersion, WriteRule::kIgnored, 0, &Device::ServiceObjectVersion, true},
        {PIDX_State, WriteRule::kIgnored, 0, &Device::State, true},
        {PIDX_BinaryConversion, WriteRule::kSameOnly},
        {PIDX_PowerNotify, WriteRule::kSameOnly},
        {PIDX_PowerState, WriteRule::kIgnored, 2000},
        {PIDX_CapPowerReporting},
        {PIDX_CapStatisticsReporting},
        {PIDX_CapUpdateStatistics},
        {PIDX_CapCompareFirmwareVersion},
        {PIDX_CapUpdateFirmware},
        {PIDXPtr_AsyncMode, WriteRule::kAsyncMode, 0, &Device::AsyncMode},
        {PIDXPtr_CharacterSet, WriteRule::kIgnored, PTR_CS_ANSI},
        {PIDXPtr_CoverOpen, WriteRule::kIgnored, 0, &Device::CoverOpen},
        {PIDXPtr_ErrorStation, WriteRule::kIgnored, 1, &Device::ErrorStation},
        {PIDXPtr_FlagWhenIdle, WriteRule::kFlagWhenIdle, 0, &Device::FlagWhenIdle},
        {PIDXPtr_JrnEmpty},
        {PIDXPtr_JrnLetterQuality, WriteRule::kSameOnly},
        {PIDXPtr_JrnLineChars, WriteRule::kSameOnly},
        {PIDXPtr_JrnLineHeight, WriteRule::kSameOnly},
        {PIDXPtr_JrnLineSpacing, WriteRule::kSameOnly},
        {PIDXPtr_JrnLineWidth},
        {PIDXPtr_JrnNearEnd},
        {PIDXPtr_MapMode, WriteRule::kMapMode, 1, &Device::MapMode},
        {PIDXPtr_RecEmpty, WriteRule::kIgnored, 0, &Device::RecEmpty},
        {PIDXPtr_RecLetterQuality, WriteRule::kSameOnly},
        {PIDXPtr_RecLineChars, WriteRule::kSameOnly, 42},
        {PIDXPtr_RecLineHeight, WriteRule::kIgnored, 0, &Device::RecLineHeight, true},
        {PIDXPtr_RecLineSpacing, WriteRule::kIgnored, 0, &Device::RecLineSpacing, true},
        {PIDXPtr_RecLinesToPaperCut, WriteRule::kIgnored, 4, &Device::RecLinesToPaperCut, true},
        {PIDXPtr_RecLineWidth, WriteRule::kIgnored, 0, &Device::RecLineWidth, true},
        {PIDXPtr_RecNearEnd, WriteRule::kIgnored, 0, &Device::RecNearEnd},
        {PIDXPtr_RecSidewaysMaxChars},
        {PIDXPtr_RecSidewaysMaxLines},
        {PIDXPtr_SlpEmpty},
        {PIDXPtr_SlpLetterQuality, WriteRule::kSameOnly},
        {PIDXPtr_SlpLineChars, WriteRule::kSameOnly},
        {PIDXPtr_SlpLineHeight, WriteRule::kSameOnly},
        {PIDXPtr_SlpLinesNearEndToEnd},
        {PIDXPtr_SlpLineSpacing, WriteRule::kSameOnly},
        {PIDXPtr_SlpLineWidth},
        {PIDXPtr_SlpMaxLines},
        {PIDXPtr_SlpNearEnd},
        {PIDXPtr_SlpSidewaysMaxChars},
        {PIDXPtr_SlpSidewaysMaxLines},
        {PIDXPtr_ErrorLevel, WriteRule::kIgnored, 1, &Device::ErrorLevel},
        {PIDXPtr_RotateSpecial, WriteRule::kSameOnly, 1},
        {PIDXPtr_CartridgeNotify, WriteRule::kSameOnly},
        {PIDXPtr_JrnCartridgeState, WriteRule::kIgnored, 0x10000000},
        {PIDXPtr_JrnCurrentCartridge, WriteRule::kSameOnly},
        {PIDXPtr_RecCartridgeState, WriteRule::kIgnored, 0x10000000},
        {PIDXPtr_RecCurrentCartridge, WriteRule::kSameOnly},
        {PIDXPtr_SlpPrintSide},
        {PIDXPtr_SlpCartridgeState, WriteRule::kIgnored, 0x10000000},
        {PIDXPtr_SlpCurrentCartridge, WriteRule::kSameOnly},
        {PIDXPtr_MapCharacterSet, WriteRule::kSameOnly},
        {PIDXPtr_PageModeDescriptor},
        {PIDXPtr_PageModeHorizontalPosition},
        {PIDXPtr_PageModePrintDirection, WriteRule::kIgnored, 1},
        {PIDXPtr_PageModeStation},
        {PIDXPtr_PageModeVerticalPosition},
        {PIDXPtr_CapConcurrentJrnRec},
        {PIDXPtr_CapConcurrentJrnSlp},
        {PIDXPtr_CapConcurrentRecSlp},
        {PIDXPtr_CapCoverSensor, WriteRule::kIgnored, 1},
        {PIDXPtr_CapJrn2Color},
        {PIDXPtr_CapJrnBold},
        {PIDXPtr_CapJrnDhigh},
        {PIDXPtr_CapJrnDwide},
        {PIDXPtr_CapJrnDwideDhigh},
        {PIDXPtr_CapJrnEmptySensor},
        {PIDXPtr_CapJrnItalic},
        {PIDXPtr_CapJrnNearEndSensor},
        {PIDXPtr_CapJrnPresent},
        {PIDXPtr_CapJrnUnderline},
        {PIDXPtr_CapRec2Color},
        {PIDXPtr_CapRecBarCode, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecBitmap, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecBold, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecDhigh, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecDwide, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecDwideDhigh, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecEmptySensor, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecItalic, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecLeft90, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecNearEndSensor, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecPapercut, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecPresent, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecRight90, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecRotate180, WriteRule::kIgnored, 1},
        {PIDXPtr_CapRecStamp},
        {PIDXPtr_CapRecUnderline, WriteRule::kIgnored, 1},
        {PIDXPtr_CapSlp2Color},
        {PIDXPtr_CapSlpBarCode},
        {PIDXPtr_CapSlpBitmap},
        {PIDXPtr_CapSlpBold},
        {PIDXPtr_CapSlpDhigh},
        {PIDXPtr_CapSlpDwide},
        {PIDXPtr_CapSlpDwideDhigh},
        {PIDXPtr_CapSlpEmptySensor},
        {PIDXPtr_CapSlpFullslip},
        {PIDXPtr_CapSlpItalic},
        {PIDXPtr_CapSlpLeft90},
        {PIDXPtr_CapSlpNearEndSensor},
        {PIDXPtr_CapSlpPresent},
        {PIDXPtr_CapSlpRight90},
        {PIDXPtr_CapSlpRotate180},
        {PIDXPtr_CapSlpUnderline},
        {PIDXPtr_CapCharacterSet, WriteRule::kIgnored, PTR_CCS_ASCII},
        {PIDXPtr_CapTransaction, WriteRule::kIgnored, 1},
        {PIDXPtr_CapJrnCartridgeSensor},
        {PIDXPtr_CapJrnColor},
        {PIDXPtr_CapRecCartridgeSensor},
        {PIDXPtr_CapRecColor},
        {PIDXPtr_CapRecMarkFeed, WriteRule::kIgnored, 1},
        {PIDXPtr_CapSlpBothSidesPrint},
        {PIDXPtr_CapSlpCartridgeSensor},
        {PIDXPtr_CapSlpColor},
        {PIDXPtr_CapMapCharacterSet, WriteRule::kIgnored, 1},
        {PIDXPtr_CapConcurrentPageMode},
        {PIDXPtr_CapRecPageMode},
        {PIDXPtr_CapSlpPageMode},
        {PIDXPtr_CapRecRuledLine},
        {PIDXPtr_CapSlpRuledLine},
    };
    return kNumbers;
}

const NumericProperty* PropertyTable::Find(int32_t index)
{
    const auto numbers = Numbers();
    const auto found = std::lower_bound(numbers.begin(), numbers.end(), index,
                                        [](const NumericProperty& row, int32_t wanted) { return row.index < wanted; });
    return found != numbers.end() && found->index == index ? &*found : nullptr;
}

}  // namespace marbex::device
