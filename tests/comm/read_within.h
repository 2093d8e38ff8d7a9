#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include "comm/printer_port.h"

namespace marbex::tests {

using Milliseconds = std::chrono::milliseconds;

inline Milliseconds TimeOf(const std::function<void()>& action)
{
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
}

// What a read with a time limit brings: the bytes, "(nothing)" or "(failed)".
inline std::string ReadWithin(comm::CPrinterPort& port, uint32_t milliseconds, std::size_t most = 16)
{
    std::array<uint8_t, 16> room{};
    std::size_t count = 99;
    const comm::LinkRead result = port.ReadWithin(std::span(room).first(most), milliseconds, count);
    if (result == comm::LinkRead::kArrived) return std::string(room.begin(), room.begin() + count);
    EXPECT_EQ(count, 0U);
    return result == comm::LinkRead::kNothing ? "(nothing)" : "(failed)";
}

// An open port whose own receive time-out is ten seconds, and whose printer sends only what send is told to.
inline void CheckReadsWithin(comm::CPrinterPort& port, const std::function<void(std::string_view)>& send)
{
    EXPECT_GE(TimeOf([&] { EXPECT_EQ(ReadWithin(port, 60), "(nothing)"); }), Milliseconds(55));
    send("abc");
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(ReadWithin(port, 60000), "abc"); }), Milliseconds(5000));
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(ReadWithin(port, 0), "(nothing)"); }), Milliseconds(5000));
    // A device that closes wants no answer any more, whether the read has begun or not.
    const Milliseconds stopped = TimeOf([&] {
        const std::jthread closer([&] { port.RequestStop(true); });
        EXPECT_EQ(ReadWithin(port, 60000), "(nothing)");
    });
    EXPECT_LT(stopped, Milliseconds(5000));
    EXPECT_EQ(ReadWithin(port, 60000), "(nothing)");
    port.RequestStop(false);
    EXPECT_EQ(port.Openings(), 1U);

    send("stale");
    EXPECT_EQ(ReadWithin(port, 60000, 1), "s") << "the others have arrived with it";
    port.DiscardInput();
    send("new");
    EXPECT_EQ(ReadWithin(port, 60000), "new");
}

}  // namespace marbex::tests
