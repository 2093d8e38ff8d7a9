#include "comm/printer_port.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <string>

#include "comm/comm_log_file.h"
#include "comm/expected_log.h"
#include "comm/read_within.h"
#include "comm/scripted_socket.h"
#include "loopback_server.h"

namespace marbex::comm {
namespace {

using marbex::tests::LoopbackPeer;
using marbex::tests::LoopbackServer;
using platform::TcpStatus;
using platform::TcpTransfer;

class EthernetPrinterPort : public testing::Test {
protected:
    EthernetPrinterPort()
    {
        port.SetPortType(kEthernet);
        port.SetIpAddress("127.0.0.1");
        port.SetTcpPort(server.Port());
        port.SetTimeouts(10000, 10000);
    }

    void Open()
    {
        ASSERT_EQ(port.Open(), 0);
        peer = server.Accept();
    }

    static const uint8_t* Bytes(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }
    std::string LogPath() const { return folder.File("COposComm1.log"); }

    tests::TemporaryFolder folder;
    tests::SocketScript script;
    LoopbackServer server;
    LoopbackPeer peer;
    PortTable table{{.newTcpSocket = [this] { return std::make_unique<tests::ScriptedSocket>(script); }}};
    CPrinterPort port{table};
};

TEST_F(EthernetPrinterPort, AnswersMinusOneUntilItIsOpen)
{
    uint8_t byte = 0;
    uint16_t length = 1;
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(port.Write(&byte, 1), -1);
    EXPECT_EQ(port.WriteByte(0), -1);
    EXPECT_EQ(port.WriteText("x"), -1);
    EXPECT_EQ(port.ReadByte(&byte), -1);
    EXPECT_EQ(port.Read(&byte, &length), -1);
    EXPECT_EQ(port.WriteSecondary(&byte, 1), -1);
    EXPECT_EQ(port.CleanBoth(), 0);
    port.DiscardInput();
    EXPECT_EQ(port.CleanInput(), 0);
    EXPECT_EQ(port.CleanOutput(), 0);
    EXPECT_EQ(port.CleanBothAgain(), 0);
    EXPECT_EQ(port.Close(), -1);
    Open();
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(port.Open(), -1);
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(port.WriteSecondary(&byte, 1), 1);
    EXPECT_EQ(port.Close(), 0);
    EXPECT_EQ(port.Close(), -1);
}

// A 16-bit length would send only the remainder of 65536.
TEST_F(EthernetPrinterPort, LongDataGoesOutWholeInPieces)
{
    Open();
    std::string data(65536 + 1234, '\0');
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i % 251);
    auto printer = std::async(std::launch::async, [&] { return peer.Read(data.size()); });
    EXPECT_EQ(port.Write(Bytes(data), data.size()), 0);
    EXPECT_TRUE(printer.get() == data);
    EXPECT_EQ(script.sends, 32 + 32 + 2);

    // The first piece that fails is the last one tried.
    script.sends = 0;
    script.send = [](int call) {
        return call == 33 ? std::optional(TcpTransfer{TcpStatus::kFailed, 0}) : std::nullopt;
    };
    auto rest = std::async(std::launch::async, [&] { return peer.Read(32768); });
    EXPECT_EQ(port.Write(Bytes(data), data.size()), 1);
    EXPECT_EQ(rest.get(), data.substr(0, 32768));
    EXPECT_EQ(script.sends, 33);
}

TEST_F(EthernetPrinterPort, ReadsWithATimeLimitOfItsOwn)
{
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)");
    Open();
    tests::CheckReadsWithin(port, [this](std::string_view bytes) { peer.Send(bytes); });
    peer.Finish();
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)");
}

// Who wants to know whether one connection carried a job, and the answer behind it, counts the openings.
TEST_F(EthernetPrinterPort, CountsItsOpenings)
{
    EXPECT_EQ(port.Openings(), 0U);
    Open();
    EXPECT_EQ(port.WriteText("a"), 0);
    EXPECT_EQ(port.Openings(), 1U);
    peer.Reset();
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)") << "the new connection knows nothing of the question";
    EXPECT_EQ(port.Openings(), 2U);
    peer = server.Accept();
    script.send = [&](int call) {
        return call == 2 ? std::optional(TcpTransfer{TcpStatus::kAborted, 0}) : std::nullopt;
    };
    EXPECT_EQ(port.WriteText("b"), 0);
    EXPECT_EQ(port.Openings(), 3U);
    port.Close();
    EXPECT_EQ(port.Openings(), 3U);
    server.Stop();
    EXPECT_EQ(port.Open(), -1);
    EXPECT_EQ(port.Openings(), 3U);
    EXPECT_EQ(port.BaudRate(), 0U);
}

// The transport calls a short send a success. A receipt with a hole in it is none.
TEST_F(EthernetPrinterPort, ShortSendIsAFailedWrite)
{
    Open();
    script.send = [](int) { return std::optional(TcpTransfer{TcpStatus::kOk, 3}); };
    EXPECT_EQ(port.WriteText("receipt"), 1);
    EXPECT_EQ(port.WriteText("abc"), 0);
}

TEST_F(EthernetPrinterPort, WhatCannotBeOpenedFailsAndMayBeOpenedLater)
{
    const auto fails = [&] { return port.Open() == -1 && !port.IsOpen(); };
    port.SetIpAddress("127.0.0.300");
    EXPECT_TRUE(fails());
    port.SetIpAddress("127.0.0.1");
    port.SetTimeouts(0, 1000);
    EXPECT_TRUE(fails());
    port.SetTimeouts(10000, 10000);
    script.connect = [](int) { return std::optional(false); };
    EXPECT_TRUE(fails());
    port.SetPortType(3);
    EXPECT_TRUE(fails());  // an unknown kind of port does not even get an id
    port.SetPortType(kEthernet);
    script.connect = [](int) { return std::nullopt; };
    Open();
    EXPECT_NE(table.Find(4), nullptr);
}

// A till that opens and closes for years must not grow. Who else writes to a log that another port left is as it was.
TEST_F(EthernetPrinterPort, RecordsAreGoneWithTheirConnections)
{
    CPrinterPort other(table);
    other.SetPortType(kEthernet);
    other.SetIpAddress("127.0.0.1");
    other.SetTcpPort(server.Port());
    other.SetLog(1, 0, folder.Path(), 2);
    Open();
    ASSERT_EQ(other.Open(), 0);
    std::weak_ptr<PortRecord> record = table.Find(2);
    other.Close();
    EXPECT_EQ(table.Find(2), nullptr);
    EXPECT_EQ(table.SetCommunicationPort(2), 4U);
    EXPECT_FALSE(record.expired()) << "it is the current one";
    EXPECT_EQ(port.WriteText("x"), 0);
    EXPECT_TRUE(record.expired());
    EXPECT_EQ(tests::ReadLogLines(folder.File("COposComm2.log")).back(),
              "SetCommunicationPort -  Communication ID will be setted to 1 ");

    record = table.Find(1);
    const std::shared_ptr<PortRecord> inUse = table.Find(1);
    port.Close();
    script.connect = [](int) { return std::optional(false); };
    EXPECT_EQ(port.Open(), -1);
    EXPECT_EQ(table.Find(3), nullptr);
    EXPECT_EQ(inUse->Close(), 206U) << "a call under way still has it";
}

TEST_F(EthernetPrinterPort, ShortExchangeInTheLog)
{
    port.SetLog(1, 0, folder.Path(), 1);
    Open();
    port.CleanBoth();
    EXPECT_EQ(port.WriteText("A\n"), 0);
    peer.Send("\x12");
    uint8_t byte = 0;
    EXPECT_EQ(port.ReadByte(&byte), 1);
    EXPECT_EQ(port.Close(), 0);
    EXPECT_EQ(tests::ReadLog(LogPath()), tests::ExpectedLog("Ethernet"));
}

TEST_F(EthernetPrinterPort, ProfileChoosesWhatIsLoggedAndWhere)
{
    struct Row {
        uint32_t level, selector;
        bool file, dump;
    };
    for (const Row& row : {Row{0, 0, false, false}, Row{1, 0, true, false}, Row{2, 0, true, false},
                           Row{3, 0, true, true}, Row{9, 0, true, true}, Row{3, 2, false, false}}) {
        std::filesystem::remove(LogPath());
        port.SetLog(row.level, row.selector, folder.Path() + "/", 1);
        Open();
        EXPECT_EQ(port.WriteByte(0x41), 0);
        EXPECT_EQ(port.Close(), 0);
        EXPECT_EQ(std::filesystem::exists(LogPath()), row.file) << row.level << row.selector;
        const bool dumped =
            tests::ReadLog(LogPath()).find("CNuComEth::WriteTCP -  SendBuffer[0x00]=0x41 \n") != std::string::npos;
        EXPECT_EQ(dumped, row.dump) << row.level << row.selector;
    }
}

}  // namespace
}  // namespace marbex::comm
