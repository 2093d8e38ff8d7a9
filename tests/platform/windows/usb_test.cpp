// USB printers of Windows. No test machine has one: named pipes stand in for the pipes of a device.

#include "platform/usb.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <optional>
#include <string>

#include "platform/stopped_waits.h"
#include "platform/windows/unique_handle.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;
using Direction = UsbSystem::Direction;

constexpr DWORD kPipeBuffer = 4096;

// The device's end of one pipe.
class Device {
public:
    Device()
        : path_("\\\\.\\pipe\\marbex-test-" + std::to_string(GetCurrentProcessId())),
          pipe_(CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                 PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, kPipeBuffer, kPipeBuffer, 0,
                                 nullptr))
    {
    }

    const std::string& Path() const { return path_; }

    void Send(std::string_view bytes) const
    {
        DWORD count = 0;
        ASSERT_TRUE(WriteFile(pipe_.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr));
        ASSERT_EQ(count, bytes.size());
    }

    std::string Take(std::size_t count) const
    {
        std::string bytes(count, '\0');
        DWORD got = 0;
        EXPECT_TRUE(ReadFile(pipe_.Get(), bytes.data(), static_cast<DWORD>(count), &got, nullptr));
        bytes.resize(got);
        return bytes;
    }

    void Discard() { EXPECT_TRUE(DisconnectNamedPipe(pipe_.Get())); }  // what was sent and not yet taken
    void Unplug() { pipe_.Close(); }

private:
    std::string path_;
    UniqueHandle pipe_;
};

class OverlappedPipe : public testing::Test {
protected:
    void Open(Direction direction)
    {
        uint32_t error = 0;
        pipe = SystemUsb().OpenPipe(device.Path(), direction, error);
        ASSERT_NE(pipe, nullptr) << error;
    }

    UsbStatus Write(std::string_view bytes, uint32_t timeout)
    {
        return pipe->Write(std::as_bytes(std::span(bytes)), timeout).status;
    }

    // The bytes that came, none when the read did not end with any.
    std::optional<std::string> Read(uint32_t timeout, std::size_t room = 64)
    {
        std::string bytes(room, '\0');
        const UsbTransfer got = pipe->Read(std::as_writable_bytes(std::span(bytes)), timeout);
        status = got.status;
        if (got.status != UsbStatus::kDone) return std::nullopt;
        bytes.resize(got.count);
        return bytes;
    }

    Device device;
    std::unique_ptr<UsbPipe> pipe;
    UsbStatus status = UsbStatus::kDone;
};

TEST_F(OverlappedPipe, CarriesCommands)
{
    Open(Direction::kWrite);
    EXPECT_EQ(Write("receipt", 5000), UsbStatus::kDone);
    EXPECT_EQ(device.Take(7), "receipt");
    EXPECT_TRUE(pipe->Cancel()) << "nothing is pending";
    EXPECT_TRUE(pipe->Close());
    EXPECT_FALSE(pipe->Close());
}

TEST_F(OverlappedPipe, SilenceTimesOutAndLosesNothingThatComesAfterTheCancel)
{
    Open(Direction::kRead);
    EXPECT_EQ(Read(20), std::nullopt);
    EXPECT_EQ(status, UsbStatus::kTimedOut);
    EXPECT_TRUE(pipe->Cancel());
    device.Send("\x16");
    EXPECT_EQ(Read(5000), "\x16");
}

// The buffer of the first read is gone when its answer comes; nor may that answer be taken for the second one's.
TEST_F(OverlappedPipe, AnswerThatComesTooLateIsDropped)
{
    Open(Direction::kRead);
    EXPECT_EQ(Read(0), std::nullopt);
    device.Send("late");
    EXPECT_TRUE(pipe->Cancel());
    device.Send("right");
    EXPECT_EQ(Read(5000), "right");
}

// A packet has to be taken whole, whatever was asked for.
TEST_F(OverlappedPipe, KeepsWhatAPacketHoldsBeyondTheRequest)
{
    Open(Direction::kRead);
    device.Send("abc");
    EXPECT_EQ(Read(5000, 1), "a");
    device.Discard();
    EXPECT_EQ(Read(5000, 1), "b");
    EXPECT_EQ(Read(5000, 6), "c");
    EXPECT_EQ(Read(5000, 6), std::nullopt);
}

TEST_F(OverlappedPipe, PrinterThatTakesNothingTimesOut)
{
    Open(Direction::kWrite);
    const std::string block(kPipeBuffer, 'x');
    UsbStatus written = UsbStatus::kDone;
    for (int i = 0; i < 64 && written == UsbStatus::kDone; ++i)
        written = Write(block, 50);
    EXPECT_EQ(written, UsbStatus::kTimedOut);
    EXPECT_TRUE(pipe->Cancel());
    EXPECT_EQ(device.Take(100), std::string(100, 'x'));
}

TEST_F(OverlappedPipe, AfterTheSignalOnlyProgressIsWaitedFor)
{
    Open(Direction::kRead);
    StopSignal stop;
    pipe->HeedStop(stop);
    tests::ExpectToEndTwoSecondsAfter(stop, {{"read", [&] {
                                                  EXPECT_EQ(Read(tests::kOneMinute), std::nullopt);
                                                  EXPECT_EQ(status, UsbStatus::kTimedOut);
                                              }}});
    std::byte byte{};
    EXPECT_EQ(pipe->ReadUntilStopped({&byte, 1}, tests::kOneMinute).status, UsbStatus::kTimedOut);
}

TEST_F(OverlappedPipe, UnpluggedDeviceIsGone)
{
    Open(Direction::kRead);
    device.Unplug();
    EXPECT_EQ(Read(5000), std::nullopt);
    EXPECT_EQ(status, UsbStatus::kGone);
    EXPECT_NE(pipe->LastError(), 0U);
    EXPECT_TRUE(pipe->Cancel());
}

TEST_F(OverlappedPipe, UnpluggedDuringAWriteIsGone)
{
    Open(Direction::kWrite);
    device.Unplug();
    EXPECT_EQ(Write("receipt", 5000), UsbStatus::kGone);
}

TEST_F(OverlappedPipe, MayBeDestroyedWithATransferPending)
{
    Open(Direction::kRead);
    EXPECT_EQ(Read(0), std::nullopt);
    EXPECT_EQ(status, UsbStatus::kTimedOut);
    pipe.reset();
    device.Unplug();
}

TEST(UsbSystem, WithoutAPrinterThereIsNothing)
{
    EXPECT_EQ(SystemUsb().PresentInterfaces(), std::vector<std::string>{});
    const std::string path = std::string("\\\\?\\usb#vid_f055&pid_0101#6&1a2b3c&0#") + kUsbPrinterInterfaceClass;
    EXPECT_FALSE(SystemUsb().IsUsable(path));
    uint32_t error = 0;
    EXPECT_EQ(SystemUsb().OpenPipe(path + "\\PIPE01\\", Direction::kWrite, error), nullptr);
    EXPECT_NE(error, 0U);
}

TEST(UsbSystem, PrintSystemAndEnumerationAreTheRegistrys)
{
    const TempRegistry registry(
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\Receipt Printer\\PnPData]\n"
        "\"DeviceInstanceId\"=\"USBPRINT\\\\Talis\\\\6&1a2b3c&0&USB001\"\n\"Number\"=dword:1\n");
    const std::string printers = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";
    EXPECT_EQ(SystemUsb().Subkeys(printers), std::vector<std::string>{"Receipt Printer"});
    EXPECT_TRUE(SystemUsb().KeyExists(printers));
    const std::string data = printers + "Receipt Printer\\PnPData";
    EXPECT_EQ(SystemUsb().Text(data, "DeviceInstanceId"), "USBPRINT\\Talis\\6&1a2b3c&0&USB001");
    EXPECT_EQ(SystemUsb().Text(data, "Number"), std::nullopt);
    EXPECT_EQ(SystemUsb().Subkeys("SYSTEM\\CurrentControlSet\\Enum\\USB\\"), std::nullopt);
}

}  // namespace
}  // namespace marbex::platform
