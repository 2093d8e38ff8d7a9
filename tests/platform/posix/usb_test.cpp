#include "platform/usb.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/posix/local_printer.h"
#include "platform/posix/pseudo_terminal.h"
#include "platform/posix/usb_system.h"
#include "platform/stopped_waits.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::LocalPrinter;
using tests::LoopbackPeer;
using tests::PseudoTerminal;
using tests::TempRegistry;
using Direction = UsbSystem::Direction;

constexpr const char* kPrinters = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";
constexpr const char* kEnumeration = "SYSTEM\\CurrentControlSet\\Enum\\USB\\";

std::span<const std::byte> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

class UsbPipes : public testing::Test {
protected:
    void Open(const std::string& node)
    {
        registry.Write(tests::UsbPrinterLines(node));
        const auto paths = usb.PresentInterfaces();
        ASSERT_EQ(paths.size(), 1U);
        ASSERT_TRUE(usb.IsUsable(paths[0]));
        writePipe = usb.OpenPipe(paths[0] + "\\PIPE01\\", Direction::kWrite, error);
        readPipe = usb.OpenPipe(paths[0] + "\\PIPE00\\", Direction::kRead, error);
        ASSERT_TRUE(writePipe != nullptr && readPipe != nullptr) << error;
    }

    UsbTransfer Read(std::string& text, uint32_t timeout = 10000)
    {
        text.assign(64, '\0');
        const UsbTransfer got = readPipe->Read(std::as_writable_bytes(std::span(text)), timeout);
        text.resize(got.count);
        return got;
    }

    TempRegistry registry;
    UsbSystem& usb = SystemUsb();
    std::unique_ptr<UsbPipe> writePipe, readPipe;
    uint32_t error = 0;
};

TEST_F(UsbPipes, RegistrySaysWhatIsThere)
{
    LocalPrinter printer(registry.Folder() + "/printer");
    Open(printer.Path());
    EXPECT_EQ(usb.PresentInterfaces()[0],
              "\\\\?\\USB#VID_F055&PID_0101#5&77&0&1#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}");
    EXPECT_EQ(usb.Subkeys(kPrinters), std::vector<std::string>{"Receipt Printer"});
    EXPECT_EQ(usb.Subkeys(std::string(kEnumeration) + "vid_f055&pid_0101\\"), std::vector<std::string>{"5&77&0&1"});
    EXPECT_EQ(usb.Text(std::string(kEnumeration) + "VID_F055&PID_0101\\5&77&0&1\\", "parentidprefix"), "6&1A2B3C&0");
    EXPECT_FALSE(usb.Text(std::string(kEnumeration) + "VID_F055&PID_0101\\5&77&0&1", "Other"));
    EXPECT_FALSE(usb.Subkeys(std::string(kEnumeration) + "VID_0000&PID_0000"));
    printer.Unplug();
    EXPECT_FALSE(usb.IsUsable(usb.PresentInterfaces()[0]));
    EXPECT_FALSE(usb.IsUsable("\\\\?\\usb#unknown"));
    EXPECT_EQ(usb.OpenPipe(usb.PresentInterfaces()[0], Direction::kWrite, error), nullptr);
}

TEST_F(UsbPipes, BothPipesAreOneOpenedDevice)
{
    LocalPrinter printer(registry.Folder() + "/printer");
    Open(printer.Path());
    LoopbackPeer peer = printer.Accept();
    EXPECT_FALSE(printer.HasCaller());  // neither a second opening nor one to look
    EXPECT_EQ(writePipe->Write(Bytes("data"), 1000).count, 4U);
    EXPECT_EQ(peer.Read(4), "data");
    peer.Send("\x12");
    std::string reply;
    EXPECT_EQ(Read(reply).status, UsbStatus::kDone);
    EXPECT_EQ(reply, "\x12");
    EXPECT_TRUE(writePipe->Close());
    EXPECT_TRUE(readPipe->Close());
    EXPECT_FALSE(readPipe->Close());
    EXPECT_EQ(peer.Read(1), "");
}

TEST_F(UsbPipes, SilenceAndFullBuffersEndWithTheTimeLimit)
{
    LocalPrinter printer(registry.Folder() + "/printer");
    Open(printer.Path());
    LoopbackPeer peer = printer.Accept();
    std::string reply;
    EXPECT_EQ(Read(reply, 20).status, UsbStatus::kTimedOut);
    EXPECT_EQ(writePipe->Write(Bytes(std::string(8 << 20, 'x')), 50).status, UsbStatus::kTimedOut);
    EXPECT_TRUE(writePipe->Cancel());
    EXPECT_TRUE(readPipe->Cancel());
}

TEST_F(UsbPipes, AfterTheSignalOnlyProgressIsWaitedFor)
{
    LocalPrinter printer(registry.Folder() + "/printer");
    Open(printer.Path());
    const LoopbackPeer peer = printer.Accept();
    StopSignal stop;
    writePipe->HeedStop(stop);
    readPipe->HeedStop(stop);
    std::string reply;
    tests::ExpectToEndTwoSecondsAfter(
        stop, {{"write",
                [&] {
                    const std::string much(8 << 20, 'x');
                    EXPECT_EQ(writePipe->Write(Bytes(much), tests::kOneMinute).status, UsbStatus::kTimedOut);
                }},
               {"read", [&] { EXPECT_EQ(Read(reply, tests::kOneMinute).status, UsbStatus::kTimedOut); }}});
}

TEST_F(UsbPipes, UnpluggedDeviceIsGoneForBothAndMayComeBack)
{
    LocalPrinter printer(registry.Folder() + "/printer");
    Open(printer.Path());
    printer.Accept().Finish();
    std::string reply;
    EXPECT_EQ(Read(reply).status, UsbStatus::kGone);
    EXPECT_EQ(writePipe->Write(Bytes("x"), 1000).status, UsbStatus::kGone);
    // Also while the old pipes are still held.
    auto old = std::move(writePipe);
    Open(printer.Path());
    LoopbackPeer peer = printer.Accept();
    EXPECT_EQ(writePipe->Write(Bytes("back"), 1000).count, 4U);
    EXPECT_EQ(peer.Read(4), "back");
}

TEST_F(UsbPipes, TerminalCarriesEveryByteAndDropsWhatIsCancelled)
{
    PseudoTerminal terminal;
    Open(terminal.Path());
    const std::string bytes("\x03\x04\r\n\x11\x13\x1A\0", 8);
    EXPECT_EQ(writePipe->Write(Bytes(bytes), 1000).count, 8U);
    EXPECT_TRUE(writePipe->Cancel());  // nothing is pending, and nothing is taken back
    EXPECT_EQ(terminal.Read(8), bytes);
    terminal.Send(bytes);
    std::string reply;
    EXPECT_EQ(Read(reply).status, UsbStatus::kDone);
    EXPECT_EQ(reply, bytes);
    EXPECT_EQ(writePipe->Write(Bytes(std::string(1 << 20, 'x')), 50).status, UsbStatus::kTimedOut);
    EXPECT_TRUE(writePipe->Cancel());
    EXPECT_EQ(writePipe->Write(Bytes("after"), 10000).status, UsbStatus::kDone);
    terminal.Unplug();
    EXPECT_EQ(writePipe->Write(Bytes("x"), 1000).status, UsbStatus::kGone);
    EXPECT_EQ(Read(reply).status, UsbStatus::kGone);
}

TEST_F(UsbPipes, OrdinaryFilesAreNoDevices)
{
    std::ofstream(registry.Folder() + "/file").close();
    registry.Write(tests::UsbPrinterLines(registry.Folder() + "/file"));
    EXPECT_FALSE(usb.IsUsable(usb.PresentInterfaces()[0]));
}

// Without a word in the registry, the kernel's printers are found under the keys that a Windows machine would have.
TEST(KernelUsbPrinters, ArePresentedAsInstalledPrinters)
{
    const TempRegistry registry;
    namespace fs = std::filesystem;
    const std::string top = registry.Folder();
    const auto add = [&](const std::string& device, const std::string& name, const std::string& vendor,
                         const std::string& product) {
        const std::string folder = top + "/devices/" + device;
        fs::create_directories(folder + "/" + device + ":1.0");
        std::ofstream(folder + "/idVendor") << vendor << "\n";
        std::ofstream(folder + "/idProduct") << "0101\n";
        if (!product.empty()) std::ofstream(folder + "/product") << product << "\n";
        fs::create_directories(top + "/class/" + name);
        fs::create_symlink(folder + "/" + device + ":1.0", top + "/class/" + name + "/device");
    };
    add("1-2", "lp1", "f055", "Talis");
    add("1-1.4", "lp0", "f055", "Talis");
    add("2-1", "lp10", "1234", "");
    fs::create_directories(top + "/class/hiddev0");
    fs::create_directories(top + "/dev");
    fs::create_symlink("/dev/null", top + "/dev/lp0");

    const auto usb = NewPosixUsb(SystemRegistry(), top + "/class", top + "/dev");
    using Names = std::vector<std::string>;
    EXPECT_EQ(usb->Subkeys(kPrinters), (Names{"lp0", "lp1", "lp10", "Talis"}));
    EXPECT_EQ(usb->Text(std::string(kPrinters) + "Talis\\PnPData", "DeviceInstanceId"),
              "USBPRINT\\Talis\\1-1.4:1.0&lp0");
    EXPECT_EQ(usb->Subkeys(kEnumeration), (Names{"Vid_1234&Pid_0101", "Vid_f055&Pid_0101"}));
    EXPECT_EQ(usb->Subkeys(std::string(kEnumeration) + "VID_F055&PID_0101\\"), (Names{"1-1.4:1.0", "1-2:1.0"}));
    EXPECT_EQ(usb->Text(std::string(kEnumeration) + "Vid_f055&Pid_0101\\1-2:1.0\\", "ParentIdPrefix"), "1-2:1.0");
    const auto paths = usb->PresentInterfaces();
    ASSERT_EQ(paths.size(), 3U);
    EXPECT_EQ(paths[0], "\\\\?\\usb#vid_f055&pid_0101#1-1.4:1.0#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}");
    EXPECT_TRUE(usb->IsUsable(paths[0]));
    EXPECT_FALSE(usb->IsUsable(paths[1]));  // listed, but its file is not there

    // A device that answers with nothing is no device that is gone.
    uint32_t error = 0;
    const auto readPipe = usb->OpenPipe(paths[0] + "\\PIPE00\\", Direction::kRead, error);
    const auto writePipe = usb->OpenPipe(paths[0] + "\\PIPE01\\", Direction::kWrite, error);
    ASSERT_TRUE(readPipe != nullptr && writePipe != nullptr);
    std::byte byte{};
    EXPECT_EQ(readPipe->Read({&byte, 1}, 1000).status, UsbStatus::kDone);
    EXPECT_EQ(writePipe->Write(Bytes("x"), 1000).status, UsbStatus::kDone);
    EXPECT_TRUE(writePipe->Cancel());
    EXPECT_EQ(readPipe->Write(Bytes("x"), 1000).status, UsbStatus::kNoResult);  // each pipe has one direction
}

TEST(KernelUsbPrinters, NoneIsAnEmptyPrintSystem)
{
    const TempRegistry registry;
    const auto usb = NewPosixUsb(SystemRegistry(), registry.Folder() + "/none", "/dev/usb");
    EXPECT_EQ(usb->Subkeys(kPrinters), std::vector<std::string>{});
    EXPECT_TRUE(usb->PresentInterfaces().empty());
}

}  // namespace
}  // namespace marbex::platform
