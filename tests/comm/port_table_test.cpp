#include "comm/port_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <future>

#include "comm/comm_log_file.h"
#include "loopback_server.h"

namespace marbex::comm {
namespace {

using marbex::tests::LoopbackPeer;
using marbex::tests::LoopbackServer;

class Ports : public testing::Test {
protected:
    Ports() { std::ofstream(logPath).close(); }

    uint32_t Create(int32_t comType, uint32_t mask = 12)
    {
        uint32_t id = 0;
        EXPECT_EQ(table.CreateCommunicationPort(comType, kLogToFile, mask, logPath.c_str(), &id), 0U);
        return id;
    }

    LoopbackPeer OpenEthernet(uint32_t receiveMilliseconds = 10000)
    {
        Create(kEthernet);
        EXPECT_EQ(table.InitEthTCP("127.0.0.1", server.Port()), 0U);
        EXPECT_EQ(table.SetEthTimeout(10000, receiveMilliseconds), 0U);
        EXPECT_EQ(table.Open(), 0U);
        return server.Accept();
    }

    std::string Log() const { return tests::ReadLog(logPath); }
    void ForgetLog() { std::ofstream(logPath, std::ios::trunc).close(); }

    tests::TemporaryFolder folder;
    std::string logPath = folder.File("comm.log");
    LoopbackServer server;
    PortTable table;
    uint8_t byte = 'x';
    uint32_t count = 0;
};

TEST_F(Ports, MissingArgumentsAreRefusedInSilence)
{
    Create(kEthernet, 15);
    ForgetLog();
    EXPECT_EQ(table.InitEthTCP(nullptr, 1), 5U);
    EXPECT_EQ(table.Write(nullptr, 1), 5U);
    EXPECT_EQ(table.Read(nullptr, 1, &count), 5U);
    EXPECT_EQ(table.Read(&byte, 1, nullptr), 5U);
    EXPECT_EQ(Log(), "");
}

TEST_F(Ports, IdsCountFromOneAndAreNeverReused)
{
    EXPECT_EQ(Create(kEthernet), 1U);
    EXPECT_EQ(Create(kSerial), 2U);
    EXPECT_EQ(Create(kEthernet), 3U);
    EXPECT_EQ(table.Close(), 206U);
    EXPECT_EQ(Create(kUsb), 4U);
}

TEST_F(Ports, RecordThatCannotBeMadeTakesNoId)
{
    bool memory = false;
    PortTable poor({.newTcpSocket = [&]() -> std::unique_ptr<platform::TcpSocket> {
        return memory ? platform::NewTcpSocket() : nullptr;
    }});
    uint32_t id = 77;
    EXPECT_EQ(poor.CreateCommunicationPort(1, 0, 0, "", &id), 5U);
    EXPECT_EQ(id, 77U);
    memory = true;
    EXPECT_EQ(poor.CreateCommunicationPort(1, 0, 0, "", &id), 0U);
    EXPECT_EQ(id, 1U);
}

TEST_F(Ports, SelectionIsLoggedByTheRecordThatWasCurrent)
{
    const uint32_t first = Create(kEthernet);
    uint32_t second = 0;
    const std::string other = folder.File("other.log");
    ASSERT_EQ(table.CreateCommunicationPort(kEthernet, kLogToFile, 12, other.c_str(), &second), 0U);
    EXPECT_EQ(table.SetCommunicationPort(first), 0U);
    EXPECT_EQ(table.SetCommunicationPort(99), 4U);
    EXPECT_EQ(table.SetCommunicationPort(second), 0U);
    EXPECT_EQ(tests::ReadLogLines(other).back(), "SetCommunicationPort -  Communication ID will be setted to 1 ");
    EXPECT_EQ(Log(),
              "SetCommunicationPort -  ID not found\n"
              "SetCommunicationPort -  Communication ID will be setted to 2 \n");
    // The unknown id left the first record current.
    EXPECT_EQ(tests::ReadLogLines(other).size(), 2U);
}

TEST_F(Ports, EthernetFunctionsAreForEthernetPorts)
{
    for (const int32_t comType : {0, 2, 7}) {
        Create(comType);
        ForgetLog();
        EXPECT_EQ(table.InitEthTCP("127.0.0.1", 9100), 203U);
        EXPECT_EQ(table.SetEthTimeout(1, 1), 203U);
        EXPECT_EQ(Log(),
                  "InitEthTCP -  Ethernet function failed: a different com type has been setted\n"
                  "SetEthTimeout -  Ethernet function failed: a different com type has been setted\n");
    }
}

TEST_F(Ports, CleaningTheInputOfAnEthernetPortDropsOldReplies)
{
    LoopbackPeer peer = OpenEthernet();
    peer.Send("old");
    ASSERT_EQ(table.Read(&byte, 1, &count), 0U);
    EXPECT_EQ(table.Clean(true, false), 221U);
    ASSERT_EQ(table.Read(&byte, 1, &count), 0U);
    EXPECT_EQ(byte, 'l');
    EXPECT_EQ(table.Clean(false, true), 221U);
    peer.Send("N");
    ASSERT_EQ(table.Read(&byte, 1, &count), 0U);
    EXPECT_EQ(byte, 'N');
}

// One printer that keeps a reader waiting must not delay the other one, nor its selection.
TEST_F(Ports, BlockedPortDoesNotDelayAnother)
{
    LoopbackPeer slow = OpenEthernet();
    LoopbackPeer quick = OpenEthernet();
    const auto waiting = table.Select(1);
    ASSERT_NE(waiting, nullptr);
    uint8_t late = 0;
    uint32_t lateCount = 0;
    auto blocked = std::async(std::launch::async, [&] { return waiting->Read(&late, 1, &lateCount); });
    for (int i = 0; i < 20; ++i) {
        const auto record = table.Select(2);
        ASSERT_NE(record, nullptr);
        ASSERT_EQ(record->Write(&byte, 1), 0U);
        ASSERT_EQ(quick.Read(1), "x");
    }
    EXPECT_EQ(blocked.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    slow.Send("!");
    EXPECT_EQ(blocked.get(), 0U);
    EXPECT_EQ(late, '!');
}

}  // namespace
}  // namespace marbex::comm
