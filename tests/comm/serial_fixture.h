#pragma once

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "comm/scripted_serial.h"
#include "comm/serial_transport.h"
#include "comm/test_clock.h"
#include "comm/transport_log.h"

namespace marbex::comm {

// A transport, its log (mask 13), and a machine with one serial port.
class SerialTransport : public testing::Test {
protected:
    uint32_t Init(uint32_t flowControl = 0) { return transport.InitPort("COM1", 9600, 0, 8, 0, flowControl); }

    void Open(uint32_t flowControl = 0)
    {
        ASSERT_EQ(Init(flowControl), 0U);
        ASSERT_EQ(transport.OpenSerial(), 0U);
        log.Forget();
    }

    uint32_t Write(std::string_view text)
    {
        return transport.WriteSerial(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    }

    uint32_t Read(uint32_t room = 16)
    {
        buffer.assign(room, 0);
        return transport.ReadSerial(buffer.data(), room, &count);
    }

    tests::TransportLog log;
    tests::ScriptedSerial serial;
    tests::TestClock clock;
    platform::StopSignal stop;
    CNuComSerial transport{log.log, serial, clock, stop};
    std::vector<uint8_t> buffer;
    uint32_t count = 0;
};

}  // namespace marbex::comm
