#include "platform/serial.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "loopback_server.h"
#include "platform/posix/patient_close.h"
#include "platform/posix/pseudo_terminal.h"
#include "platform/posix/serial_system.h"
#include "platform/stopped_waits.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::PseudoTerminal;
using tests::TempRegistry;

std::span<const std::byte> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

std::string Join(const std::optional<std::vector<SerialPortEntry>>& ports)
{
    std::string text;
    for (const SerialPortEntry& entry : ports.value())
        text += entry.port + "=" + entry.device + " ";
    return text;
}

TEST(SerialMap, RegistryNamesThePorts)
{
    const TempRegistry registry(
        "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n"
        "\"/dev/pts/7\"=\"COM1\"\n\"/dev/ttyUSB3\"=\"COM5\"\n\"odd\"=dword:00000001\n");
    EXPECT_EQ(Join(SystemSerial().Ports()), "COM1=/dev/pts/7 COM5=/dev/ttyUSB3 ");
    EXPECT_EQ(SystemSerial().CountPorts(), 2U);
}

TEST(SerialMap, FoundTerminalsAreNumberedUartsFirst)
{
    const TempRegistry registry;
    const std::string devices = registry.Folder() + "/dev", classes = registry.Folder() + "/class";
    std::filesystem::create_directories(devices);
    for (const char* name :
         {"ttyACM0", "ttyUSB1", "ttyUSB0", "ttyS10", "ttyS2", "ttyS0", "ttySomething", "tty1", "ttyS"})
        std::ofstream(devices + "/" + name).close();
    // The kernel reserves names for UARTs that are not there.
    std::filesystem::create_directories(classes + "/ttyS2");
    std::ofstream(classes + "/ttyS2/type") << "0\n";
    std::filesystem::create_directories(classes + "/ttyS10");
    std::ofstream(classes + "/ttyS10/type") << "4\n";
    const auto serial = NewPosixSerial(SystemRegistry(), devices, classes);
    EXPECT_EQ(Join(serial->Ports()), "COM1=" + devices + "/ttyS0 COM2=" + devices + "/ttyS10 COM3=" + devices +
                                         "/ttyUSB0 COM4=" + devices + "/ttyUSB1 COM5=" + devices + "/ttyACM0 ");
    // A map without entries is a machine without ports.
    registry.Write("[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n");
    EXPECT_EQ(serial->CountPorts(), 0U);
}

class SerialPort : public testing::Test {
protected:
    void SetUp() override
    {
        line = Open();
        ASSERT_NE(line, nullptr) << error;
        ASSERT_TRUE(line->Settings());
        ASSERT_TRUE(line->Apply(LineSettings{}));
        ASSERT_TRUE(line->Apply(SerialTimeouts{0, 0, 10000, 0, 10000}));
    }

    std::unique_ptr<SerialLine> Open() { return SystemSerial().Open(terminal.Path(), error); }

    std::string Read(std::size_t count)
    {
        std::string text(count, '\0');
        const SerialTransfer got = line->Read(std::as_writable_bytes(std::span(text)));
        text.resize(got.count);
        return got.ok ? text : "failed";
    }

    PseudoTerminal terminal;
    uint32_t error = 0;
    std::unique_ptr<SerialLine> line;
};

TEST_F(SerialPort, LinkLeadsToTheDeviceUntilItIsRemoved)
{
    line.reset();
    SerialSystem& serial = SystemSerial();
    using State = SerialSystem::LinkState;
    EXPECT_EQ(serial.QueryLink("LinkToSerial77", error), State::kMissing);
    EXPECT_EQ(serial.Open("\\\\.\\LinkToSerial77", error), nullptr);
    ASSERT_TRUE(serial.DefineLink("LinkToSerial77", terminal.Path(), error));
    EXPECT_EQ(serial.QueryLink("LinkToSerial77", error), State::kPresent);
    EXPECT_NE(serial.Open("\\\\.\\LinkToSerial77", error), nullptr);
    serial.RemoveLink("LinkToSerial77", "another target");
    EXPECT_EQ(serial.QueryLink("LinkToSerial77", error), State::kPresent);
    serial.RemoveLink("LinkToSerial77", terminal.Path());
    EXPECT_EQ(serial.QueryLink("LinkToSerial77", error), State::kMissing);
}

TEST_F(SerialPort, IsOpenOnceAtATimeAndOnlyIfItIsATerminal)
{
    EXPECT_EQ(Open(), nullptr);
    EXPECT_NE(error, 0U);
    EXPECT_TRUE(line->Close());
    EXPECT_FALSE(line->Close());
    EXPECT_NE(Open(), nullptr);
    EXPECT_EQ(SystemSerial().Open("/dev/null", error), nullptr);
    EXPECT_EQ(SystemSerial().Open("/dev/no such terminal", error), nullptr);
}

TEST_F(SerialPort, CarriesEveryByteBothWaysUnchanged)
{
    std::string all(256, '\0');
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<char>(i);
    EXPECT_EQ(line->Write(Bytes(all)).count, 256U);
    EXPECT_EQ(terminal.Read(256), all);
    terminal.Send(all);
    EXPECT_EQ(Read(256), all);
    EXPECT_FALSE(terminal.HasInput());  // no echo
}

TEST_F(SerialPort, ReadEndsWithItsBytesItsIntervalOrItsTotal)
{
    ASSERT_TRUE(line->Apply(SerialTimeouts{20, 10, 10000, 0, 0}));
    terminal.Send("abc");
    EXPECT_EQ(Read(2), "ab");  // as many as asked, and no waiting for more
    EXPECT_EQ(Read(6), "c");   // silence after the last byte ends it long before the total
    ASSERT_TRUE(line->Apply(SerialTimeouts{0, 10, 20, 0, 0}));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Read(6), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
    ASSERT_TRUE(line->Apply(SerialTimeouts{}));  // never for ever
    EXPECT_EQ(Read(6), "");
}

// A printer that is out of paper holds the line with Xoff: nothing is lost, and nobody waits longer than asked.
TEST_F(SerialPort, XoffHoldsOutputForAtMostTheTimeOut)
{
    LineSettings settings;
    settings.xonXoffOutput = true;
    settings.xonCharacter = 0x11;
    settings.xoffCharacter = 0x13;
    ASSERT_TRUE(line->Apply(settings));
    ASSERT_TRUE(line->Apply(SerialTimeouts{0, 0, 10000, 1, 50}));
    terminal.Send(
        "\x13"
        "z");
    ASSERT_EQ(Read(1), "z");  // so the Xoff has been seen
    const SerialTransfer held = line->Write(Bytes("held"));
    EXPECT_TRUE(held.ok);
    EXPECT_EQ(held.count, 0U);
    EXPECT_TRUE(line->Purge(true, true));
    terminal.Send(
        "\x11"
        "z");
    ASSERT_EQ(Read(1), "z");
    EXPECT_EQ(line->Write(Bytes("free")).count, 4U);
    EXPECT_EQ(terminal.Read(4), "free");
}

TEST_F(SerialPort, AfterTheSignalOnlyProgressIsWaitedFor)
{
    StopSignal stop;
    const PseudoTerminal silent;
    const auto reading = SystemSerial().Open(silent.Path(), error);
    ASSERT_TRUE(reading->Apply(LineSettings{}) && reading->Apply(SerialTimeouts{10, 0, tests::kOneMinute, 0, 0}));
    ASSERT_TRUE(line->Apply(SerialTimeouts{0, 0, 0, 100, tests::kOneMinute}));
    reading->HeedStop(stop);
    line->HeedStop(stop);
    const std::string much(1 << 20, 'x');
    tests::ExpectToEndTwoSecondsAfter(stop, {{"write",
                                              [&] {
                                                  const SerialTransfer sent = line->Write(Bytes(much));
                                                  EXPECT_TRUE(sent.ok);
                                                  EXPECT_LT(sent.count, much.size());
                                              }},
                                             {"read", [&] {
                                                  std::byte byte{};
                                                  const SerialTransfer got = reading->Read({&byte, 1});
                                                  EXPECT_TRUE(got.ok);
                                                  EXPECT_EQ(got.count, 0U);
                                              }}});
}

// The drivers of USB adapters wait inside close, half a minute, for output that the printer holds up. A connection that
// lingers does the same.
TEST(PatientClose, EndsTheWaitOfADriver)
{
    tests::LoopbackServer server;
    UniqueFd lingering(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.Port());
    address.sin_addr.s_addr = htonl(tests::kLoopback);
    ASSERT_EQ(connect(lingering.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const tests::LoopbackPeer peer = server.Accept();
    const linger half{1, 30};
    setsockopt(lingering.Get(), SOL_SOCKET, SO_LINGER, &half, sizeof half);
    const std::string block(1 << 16, 'x');
    while (send(lingering.Get(), block.data(), block.size(), MSG_DONTWAIT) > 0) {
    }
    const int number = lingering.Get();
    const auto start = std::chrono::steady_clock::now();
    CloseWithin(std::move(lingering), 100);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(100));
    EXPECT_LT(took, std::chrono::milliseconds(900)) << "the driver was interrupted, and its thread has ended";
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

TEST_F(SerialPort, WriteThatIsNotTakenIsShort)
{
    ASSERT_TRUE(line->Apply(SerialTimeouts{0, 0, 0, 0, 50}));
    const std::string much(1 << 20, 'x');
    const SerialTransfer sent = line->Write(Bytes(much));
    EXPECT_TRUE(sent.ok);
    EXPECT_GT(sent.count, 0U);
    EXPECT_LT(sent.count, much.size());
}

TEST_F(SerialPort, PurgeThrowsAwayWhatIsAskedFor)
{
    terminal.Send("abc");
    ASSERT_EQ(Read(1), "a");
    EXPECT_TRUE(line->Purge(true, false));
    EXPECT_EQ(Read(1), "b");
    EXPECT_TRUE(line->Purge(false, true));
    terminal.Send("new");
    EXPECT_EQ(Read(3), "new");
    EXPECT_TRUE(line->Purge(false, false));
}

// The end of a receipt used to be thrown away when the port was cleaned or closed before the printer had read it.
TEST_F(SerialPort, WhatWasWrittenStaysWrittenWhenThePortIsCleanedOrClosed)
{
    EXPECT_EQ(line->Write(Bytes("receipt")).count, 7U);
    EXPECT_TRUE(line->Purge(true, true));
    EXPECT_EQ(line->Write(Bytes("cut")).count, 3U);
    EXPECT_TRUE(line->Close());
    EXPECT_EQ(terminal.Read(10), "receiptcut");
}

TEST_F(SerialPort, SettingsAreKeptAlsoWhereATerminalCannotExpressThem)
{
    LineSettings settings = *line->Settings();
    settings.baudRate = 57600;
    settings.byteSize = 7;
    settings.parity = LineParity::kEven;
    settings.stopBits = StopBits::kTwo;
    settings.dtr = LineControl::kHandshake;
    settings.xonLimit = 2048;
    settings.eventCharacter = 0x0A;
    settings.ctsOutputFlow = true;
    ASSERT_TRUE(line->Apply(settings));
    ASSERT_TRUE(line->Apply(settings));  // and once more, with nothing left to change
    const LineSettings kept = *line->Settings();
    EXPECT_EQ(kept.baudRate, 57600U);
    EXPECT_EQ(kept.byteSize, 7);
    EXPECT_EQ(kept.parity, LineParity::kEven);
    EXPECT_EQ(kept.dtr, LineControl::kHandshake);
    EXPECT_EQ(kept.xonLimit, 2048);
    const termios terminalSettings = terminal.Settings();
    EXPECT_EQ(cfgetospeed(&terminalSettings), static_cast<speed_t>(B57600));
    EXPECT_NE(terminalSettings.c_cflag & CRTSCTS, 0U);
    EXPECT_NE(terminalSettings.c_cflag & CSTOPB, 0U);
    EXPECT_EQ(terminalSettings.c_lflag & static_cast<tcflag_t>(ICANON | ECHO | ISIG), 0U);
    // A pseudo-terminal has no such lines.
    EXPECT_TRUE(line->SetDtr(true));
    EXPECT_TRUE(line->SetRts(false));
}

TEST_F(SerialPort, DeviceThatGoesAwayIsNoticed)
{
    terminal.Send("last");
    ASSERT_EQ(Read(1), "l");
    EXPECT_FALSE(line->IsGone());
    terminal.Unplug();
    EXPECT_FALSE(line->Write(Bytes("x")).ok);
    EXPECT_TRUE(line->IsGone());
    EXPECT_NE(line->LastError(), 0U);
    line = nullptr;

    PseudoTerminal other;
    line = SystemSerial().Open(other.Path(), error);
    ASSERT_NE(line, nullptr);
    ASSERT_TRUE(line->Apply(SerialTimeouts{10, 0, 10000, 0, 10000}));
    other.Unplug();
    EXPECT_EQ(Read(1), "failed");  // at once, not after ten seconds
    EXPECT_TRUE(line->IsGone());
}

}  // namespace
}  // namespace marbex::platform
