// A till is on for years. Opening and closing, with success or without, leaves nothing behind.

#include <dirent.h>
#include <malloc.h>

#include <cstdlib>
#include <sstream>

#include "common/jumping_clock.h"
#include "device/model_description.h"
#include "device/posix/device_bench.h"
#include "device/posix/simple_talis.h"
#include "device/printer_device.h"

namespace marbex::test {
namespace {

using namespace opos;

std::size_t CountIn(const char* folder)
{
    DIR* const open = opendir(folder);
    std::size_t count = 0;
    while (readdir(open) != nullptr)
        ++count;
    closedir(open);
    return count;
}

struct Usage {
    std::size_t heap = mallinfo2().uordblks;
    std::size_t descriptors = CountIn("/proc/self/fd");
    std::size_t threads = CountIn("/proc/self/task");
};

class SoakTest : public testing::Test {
protected:
    SoakTest()
    {
        registry.Write(Device("Tcp", 1, printer.Port()) + Device("Refused", 1, deaf.Number()) + Device("Serial", 0, 1) +
                       Device("NoSuchPort", 0, 9) + "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" +
                       cable.terminal.Path() + "\"=\"COM1\"\n");
    }

    static std::string Device(const std::string& name, int portType, unsigned port)
    {
        std::ostringstream lines;
        lines << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\" << name << "]\n"
              << "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModel\"=\"TALIS\"\n\"PortType\"=dword:" << portType
              << "\n\"IPAddress\"=\"127.0.0.1\"\n"
              << std::hex << "\"" << (portType == 1 ? "Port" : "Com") << "\"=dword:" << port << "\n";
        return lines.str();
    }

    std::shared_ptr<device::POSPrinterDevice> Made(const char* model)
    {
        return std::make_shared<device::PrinterDevice>(*device::FindModel(model), platform::SystemRegistry(), clock);
    }

    void Use(device::POSPrinterDevice& device)
    {
        EXPECT_EQ(device.ClaimDevice(0), 0);
        device.SetPropertyNumber(PIDX_DeviceEnabled, 1);
        device.SetPropertyNumber(PIDXPtr_AsyncMode, 1);
        EXPECT_EQ(device.PrintNormal(PTR_S_RECEIPT, "Total 1.00\n"), 0);
        device.CloseService();
        platform::RunWaitingMessages();
        control.events = {};
    }

    void OpenAndClose(const std::string& name, const char* model, int32_t result)
    {
        const auto device = Made(model);
        ASSERT_EQ(device->OpenService("POSPrinter", name, &control), result) << name;
        if (result == 0) Use(*device);
    }

    void Cycle()
    {
        OpenAndClose("Tcp", "TALIS", 0);
        OpenAndClose("Tcp", "AMBRA", OPOS_E_NOHARDWARE);
        OpenAndClose("Refused", "TALIS", OPOS_E_FAILURE);
        OpenAndClose("Serial", "TALIS", 0);
        OpenAndClose("NoSuchPort", "TALIS", OPOS_E_FAILURE);
        // With a window, and messages, of another thread.
        std::jthread([this] { OpenAndClose("Serial", "TALIS", 0); }).join();
        const auto net = Made("TALIS");
        ASSERT_EQ(net->OpenService_NET("POSPrinter", "Tcp", registry.Folder() + "/events.txt"), 0);
        Use(*net);
    }

    // Once the printer has noticed that nobody is connected any more.
    Usage SettledUsage()
    {
        EXPECT_TRUE(RunUntil([this] { return printer.IsIdle(); }));
        return {};
    }

    void Cycles(int count)
    {
        for (int i = 0; i < count && !HasFailure(); ++i)
            Cycle();
    }

    tests::TempRegistry registry;
    TcpTalis printer;
    const tests::DeafPort deaf;
    const SerialTalis cable;
    JumpingClock clock;
    ControlObjectDouble control;
};

TEST_F(SoakTest, OpeningAndClosingLeavesNothingBehind)
{
    const char* const wanted = std::getenv("MARBEX_TEST_CYCLES");
    const int cycles = wanted != nullptr ? std::atoi(wanted) : 100;
    Cycles(20);
    const Usage before = SettledUsage();
    Cycles(cycles);
    const Usage after = SettledUsage();
    RecordProperty("heap", std::to_string(static_cast<long>(after.heap) - static_cast<long>(before.heap)));
    EXPECT_LE(after.heap, before.heap + 16384) << "threads and their memory come and go in another order each time";
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
}

}  // namespace
}  // namespace marbex::test
