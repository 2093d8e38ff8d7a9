// Serial ports of Windows: the device map, the links to devices, and a line.

#include "platform/serial.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <string>

#include "platform/stopped_waits.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

TEST(SerialSystem, DeviceMapIsTheRegistrys)
{
    const TempRegistry none;
    EXPECT_EQ(SystemSerial().CountPorts(), 0U);
    EXPECT_FALSE(SystemSerial().Ports());

    none.Write(
        "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"\\\\Device\\\\Serial0\"=\"COM1\"\n"
        "\"\\\\Device\\\\VCP0\"=\"COM12\"\n\"number\"=dword:1\n");
    const auto ports = SystemSerial().Ports();
    ASSERT_TRUE(ports);
    ASSERT_EQ(ports->size(), 2U);
    EXPECT_EQ(SystemSerial().CountPorts(), 2U);
    for (const SerialPortEntry& entry : *ports)
        EXPECT_EQ(entry.device, entry.port == "COM1" ? "\\Device\\Serial0" : "\\Device\\VCP0");
}

TEST(SerialSystem, SaysWhichWindowsRunsAndNotWhichTheProgramWasMadeFor)
{
    uint32_t error = 0;
    const auto version = SystemSerial().Version(error);
    ASSERT_TRUE(version) << error;
    EXPECT_EQ(version->family, SystemVersion::Family::kWindowsNt);
    EXPECT_GE(version->major, 6U);
}

// Wine 8 does not return from DefineDosDevice in a 32-bit program.
bool MakingLinksHangs()
{
    return sizeof(void*) == 4 && GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

// One of this process alone. Wine 8 tells links apart by their first four characters.
std::string LinkName()
{
    return std::to_string(GetCurrentProcessId()) + "MarbexTestLink";
}

TEST(SerialSystem, LinksToDevicesComeAndGo)
{
    if (MakingLinksHangs()) GTEST_SKIP() << "32-bit Wine makes no links to devices";
    SerialSystem& serial = SystemSerial();
    const std::string name = LinkName();
    const std::string target = "\\Device\\Serial77";
    uint32_t error = 0;
    EXPECT_EQ(serial.QueryLink(name, error), SerialSystem::LinkState::kMissing);
    if (!serial.DefineLink(name, target, error)) {
        EXPECT_NE(error, 0U);
        GTEST_SKIP() << "this system does not make links to devices: error " << error;
    }
    if (serial.QueryLink(name, error) == SerialSystem::LinkState::kMissing) {
        serial.RemoveLink(name, target);
        GTEST_SKIP() << "this system, as Wine does, makes no links with long names";
    }
    serial.RemoveLink(name, "\\Device\\Serial78");
    EXPECT_EQ(serial.QueryLink(name, error), SerialSystem::LinkState::kPresent) << "only with its own target";
    serial.RemoveLink(name, target);
    EXPECT_EQ(serial.QueryLink(name, error), SerialSystem::LinkState::kMissing);
}

TEST(SerialSystem, PortThatIsNotThereDoesNotOpen)
{
    uint32_t error = 0;
    EXPECT_EQ(SystemSerial().Open("\\\\.\\LinkToSerial250", error), nullptr);
    EXPECT_NE(error, 0U);
}

// What the transport does: a link of a long name to the device behind a port of the map.
TEST(SerialSystem, LinkLeadsToTheDevice)
{
    if (MakingLinksHangs()) GTEST_SKIP() << "32-bit Wine makes no links to devices";
    SerialSystem& serial = SystemSerial();
    const auto ports = serial.Ports();
    if (!ports || ports->empty()) GTEST_SKIP() << "this machine has no serial port";
    const std::string name = LinkName();
    const SerialPortEntry& entry = ports->back();
    uint32_t direct = 0;
    uint32_t linked = 0;
    // A name may stand for a port that nothing is plugged into: what opens must be the same both ways, and no more.
    const auto answers = [&serial](const std::string& path, uint32_t& error) {
        const auto line = serial.Open(path, error);
        return line != nullptr && line->Settings().has_value();
    };
    const bool works = answers("\\\\.\\" + entry.port, direct);
    ASSERT_TRUE(serial.DefineLink(name, entry.device, linked)) << linked;
    EXPECT_EQ(answers("\\\\.\\" + name, linked), works) << direct << ", " << linked;
    serial.RemoveLink(name, entry.device);
    EXPECT_EQ(serial.Open("\\\\.\\" + name, linked), nullptr);
}

// Needs a port whose input and output are joined: a plug with pins 2 and 3 bridged, or a pseudo-terminal that echoes.
// MARBEX_TEST_LOOPED_PORT names it, such as \\.\COM9.
class LoopedLine : public testing::Test {
protected:
    void SetUp() override
    {
        const char* const port = std::getenv("MARBEX_TEST_LOOPED_PORT");
        if (port == nullptr) GTEST_SKIP() << "MARBEX_TEST_LOOPED_PORT names no port that is joined to itself";
        uint32_t error = 0;
        line = SystemSerial().Open(port, error);
        ASSERT_NE(line, nullptr) << error;
        auto settings = line->Settings();
        ASSERT_TRUE(settings) << line->LastError();
        settings->baudRate = 38400;
        settings->byteSize = 8;
        settings->parity = LineParity::kNone;
        settings->stopBits = StopBits::kOne;
        settings->ctsOutputFlow = settings->dsrOutputFlow = false;
        settings->xonXoffInput = settings->xonXoffOutput = false;
        settings->dtr = settings->rts = LineControl::kEnabled;
        ASSERT_TRUE(line->Apply(*settings)) << line->LastError();
    }

    std::string Read(std::size_t count)
    {
        std::string bytes(count, '\0');
        const SerialTransfer got = line->Read(std::as_writable_bytes(std::span(bytes)));
        EXPECT_TRUE(got.ok) << line->LastError();
        bytes.resize(got.count);
        return bytes;
    }

    SerialTransfer Write(const std::string& bytes) { return line->Write(std::as_bytes(std::span(bytes))); }

    std::unique_ptr<SerialLine> line;
};

TEST_F(LoopedLine, EveryByteComesBack)
{
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    ASSERT_TRUE(line->Apply(SerialTimeouts{50, 10, 2000, 100, 2000}));
    const SerialTransfer written = Write(all);
    EXPECT_TRUE(written.ok);
    EXPECT_EQ(written.count, all.size());
    std::string back;
    while (back.size() < all.size()) {
        const std::string more = Read(all.size() - back.size());
        if (more.empty()) break;
        back += more;
    }
    EXPECT_EQ(back, all);
}

TEST_F(LoopedLine, SettingsAreThoseApplied)
{
    auto settings = line->Settings();
    ASSERT_TRUE(settings);
    settings->xonCharacter = settings->xoffCharacter = 0;  // which the system's function would refuse
    settings->eventCharacter = 0x0A;
    EXPECT_TRUE(line->Apply(*settings)) << line->LastError();
    EXPECT_EQ(line->Settings()->xoffCharacter, 0);
    EXPECT_EQ(line->Settings()->baudRate, 38400U);
    EXPECT_TRUE(line->SetDtr(true)) << line->LastError();
    EXPECT_TRUE(line->SetRts(false)) << line->LastError();
}

TEST_F(LoopedLine, NothingWaitsWithoutLimit)
{
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(line->Apply(SerialTimeouts{}));
    EXPECT_EQ(Read(4), "");
    ASSERT_TRUE(line->Apply(SerialTimeouts{10, 10, 100, 100, 1000}));
    EXPECT_EQ(Read(4), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(130));
    EXPECT_TRUE(line->Purge(true, true)) << line->LastError();
    EXPECT_FALSE(line->IsGone());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(LoopedLine, AfterTheSignalOnlyProgressIsWaitedFor)
{
    StopSignal stop;
    line->HeedStop(stop);
    ASSERT_TRUE(line->Apply(SerialTimeouts{10, 10, tests::kOneMinute, 100, tests::kOneMinute}));
    EXPECT_EQ(Write("echo").count, 4U);
    EXPECT_EQ(Read(4), "echo");
    tests::ExpectToEndTwoSecondsAfter(stop, {{"read", [&] { EXPECT_EQ(Read(4), ""); }}});
    std::array<std::byte, 4> room{};
    EXPECT_EQ(line->ReadUntilStopped(room, tests::kOneMinute).count, 0U);
    stop.Set(false);
    EXPECT_EQ(Write("again").count, 5U);
    std::string back(5, '\0');
    EXPECT_EQ(line->ReadUntilStopped(std::as_writable_bytes(std::span(back)), 5000).count, 5U);
    EXPECT_EQ(back, "again");
}

// What is sent comes back: an Xoff holds the line that sent it.
TEST_F(LoopedLine, HeldLineIsGivenUpAndClosed)
{
    auto settings = line->Settings();
    ASSERT_TRUE(settings);
    settings->xonXoffOutput = true;
    settings->xonCharacter = 0x11;
    settings->xoffCharacter = 0x13;
    ASSERT_TRUE(line->Apply(*settings)) << line->LastError();
    ASSERT_TRUE(line->Apply(SerialTimeouts{10, 10, 5000, 100, tests::kOneMinute}));
    EXPECT_EQ(Write("\x13z").count, 2U);
    EXPECT_EQ(Read(1), "z");
    StopSignal stop;
    line->HeedStop(stop);
    tests::ExpectToEndTwoSecondsAfter(stop, {{"write", [&] {
                                                  const SerialTransfer sent = Write("held");
                                                  EXPECT_TRUE(sent.ok);
                                                  EXPECT_EQ(sent.count, 0U);
                                              }}});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(line->Close());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST_F(LoopedLine, ClosesOnce)
{
    EXPECT_TRUE(line->Close());
    EXPECT_FALSE(line->Close());
    EXPECT_EQ(line->LastError(), static_cast<uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(line->Settings());
}

}  // namespace
}  // namespace marbex::platform
