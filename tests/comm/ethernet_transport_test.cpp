#include "comm/ethernet_transport.h"

#include <cerrno>
#include <future>
#include <optional>

#include "comm/scripted_socket.h"
#include "comm/transport_story.h"
#include "loopback_server.h"

namespace marbex::comm {
namespace {

using platform::TcpStatus;
using platform::TcpTransfer;
using tests::LoopbackPeer;
using tests::LoopbackServer;

const std::map<std::string, TcpStatus> kStatuses{
    {"ok", TcpStatus::kOk}, {"failed", TcpStatus::kFailed}, {"aborted", TcpStatus::kAborted}};

// A printer on the loopback, and a socket that does as the test says.
class EthernetStory : public tests::TransportStory {
protected:
    EthernetStory()
    {
        verbs["init"] = [this](const Words& w) {
            return Code(transport.InitTCPIp(w.empty() ? "" : w[0].c_str(), server->Port()));
        };
        verbs["timeouts"] = [this](const Words& w) {
            return Code(transport.SetTimeoutEth(Number(w[0]), Number(w[1])));
        };
        verbs["packets"] = [this](const Words& w) { return Code(transport.SetPacketEth(Number(w[0]), Number(w[1]))); };
        verbs["open"] = [this](const Words&) { return Code(transport.OpenEth()); };
        verbs["opened"] = [this](const Words&) { return Open(); };
        verbs["close"] = [this](const Words&) { return Code(transport.CloseEth()); };
        // So many bytes of a letter, "1024a", and more of another.
        verbs["write"] = [this](const Words& w) {
            const std::string text = Text(w);
            return Code(
                transport.WriteEth(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size())));
        };
        verbs["read"] = [this](const Words& w) { return Read(Number(w[0])); };
        verbs["moveNothing"] = [this](const Words&) {
            uint32_t count = 9;
            uint8_t byte = 0;
            return tests::Joined(std::vector{transport.WriteEth(nullptr, 5), transport.WriteEth(&byte, 0),
                                             transport.ReadEth(nullptr, 5, &count), transport.ReadEth(&byte, 0, &count),
                                             count});
        };
        verbs["discard"] = [this](const Words&) { return transport.DiscardInput(), ""; };
        // The printer's side.
        verbs["accept"] = [this](const Words&) { return peer = server->Accept(), ""; };
        verbs["gets"] = [this](const Words& w) {
            const std::string text = Text(w);
            EXPECT_EQ(peer.Read(std::max<std::size_t>(text.size(), 1)), text);
            return "";
        };
        verbs["says"] = [this](const Words& w) { return peer.Send(w[0]), ""; };
        verbs["finishes"] = [this](const Words&) { return peer.Finish(), ""; };
        verbs["listens"] = [this](const Words& w) {
            if (w[0] == "off") {
                server->Stop();
            } else {
                server = std::make_unique<LoopbackServer>(server->Port());
            }
            return "";
        };
        // The socket. "ok 24 at 2": only the second from now on; "reset at 2": there the printer resets the connection.
        verbs["sends"] = [this](const Words& w) { return script.send = Transfers(w, script.sends), ""; };
        verbs["receives"] = [this](const Words& w) { return script.receive = Transfers(w, script.receives), ""; };
        verbs["connecting"] = [this](const Words& w) {
            script.connect = [refused = w[0] == "off"](int) { return refused ? std::optional(false) : std::nullopt; };
            return "";
        };
        verbs["making"] = [this](const Words& w) { return script.create = [on = w[0] == "on"] { return on; }, ""; };
        verbs["shutting"] = [this](const Words& w) {
            script.close = [once = w[0] == "once", first = script.closes](int call) {
                return once && call > first + 1;
            };
            return "";
        };
        // "odd": the first of two, and so on.
        verbs["limiting"] = [this](const Words& w) {
            script.setTimeout = [odd = w[0] == "odd"](int call) { return odd && call % 2 == 1; };
            return "";
        };
        verbs["error"] = [this](const Words& w) { return script.lastError = Number(w[0]), ""; };
        verbs["sizes"] = [this](const Words&) { return script.sends = 0, tests::Taken(script.sendSizes); };
        verbs["connects"] = [this](const Words&) { return std::to_string(script.connects); };
        verbs["closes"] = [this](const Words&) { return std::to_string(script.closes); };
        verbs["limits"] = [this](const Words&) {
            return tests::Joined(std::vector{script.connectTimeout, script.sendTimeout, script.receiveTimeout});
        };
        verbs["written"] = [this](const Words&) { return Code(transport.Use().BytesWritten()); };
        verbs["systemError"] = [this](const Words&) { return Code(transport.LastSystemError()); };
    }

    static std::string Code(uint32_t code) { return std::to_string(code); }

    static std::string Text(const Words& words)
    {
        std::string text;
        for (const std::string& word : words)
            text += std::string(Number(word.substr(0, word.size() - 1)), word.back());
        return text;
    }

    std::string Open()
    {
        transport.InitTCPIp("127.0.0.1", server->Port());
        transport.SetTimeoutEth(5000, 5000);
        transport.SetPacketEth(1024, 256);
        const uint32_t result = transport.OpenEth();
        peer = server->Accept();
        Forget();
        return Code(result);
    }

    std::string Read(uint32_t room)
    {
        std::string text(room, '\0');
        uint32_t count = 99;
        const uint32_t result = transport.ReadEth(reinterpret_cast<uint8_t*>(text.data()), room, &count);
        return Code(result) + (count > 0 ? " " : "") + text.substr(0, count);
    }

    std::function<tests::SocketScript::Transfer(int)> Transfers(const Words& words, int done)
    {
        const int only = words.size() > 2 ? std::stoi(words.back()) + done : 0;
        return [=, this](int call) -> tests::SocketScript::Transfer {
            if (words[0] == "really" || (only != 0 && call != only)) return std::nullopt;
            if (words[0] == "reset") peer.Reset();
            const auto status = kStatuses.find(words[0]);
            return TcpTransfer{status == kStatuses.end() ? TcpStatus::kAborted : status->second,
                               words[0] == "ok" ? Number(words[1]) : 0};
        };
    }

    tests::SocketScript script;
    std::unique_ptr<LoopbackServer> server = std::make_unique<LoopbackServer>();
    LoopbackPeer peer;
    CNuComEth transport{log, std::make_unique<tests::ScriptedSocket>(script), clock, stop};
};

const std::string kStories =
#include "comm/stories/ethernet_transport.story"
    ;

TEST_P(EthernetStory, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Transport, EthernetStory, testing::ValuesIn(tests::TextCasesIn(kStories)), tests::StoryName);

class EthernetTransport : public EthernetStory {};

TEST_P(EthernetTransport, AbortedReadGoesOnOnANewConnection)
{
    ASSERT_EQ(Open(), "0");
    auto printer = std::async(std::launch::async, [&] {
        peer.Reset();
        LoopbackPeer second = server->Accept();
        second.Send("R");
        return second;
    });
    EXPECT_EQ(Read(1), "0 R");
    printer.get();
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Transport, EthernetTransport, testing::ValuesIn(tests::TextCasesIn(R"(
== AndSaysSo
| CNuComEth::ReadTCP -  Receive buffer size: 1, packet size setted:256, packet used for read:1\s
| CNuComEth::ReadTCP -  Socket connection aborted for inactivity: try to connect 3 times
| CNuComEth::WriteTCP -  Iteration #1\s
| CNuComEth::OpenEth -  TCP connect successful with 127.0.0.1\s
| CNuComEth::ReadTCP -  Receive buffer size: 1, packet size setted:256, packet used for read:1\s
| CNuComEth::ReadTCP -  1 bytes read:
| CNuComEth::ReadTCP -  ReceiveBuffer[0x00]=0x52\s
)")),
                         tests::StoryName);

}  // namespace
}  // namespace marbex::comm
