#include "companions/companion_service.h"

#include <algorithm>

#include "device/process_state.h"
#include "platform/version.h"
#include "support/service_log.h"
#include "support/version_text.h"

namespace marbex::companions {

using device::POSPrinterDevice;
using device::TheProcess;
using support::LogWrite;

namespace {

constexpr int32_t kOpenClaimedAndEnabled = 1 | 2 | 4;  // the conditions of the use check, as the log shows them

bool IsReady(const POSPrinterDevice& printer)
{
    return printer.Claimed != 0 && printer.DeviceEnabled != 0 && !printer.IsClosed();
}

}  // namespace

CompanionService::Printer CompanionService::Enter(const std::string& beginLine) const
{
    auto printer = TheProcess().CurrentDevice();
    if (printer == nullptr) return nullptr;
    LogWrite("[%s] %s", traits_.tag, beginLine.c_str());

    const auto& model = support::PrinterModels()[TheProcess().CurrentModelIndex];
    if (model.*traits_.modelFlag == 0) {
        LogWrite("[%s] %s", traits_.tag, traits_.hardwareMissing);
        return nullptr;
    }
    if (!IsReady(*printer)) {
        LogWrite("[%s] This printer is OPOS_S_CLOSED, Claimed FALSE or DeviceEnable FALSE", traits_.tag);
        return nullptr;
    }
    return printer;
}

void CompanionService::Leave(const char* endLine) const
{
    LogWrite("[%s] %s", traits_.tag, endLine);
}

int32_t CompanionService::RefuseUnsupported(const char* beginLine, const char* reasonLine) const
{
    if (Enter(beginLine) != nullptr) LogWrite("[%s] %s", traits_.tag, reasonLine);
    return opos::OPOS_E_ILLEGAL;
}

bool CompanionService::VerifyMayUse()
{
    LogWrite("[%s] VerifyMayUseAfter Begin (%d)", traits_.tag, kOpenClaimedAndEnabled);
    int32_t refusal = opos::OPOS_SUCCESS;
    if (IsClosed()) {
        refusal = opos::OPOS_E_CLOSED;
    } else if (claimed_ == 0) {
        refusal = opos::OPOS_E_NOTCLAIMED;
    } else if (deviceEnabled_ == 0) {
        refusal = opos::OPOS_E_DISABLED;
    }
    if (refusal != opos::OPOS_SUCCESS) {
        SetErrorCode(refusal, 0);
        return false;
    }
    LogWrite("[%s] VerifyMayUseAfter End", traits_.tag);
    return true;
}

void CompanionService::SetErrorCode(int32_t resultCode, int32_t resultCodeExtended)
{
    LogWrite("[%s] SetErrorCode Begin (%d, %d)", traits_.tag, resultCode, resultCodeExtended);
    resultCode_ = resultCode;
    resultCodeExtended_ = resultCodeExtended;
    if (resultCode == opos::OPOS_SUCCESS) {
        LogWrite("[%s] SetErrorCode ** OK **", traits_.tag);
    } else {
        LogWrite("[%s] SetErrorCode ** ERROR **", traits_.tag);
    }
    LogWrite("[%s] SetErrorCode End", traits_.tag);
}

int32_t CompanionService::OpenService(const std::string&, const std::string&, IDispatch*)
{
    if (Enter("OpenService Begin") == nullptr) return opos::OPOS_E_ILLEGAL;
    state_ = opos::OPOS_S_IDLE;
    SetDeviceEnabled(false);
    Leave("OpenService End");
    return opos::OPOS_SUCCESS;
}

int32_t CompanionService::CloseService()
{
    if (Enter("CloseService Begin") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (claimed_ != 0) ReleaseDevice();
    state_ = opos::OPOS_S_CLOSED;
    Leave("CloseService End");
    return opos::OPOS_SUCCESS;
}

int32_t CompanionService::ClaimDevice(int32_t)
{
    if (Enter("ClaimDevice Begin") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (claimed_ != 0) {
        LogWrite("[%s] ClaimDevice - Device Already Claimed", traits_.tag);
        return opos::OPOS_E_CLAIMED;
    }
    claimed_ = 1;
    SetDeviceEnabled(false);
    Leave("ClaimDevice End");
    return opos::OPOS_SUCCESS;
}

int32_t CompanionService::ReleaseDevice()
{
    if (Enter("ReleaseDevice Begin") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (claimed_ == 0) {
        LogWrite("[%s] ReleaseDevice - Not yet claimed", traits_.tag);
        return opos::OPOS_E_ILLEGAL;
    }
    claimed_ = 0;
    SetDeviceEnabled(false);
    Leave("ReleaseDevice End");
    return opos::OPOS_SUCCESS;
}

int32_t CompanionService::COFreezeEvents(bool)
{
    if (Enter("COFreezeEvents Begin") != nullptr) Leave("COFreezeEvents End");
    return opos::OPOS_E_ILLEGAL;
}

int32_t CompanionService::GetPropertyNumber(int32_t PropIndex)
{
    const auto printer = Enter("GetPropertyNumber Begin (" + std::to_string(PropIndex) + ")");
    if (printer == nullptr) return opos::OPOS_E_ILLEGAL;
    const int32_t value = NumberOf(*printer, PropIndex);
    Leave("GetPropertyNumber End");
    return value;
}

int32_t CompanionService::NumberOf(POSPrinterDevice& printer, int32_t propIndex) const
{
    switch (propIndex) {
        case opos::PIDX_Claimed:
            return claimed_;
        case opos::PIDX_DeviceEnabled:
            return deviceEnabled_;
        case opos::PIDX_ServiceObjectVersion:
            return support::ServiceObjectVersionOf(platform::ModuleFileVersion());
        case opos::PIDX_State:
            return state_;
        default:
            break;
    }
    const auto& zero = traits_.zeroProperties;
    if (std::find(zero.begin(), zero.end(), propIndex) != zero.end()) return 0;
    return printer.GetPropertyNumber(propIndex);
}

std::optional<std::string> CompanionService::GetPropertyString(int32_t PropIndex)
{
    const auto printer = Enter("GetPropertyString Begin (" + std::to_string(PropIndex) + ")");
    if (printer == nullptr) return std::string();
    auto value = TextOf(*printer, PropIndex);
    Leave("GetPropertyString End");
    return value;
}

std::optional<std::string> CompanionService::TextOf(POSPrinterDevice& printer, int32_t propIndex) const
{
    switch (propIndex) {
        case opos::PIDX_DeviceDescription:
            return traits_.deviceDescription;
        case opos::PIDX_DeviceName:
            return traits_.deviceName;
        case opos::PIDX_ServiceObjectDescription:
            return support::ServiceObjectDescriptionOf(std::string(traits_.deviceDescription) + " SO V",
                                                       platform::ModuleFileVersion());
        default:
            return printer.GetPropertyString(propIndex);
    }
}

int32_t CompanionService::CheckHealth(int32_t)
{
    return RefuseUnsupported("CheckHealth Begin", "CheckHealth Not Supported");
}

int32_t CompanionService::CompareFirmwareVersion(const std::string&, int32_t)
{
    return RefuseUnsupported("CompareFirmwareVersion Begin", "CompareFirmwareVersion Not Supported");
}

int32_t CompanionService::UpdateFirmware(const std::string&)
{
    return RefuseUnsupported("UpdateFirmware Begin", "UpdateFirmware Not Supported");
}

int32_t CompanionService::ResetStatistics(const std::string&)
{
    return RefuseUnsupported("ResetStatistics Begin", "ResetStatistics Not Supported");
}

int32_t CompanionService::RetrieveStatistics(std::string*)
{
    return RefuseUnsupported("RetrieveStatistics Begin", "RetrieveStatistics Not Supported");
}

int32_t CompanionService::UpdateStatistics(const std::string&)
{
    return RefuseUnsupported("UpdateStatistics Begin", "UpdateStatistics Not Supported");
}

}  // namespace marbex::companions
