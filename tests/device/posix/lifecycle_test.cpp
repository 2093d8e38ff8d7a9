#include <fcntl.h>
#include <sys/file.h>

#include <thread>

#include "common/service_log_capture.h"
#include "common/wait_until.h"
#include "device/posix/device_bench.h"
#include "device/posix/simple_talis.h"
#include "platform/posix/unique_fd.h"

namespace marbex::test {
namespace {

using namespace opos;

class LifecycleTest : public DeviceBench {};

TEST_F(LifecycleTest, ClaimEnableReleaseAndCloseFollowTheStates)
{
    WriteProfile();
    device = device::CreateModelDevice("TALIS");
    EXPECT_EQ(Number(PIDX_State), OPOS_S_CLOSED);
    EXPECT_EQ(Number(PIDX_Claimed), 0);
    EXPECT_EQ(Number(PIDX_ResultCode), 0) << "the access check runs first";
    EXPECT_EQ(device->ClaimDevice(0), OPOS_E_TIMEOUT);
    EXPECT_EQ(device->ReleaseDevice(), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->CheckHealth(OPOS_CH_INTERNAL), OPOS_E_NOTCLAIMED);
    EXPECT_EQ(device->ClearOutput(), OPOS_E_NOTCLAIMED);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_CLOSED);
    EXPECT_EQ(device->External_CashDrawer_OpenDrawer(100, 100), OPOS_E_CLOSED);
    EXPECT_EQ(device->ValidateData(PTR_S_RECEIPT, "x"), 0);
    EXPECT_EQ(device->CloseService(), 0);

    ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_NOTCLAIMED);
    device->SetPropertyNumber(PIDX_DeviceEnabled, 1);
    EXPECT_EQ(Number(PIDX_ResultCode), OPOS_E_NOTCLAIMED);
    EXPECT_EQ(device->ClaimDevice(-7), 0);
    EXPECT_EQ(device->ClaimDevice(OPOS_FOREVER), OPOS_E_CLAIMED);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_DISABLED);
    device->SetPropertyNumber(PIDX_DeviceEnabled, 1);
    EXPECT_EQ(device->PrintNormal(PTR_S_JOURNAL, "x"), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), 0);
    EXPECT_EQ(device->ReleaseDevice(), 0);
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
    EXPECT_EQ(device->ClaimDevice(0), 0);
    EXPECT_EQ(device->Close(), 0);
    EXPECT_EQ(Number(PIDX_State), OPOS_S_CLOSED);
    EXPECT_EQ(device->Claimed.load(), 0);

    ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0) << "the same object opens again";
}

TEST_F(LifecycleTest, AControlObjectThatIsGoneIsNotCalled)
{
    Ready();
    Async(true);
    ASSERT_EQ(device->PrintNormal(PTR_S_RECEIPT, "its event is under way\n"), 0);
    ASSERT_TRUE(
        server.WaitFor([](const virtual_printer::VirtualPrinter& printer) { return !printer.Lines().empty(); }));
    WaitUntil([this] { return device->State.load() == OPOS_S_IDLE; });
    device->ControlObjectGone();
    EXPECT_EQ(device->CloseService(), 0);
    EXPECT_EQ(control.events, std::vector<ControlEvent>{});
}

TEST_F(LifecycleTest, AFailedOpenSaysWhyAndLeavesTheDeviceClosed)
{
    WriteProfile();
    device = device::CreateModelDevice("TALIS");
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", nullptr), OPOS_E_NOSERVICE);
    control.missingMethod = u"SOError";
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), OPOS_E_NOSERVICE);
    control.missingMethod.clear();

    server.SetMute(true);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), OPOS_E_NOHARDWARE);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "one time-out of a silent printer";
    server.SetMute(false);

    server.Refuse(true);
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), OPOS_E_FAILURE);
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED);
    server.Refuse(false);
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
}

// Seven bytes of a status answer used to make seven openings fail.
TEST_F(LifecycleTest, WhatAKilledTillDidNotReadIsNotAnIdentity)
{
    const SerialTalis printer;
    printer.terminal.Send("\x10\x0F\x01\x02\x03\x04\x12");
    WriteProfile("\"PortType\"=dword:0\n[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" +
                 printer.terminal.Path() + "\"=\"COM1\"\n");
    device = device::CreateModelDevice("TALIS");
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
}

TEST_F(LifecycleTest, APrinterOfAnotherModelIsRefused)
{
    const virtual_printer::TcpPrinterServer ambra("AMBRA");
    registry.Write(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n"
        "@=\"Service.MarbexOposPrnDriver\"\n\"PortType\"=dword:1\n\"IPAddress\"=\"127.0.0.1\"\n\"Port\"=dword:" +
        [&] {
            std::ostringstream hex;
            hex << std::hex << ambra.Port();
            return hex.str();
        }() +
        "\n");
    device = device::CreateModelDevice("TALIS");
    const ServiceLogCapture log;
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), OPOS_E_NOHARDWARE);
}

TEST_F(LifecycleTest, EnablingAndFreezingHoldEventsAsTheApplicationAsks)
{
    Ready();
    device->SetPropertyNumber(PIDX_FreezeEvents, 1);
    EXPECT_EQ(device->COFreezeEvents(true), 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), 0);
    device->COFreezeEvents(false);
    platform::RunWaitingMessages();
    EXPECT_TRUE(control.events.empty());
    device->SetPropertyNumber(PIDX_FreezeEvents, 0);
    ASSERT_TRUE(Completed(3));
    EXPECT_EQ(control.events, (std::vector<ControlEvent>{Complete(1), Complete(2), Complete(3)}));
}

TEST_F(LifecycleTest, TheOpeningLeavesThisTraceInTheLog)
{
    WriteProfile("\"LogEnabled\"=dword:1\n\"LogLevel\"=dword:1\n");
    device = device::CreateModelDevice("TALIS");
    const ServiceLogCapture log;
    ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
    std::vector<std::string> own;
    for (const std::string& line : log.Taken()) {
        if (line.starts_with("[TalisPOSPrinter]") && line.find("Callback") == std::string::npos &&
            line.find("CB_") == std::string::npos) {
            own.push_back(line);
        }
    }
    const std::vector<std::string> expected = {"[TalisPOSPrinter] SetErrorCode Begin (0, 0)",
                                               "[TalisPOSPrinter] SetErrorCode ** OK **",
                                               "[TalisPOSPrinter] SetErrorCode End",
                                               "[TalisPOSPrinter] GetRegistryData Begin (Till)",
                                               "[TalisPOSPrinter] GetRegistryData End",
                                               "[TalisPOSPrinter] OpenService Begin",
                                               "[TalisPOSPrinter] InitPropertyOnOpen Begin",
                                               "[TalisPOSPrinter] InitPropertyOnOpen End",
                                               "[TalisPOSPrinter] SetAsyncMode Begin (0)",
                                               "[TalisPOSPrinter] SetAsyncMode End",
                                               "[TalisPOSPrinter] DoSetMapMode Begin (1)",
                                               "[TalisPOSPrinter] DoSetMapMode End",
                                               "[TalisPOSPrinter] OpenService End"};
    EXPECT_EQ(own, expected);
}

TEST_F(LifecycleTest, EventsGoToTheFileOfANetOpening)
{
    WriteProfile();
    const std::string file = registry.Folder() + "/events.txt";
    std::ofstream(file) << "old";
    device = device::CreateModelDevice("TALIS");
    ASSERT_EQ(device->OpenService_NET("POSPrinter", "Till", file), 0);
    EXPECT_EQ(registry.ContentsBelow("events.txt"), "");
    ASSERT_EQ(device->ClaimDevice(0), 0);
    device->SetPropertyNumber(PIDX_DeviceEnabled, 1);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), 0);
    int32_t count = 3;
    std::u16string bytes = u"ABC";
    EXPECT_EQ(device->DirectIO(0, &count, &bytes), 0);
    const std::string expected = "D\t1001|C\t1|C\t2|A\t0\t3\tABC|";
    EXPECT_TRUE(RunUntil([&] { return registry.ContentsBelow("events.txt").size() >= expected.size(); }));
    EXPECT_EQ(registry.ContentsBelow("events.txt"), expected);

    // A reader that keeps the file does not keep the till from closing.
    const platform::UniqueFd reader(open(file.c_str(), O_RDONLY));
    ASSERT_EQ(flock(reader.Get(), LOCK_EX | LOCK_NB), 0);
    Async(true);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "y"), 0);
    const auto begun = std::chrono::steady_clock::now();
    device->CloseService();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(10));

    EXPECT_EQ(device->OpenService_NET("POSPrinter", "Till", registry.Folder() + "/none/events.txt"), OPOS_E_NOSERVICE);
}

}  // namespace
}  // namespace marbex::test
