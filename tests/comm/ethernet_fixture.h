#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "comm/ethernet_transport.h"
#include "comm/scripted_socket.h"
#include "comm/test_clock.h"
#include "comm/transport_log.h"
#include "loopback_server.h"

namespace marbex::comm {

// A transport, its log (mask 13), and a printer on the loopback.
class EthernetTransport : public testing::Test {
protected:
    void Open()
    {
        ASSERT_EQ(transport.InitTCPIp("127.0.0.1", server.Port()), 0U);
        ASSERT_EQ(transport.SetTimeoutEth(5000, 5000), 0U);
        ASSERT_EQ(transport.SetPacketEth(1024, 256), 0U);
        ASSERT_EQ(transport.OpenEth(), 0U);
        peer = server.Accept();
        log.Forget();
    }

    uint32_t Write(std::string_view text)
    {
        return transport.WriteEth(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    }

    uint32_t Read(std::string& text, std::size_t room = 64)
    {
        text.assign(room, '\0');
        uint32_t count = 99;
        const uint32_t result =
            transport.ReadEth(reinterpret_cast<uint8_t*>(text.data()), static_cast<uint32_t>(room), &count);
        text.resize(count);
        return result;
    }

    tests::TransportLog log;
    tests::SocketScript script;
    tests::TestClock clock;
    tests::LoopbackServer server;
    tests::LoopbackPeer peer;
    platform::StopSignal stop;
    CNuComEth transport{log.log, std::make_unique<tests::ScriptedSocket>(script), clock, stop};
};

}  // namespace marbex::comm
