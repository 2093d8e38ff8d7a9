#include "common/service_log_capture.h"
#include "device/map_mode.h"
#include "device/model_description.h"
#include "device/posix/device_bench.h"

namespace marbex::test {
namespace {

using namespace opos;

class PropertiesTest : public DeviceBench {};

TEST_F(PropertiesTest, EachIndexIsReadableInItsStatesOnly)
{
    WriteProfile();
    device = device::CreateModelDevice("TALIS");
    ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
    const auto resultOf = [this](int32_t index) {
        Number(index);
        return Number(PIDX_ResultCode);
    };
    for (const int32_t index :
         {1, 4, 5, 8, 11, 13, 14, 501, 505, 8001, 8004, 8005, 8013, 8035, 8037, 8045, 8050, 8501, 8563}) {
        EXPECT_EQ(resultOf(index), 0) << index;
    }
    const int32_t needEnabled[] = {8002, 8003, 8006, 8012, 8014, 8034, 8038, 8044};
    for (const int32_t index : needEnabled)
        EXPECT_EQ(resultOf(index), OPOS_E_NOTCLAIMED) << index;
    EXPECT_EQ(device->ClaimDevice(0), 0);
    for (const int32_t index : needEnabled)
        EXPECT_EQ(resultOf(index), OPOS_E_DISABLED) << index;
    for (const int32_t index : {2, 10, 12, 506, 5001, 8000, 8051, 8500, 8564, 1000005}) {
        EXPECT_EQ(Number(index), 0);
        EXPECT_EQ(Number(PIDX_ResultCode), 0) << index;
        device->SetPropertyNumber(index, 1);
        EXPECT_EQ(Number(PIDX_ResultCode), OPOS_E_ILLEGAL) << index;
    }
    EXPECT_EQ(device->GetPropertyString(1008013), std::nullopt);
}

TEST_F(PropertiesTest, ValuesAtOpenAreThoseOfTheReferenceModel)
{
    Ready();
    EXPECT_EQ(Number(PIDX_ServiceObjectVersion), 1014100);
    EXPECT_EQ(Number(PIDX_PowerState), OPOS_PS_UNKNOWN);
    EXPECT_EQ(Number(PIDXPtr_CharacterSet), 999);
    EXPECT_EQ(Number(PIDXPtr_RecLineChars), 42);
    EXPECT_EQ(Number(PIDXPtr_RecLineWidth), 420);
    EXPECT_EQ(Number(PIDXPtr_RecLinesToPaperCut), 4);
    EXPECT_EQ(Number(PIDXPtr_JrnCartridgeState), 0x10000000);
    int32_t capabilities = 0;
    for (int32_t index = PIDXPtr_CapConcurrentJrnRec; index <= PIDXPtr_CapSlpRuledLine; ++index) {
        capabilities += Number(index) == 1 ? 1 : 0;
    }
    EXPECT_EQ(capabilities, 19);
    EXPECT_EQ(Number(PIDXPtr_CapCharacterSet), PTR_CCS_ASCII);
    EXPECT_EQ(Number(PIDXPtr_CapRecStamp), 0);
    EXPECT_EQ(device->GetPropertyString(PIDX_DeviceDescription), "Marbex OPOS POSPrinter (TALIS)");
    EXPECT_EQ(device->GetPropertyString(PIDX_DeviceName), "Service.MarbexOposPrnDriver");
    EXPECT_EQ(device->GetPropertyString(PIDX_ServiceObjectDescription), "Marbex OPOS POSPrinter SO V1.0.0");
    EXPECT_EQ(device->GetPropertyString(PIDXPtr_RecLineCharsList), "42");
    EXPECT_EQ(device->GetPropertyString(PIDXPtr_FontTypefaceList), "0");
    EXPECT_EQ(device->GetPropertyString(PIDXPtr_JrnLineCharsList), "");
}

TEST_F(PropertiesTest, WritesAreAcceptedIgnoredOrRefusedAsEachPropertySays)
{
    Ready();
    const auto write = [this](int32_t index, int32_t value) {
        device->SetPropertyNumber(index, value);
        return Number(PIDX_ResultCode);
    };
    EXPECT_EQ(write(PIDXPtr_RecLineChars, 42), 0);
    EXPECT_EQ(write(PIDXPtr_RecLineChars, 48), OPOS_E_ILLEGAL);
    EXPECT_EQ(write(PIDX_PowerNotify, 1), OPOS_E_ILLEGAL);
    EXPECT_EQ(write(PIDXPtr_CharacterSet, 437), 0);
    EXPECT_EQ(Number(PIDXPtr_CharacterSet), 999);
    EXPECT_EQ(write(PIDXPtr_CapRecStamp, 1), 0);
    EXPECT_EQ(write(PIDXPtr_MapMode, 3), 0);
    EXPECT_EQ(Number(PIDXPtr_RecLineWidth), 2992);
    EXPECT_EQ(write(PIDXPtr_MapMode, 5), OPOS_E_ILLEGAL);
    EXPECT_EQ(Number(PIDXPtr_MapMode), 3);
    device->SetPropertyString(PIDX_DeviceName, "mine");
    EXPECT_EQ(device->GetPropertyString(PIDX_DeviceName), "Service.MarbexOposPrnDriver");
}

TEST_F(PropertiesTest, UnsupportedMethodsSayTheirNameAndRecordIllegal)
{
    Ready();
    const ServiceLogCapture log;
    EXPECT_EQ(device->GetOpenResult(), OPOS_OR_FAILEDOPEN);
    EXPECT_EQ(device->SetLogo(1, "x"), OPOS_E_ILLEGAL);
    EXPECT_EQ(Number(PIDX_ResultCode), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->UpdateFirmware("x"), OPOS_E_ILLEGAL);
    const auto lines = log.Taken().size();
    EXPECT_EQ(device->PrintMemoryBitmap(2, "", 0, 0, 0), OPOS_E_ILLEGAL);
    EXPECT_EQ(log.Taken().size(), lines);
    EXPECT_TRUE(log.Has("[TalisPOSPrinter] SetLogo NOT SUPPORTED!!!"));
    EXPECT_TRUE(log.Has("[TalisPOSPrinter] UpdateFirmware Unsupported"));
    EXPECT_TRUE(log.Has("[TalisPOSPrinter] GetOpenResult NOT SUPPORTED!!!"));
}

TEST(MapModeTest, SizesTruncateAsSinglePrecisionConstantsSay)
{
    using device::DotsOf;
    EXPECT_EQ(DotsOf(1440, PTR_MM_TWIPS), 204);
    EXPECT_EQ(DotsOf(1000, PTR_MM_ENGLISH), 204);
    EXPECT_EQ(DotsOf(1000, PTR_MM_METRIC), 80);
    EXPECT_EQ(DotsOf(7, PTR_MM_METRIC), 0);
    EXPECT_EQ(DotsOf(-1000, PTR_MM_METRIC), -80);
    EXPECT_EQ(DotsOf(2147483647, PTR_MM_METRIC), 171798691);
    EXPECT_EQ(DotsOf(5, 9), 0);
    // 0.001 as a single is a little too large, 1/1440 a little too large as well: whole numbers are met, never missed.
    for (int32_t inches = 1; inches < 1000; ++inches) {
        EXPECT_EQ(DotsOf(inches * 1000, PTR_MM_ENGLISH), inches * 204);
        EXPECT_EQ(DotsOf(inches * 1440, PTR_MM_TWIPS), inches * 204);
    }
}

}  // namespace
}  // namespace marbex::test
