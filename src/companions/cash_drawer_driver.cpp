#include "companions/cash_drawer_driver.h"

#include "opos/cash_drawer.h"
#include "support/service_log.h"

namespace marbex::companions {

using support::LogWrite;

namespace {

constexpr const char* kTag = "MarbexOposCashDrawerDriver";

constexpr int32_t CMD_CASHDRAWER_TIMEON = 257;
constexpr int32_t CMD_CASHDRAWER_TIMEOFF = 258;

constexpr int32_t kShortestPulse = 50;  // ms
constexpr int32_t kLongestPulse = 510;  // ms: the printer counts units of 2 ms in one byte

constexpr int32_t kZeroProperties[] = {opos::PIDXCash_DrawerOpened, opos::PIDXCash_CapStatus,
                                       opos::PIDXCash_CapStatusMultiDrawerDetect};

constexpr CompanionTraits kTraits = {
    .tag = kTag,
    .deviceName = "Service.MarbexOposCashDrawerDriver",
    .deviceDescription = "Marbex OPOS CashDrawer",
    .hardwareMissing = "This printer doesn't support Cash Drawer",
    .modelFlag = &support::PrinterModelStruct::HasCashDrawer,
    .zeroProperties = kZeroProperties,
};

}  // namespace

MarbexOposCashDrawerDriver::MarbexOposCashDrawerDriver() : CompanionService(kTraits) {}

int32_t MarbexOposCashDrawerDriver::OpenDrawer()
{
    const auto printer = Enter("OpenDrawer Begin");
    if (printer == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!VerifyMayUse()) return ResultCode();
    const int32_t result = printer->External_CashDrawer_OpenDrawer(pulseOnTime_, pulseOffTime_);
    Leave("OpenDrawer End");
    return result;
}

int32_t MarbexOposCashDrawerDriver::WaitForDrawerClose(int32_t, int32_t, int32_t, int32_t)
{
    if (Enter("WaitForDrawerClose Begin") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!VerifyMayUse()) return ResultCode();
    LogWrite("[%s] WaitForDrawerClose Not Supported", kTag);
    return opos::OPOS_E_ILLEGAL;
}

int32_t MarbexOposCashDrawerDriver::DirectIO(int32_t Command, int32_t* pData, std::u16string*)
{
    if (Enter("DirectIO Begin (" + std::to_string(Command) + ")") == nullptr) return opos::OPOS_E_ILLEGAL;
    if (!IsClosed() && Command != 0) {
        switch (Command) {
            case CMD_CASHDRAWER_TIMEON:
                StorePulseTime("CMD_CASHDRAWER_TIMEON", pData, pulseOnTime_);
                break;
            case CMD_CASHDRAWER_TIMEOFF:
                StorePulseTime("CMD_CASHDRAWER_TIMEOFF", pData, pulseOffTime_);
                break;
            default:
                SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
                break;
        }
    }
    Leave("DirectIO End");
    return ResultCode();
}

void MarbexOposCashDrawerDriver::StorePulseTime(const char* command, const int32_t* data, int32_t& time)
{
    const int32_t value = data != nullptr ? *data : 0;
    LogWrite("[%s] DirectIO %s value %d", kTag, command, value);
    if (value >= kShortestPulse && value <= kLongestPulse) {
        time = value;
        SetErrorCode(opos::OPOS_SUCCESS, 0);
        LogWrite("[%s] DirectIO %s value Sets", kTag, command);
    } else {
        SetErrorCode(opos::OPOS_E_ILLEGAL, 0);
        LogWrite("[%s] DirectIO %s value NOT Sets", kTag, command);
    }
}

void MarbexOposCashDrawerDriver::SetPropertyNumber(int32_t PropIndex, int32_t Number)
{
    if (Enter("SetPropertyNumber Begin") == nullptr) return;
    if (PropIndex == opos::PIDX_DeviceEnabled) SetDeviceEnabled(Number != 0);
    Leave("SetPropertyNumber End");
}

void MarbexOposCashDrawerDriver::SetPropertyString(int32_t, const std::string&)
{
    if (Enter("SetPropertyString Begin") != nullptr) Leave("SetPropertyString End");
}

int32_t MarbexOposCashDrawerDriver::ClearInput()
{
    if (Enter("ClearInput Begin") != nullptr) Leave("ClearInput End");
    return opos::OPOS_E_ILLEGAL;
}

int32_t MarbexOposCashDrawerDriver::ClearOutput()
{
    if (Enter("ClearOutput Begin") != nullptr) Leave("ClearOutput End");
    return opos::OPOS_E_ILLEGAL;
}

}  // namespace marbex::companions
