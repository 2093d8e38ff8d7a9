// Reading and writing properties by their OPOS index.

#include "device/line_display_properties.h"
#include "device/map_mode.h"
#include "device/printer_device.h"
#include "device/property_table.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/version.h"
#include "support/device_registry.h"
#include "support/service_log.h"
#include "support/version_text.h"

namespace marbex::device {

using support::LogWrite;

void PrinterDevice::InitPropertyOnOpen()
{
    LogWrite("[%s] InitPropertyOnOpen Begin", tag_);
    for (const NumericProperty& property : PropertyTable::Numbers()) {
        if (property.member != nullptr && !property.keptAtOpen) this->*property.member = property.atOpen;
    }
    RecLinesToPaperCut = model_.recLinesToPaperCut;
    COFreezeEvents_ = false;
    RotateMode = opos::PTR_RP_NORMAL;
    converter_.ResetScales();
    if (model_.display != nullptr) DisplayCharacterSet = model_.display->defaultCodePage;
    paperJam_ = false;
    CheckHealthText.Set({});
    ErrorString.Set({});
    LogWrite("[%s] InitPropertyOnOpen End", tag_);
}

bool PrinterDevice::VerifyPropertyAccess(int32_t PIDX)
{
    LogWrite("[%s] VerifyPropertyAccess Begin (%d)", tag_, PIDX);
    bool allowed = false;
    switch (AccessOf(PIDX)) {
        case PropertyAccess::kAlways:
            allowed = true;
            break;
        case PropertyAccess::kOpen:
            allowed = Refusal(1) == 0;
            break;
        case PropertyAccess::kOpenClaimed:
            allowed = Refusal(3) == 0;
            break;
        case PropertyAccess::kOpenClaimedEnabled:
            allowed = Refusal(7) == 0;
            break;
        case PropertyAccess::kRefused:
            if (model_.display != nullptr && IsDisplayProperty(PIDX)) allowed = Refusal(1) == 0;
            break;
    }
    LogWrite("[%s] VerifyPropertyAccess End", tag_);
    return allowed;
}

int32_t PrinterDevice::GetPropertyNumber(int32_t PropIndex)
{
    LogWrite("[%s] GetPropertyNumber Begin (%d)", tag_, PropIndex);
    const bool readsTheResult = PropIndex == opos::PIDX_ResultCode || PropIndex == opos::PIDX_ResultCodeExtended;
    if (!readsTheResult) SetErrorCode(0, 0);
    if (!VerifyPropertyAccess(PropIndex)) return 0;
    if (PropIndex == opos::PIDX_State) return CurrentState();
    if (PropIndex == opos::PIDX_ServiceObjectVersion) {
        ServiceObjectVersion = support::ServiceObjectVersionOf(platform::ModuleFileVersion());
    }
    if (IsDisplayProperty(PropIndex)) return DisplayPropertyNumber(PropIndex);
    if (const NumericProperty* property = PropertyTable::Find(PropIndex)) {
        return property->member != nullptr ? (this->*property->member).load() : property->atOpen;
    }
    LogWrite("[%s] GetPropertyNumber End", tag_);
    return 0;
}

std::string PrinterDevice::CharacterSetList() const
{
    std::string list;
    for (const support::CharSetStruct& set : CharSets) {
        list += set.CodePage;
        list += ',';
    }
    return list + "999";
}

std::optional<std::string> PrinterDevice::GetPropertyString(int32_t PropIndex)
{
    LogWrite("[%s] GetPropertyString Begin (%d)", tag_, PropIndex);
    SetErrorCode(0, 0);
    if (!VerifyPropertyAccess(PropIndex)) return std::nullopt;
    std::string value;
    switch (PropIndex) {
        case opos::PIDX_CheckHealthText:
            value = CheckHealthText.Get();
            break;
        case opos::PIDX_DeviceDescription:
            value = "Marbex OPOS POSPrinter (" + std::string(model_.description) + ")";
            break;
        case opos::PIDX_DeviceName:
            value = support::kPrinterProgId;
            break;
        case opos::PIDX_ServiceObjectDescription:
            value = support::ServiceObjectDescriptionOf("Marbex OPOS POSPrinter SO V", platform::ModuleFileVersion());
            break;
        case opos::PIDXPtr_CharacterSetList:
            value = CharacterSetList();
            break;
        case opos::PIDXPtr_RecLineCharsList:
            value = "42";
            break;
        case opos::PIDXPtr_ErrorString:
            value = ErrorString.Get();
            break;
        case opos::PIDXPtr_FontTypefaceList:
            value = "0";
            break;
        default:
            break;  // the lists of stations and modes that the printers lack are empty
    }
    LogWrite("[%s] GetPropertyString End", tag_);
    return value;
}

void PrinterDevice::SetPropertyString(int32_t PropIndex, const std::string& String)
{
    LogWrite("[%s] SetPropertyString Begin (%d, %s)", tag_, PropIndex, String.c_str());
    SetErrorCode(0, 0);
    VerifyPropertyAccess(PropIndex);
    LogWrite("[%s] SetPropertyString End", tag_);
}

void PrinterDevice::SetPropertyNumber(int32_t PropIndex, int32_t Number)
{
    LogWrite("[%s] SetPropertyNumber Begin (%d, %d)", tag_, PropIndex, Number);
    SetErrorCode(0, 0);
    if (!VerifyPropertyAccess(PropIndex)) {
        // Enabling before claiming keeps its own code; every other refused write is illegal.
        const bool notClaimed = PropIndex == opos::PIDX_DeviceEnabled && !IsClosed();
        if (!notClaimed) SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
        return;
    }
    if (IsDisplayProperty(PropIndex)) {
        SetDisplayPropertyNumber(PropIndex, Number);
    } else if (const NumericProperty* property = PropertyTable::Find(PropIndex)) {
        switch (property->write) {
            case WriteRule::kIgnored:
                break;
            case WriteRule::kSameOnly:
                if (Number != property->atOpen) SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
                break;
            case WriteRule::kDeviceEnabled:
                SetDeviceEnabledState(Number != 0);
                break;
            case WriteRule::kFreezeEvents:
                DoFreezeEvents(Number != 0);
                break;
            case WriteRule::kAsyncMode:
                SetAsyncMode(Number != 0);
                break;
            case WriteRule::kFlagWhenIdle:
                SetFlagWhenIdle(Number != 0);
                break;
            case WriteRule::kMapMode:
                DoSetMapMode(Number);
                break;
        }
    }
    LogWrite("[%s] SetPropertyNumber End", tag_);
}

int32_t PrinterDevice::DoSetMapMode(int32_t mapMode)
{
    LogWrite("[%s] DoSetMapMode Begin (%d)", tag_, mapMode);
    if (IsMapMode(mapMode)) {
        const ReceiptMetrics metrics = MetricsOf(mapMode, model_.recLineWidth);
        RecLineHeight = metrics.RecLineHeight;
        RecLineSpacing = metrics.RecLineSpacing;
        RecLineWidth = metrics.RecLineWidth;
        MapMode = mapMode;
    } else {
        SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
    }
    LogWrite("[%s] DoSetMapMode End", tag_);
    return ResultCode.load();
}

int32_t PrinterDevice::ConvertValueWithMapMode(int32_t Value)
{
    LogWrite("[%s] ConvertValueWithMapMode Begin (%d)", tag_, Value);
    const int32_t mapMode = MapMode.load();
    switch (mapMode) {
        case opos::PTR_MM_DOTS:
            LogWrite("[%s] ConvertValueWithMapMode PTR_MM_DOTS", tag_);
            break;
        case opos::PTR_MM_TWIPS:
            LogWrite("[%s] ConvertValueWithMapMode PTR_MM_TWIPS", tag_);
            break;
        case opos::PTR_MM_ENGLISH:
            LogWrite("[%s] ConvertValueWithMapMode PTR_MM_ENGLISH", tag_);
            break;
        case opos::PTR_MM_METRIC:
            LogWrite("[%s] ConvertValueWithMapMode PTR_MM_METRIC", tag_);
            break;
        default:
            break;
    }
    const int32_t dots = DotsOf(Value, mapMode);
    LogWrite("[%s] ConvertValueWithMapMode New Value %d", tag_, dots);
    LogWrite("[%s] ConvertValueWithMapMode End", tag_);
    return dots;
}

}  // namespace marbex::device
