#include <gtest/gtest.h>
#include <marbex/message_pump.h>
#include <poll.h>

#include <chrono>
#include <thread>

#include "platform/kernel.h"
#include "platform/window_recorder.h"

namespace marbex::platform {
namespace {

constexpr uint32_t kMessage = kFirstApplicationMessage + 1;

bool Readable(int descriptor)
{
    pollfd asked{descriptor, POLLIN, 0};
    return poll(&asked, 1, 0) == 1;
}

TEST(MessageDescriptor, IsReadableExactlyWhileMessagesWait)
{
    Recorder recorder;
    auto window = recorder.Create();
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    const int descriptor = MarbexMessageDescriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(MarbexMessageDescriptor(), descriptor);
    EXPECT_TRUE(Readable(descriptor)) << "asked for when a message waited already";

    recorder.onMessage = [&](uintptr_t word) { EXPECT_EQ(Readable(descriptor), word != 2); };
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_EQ(RunWaitingMessages(), 2U);
    EXPECT_FALSE(Readable(descriptor));

    std::thread([&] { EXPECT_TRUE(window->Post(kMessage, 3, 0)); }).join();
    EXPECT_TRUE(Readable(descriptor));
    window->Withdraw(0, 0xFFFFFFFF, [](uintptr_t) {});
    EXPECT_FALSE(Readable(descriptor));

    EXPECT_TRUE(window->Post(kMessage, 4, 0));
    window.reset();
    EXPECT_FALSE(Readable(descriptor)) << "the messages went with the window";

    int elsewhere = -1;
    std::thread([&] { elsewhere = MarbexMessageDescriptor(); }).join();
    EXPECT_NE(elsewhere, descriptor);
}

TEST(RunMessages, WaitsAsLongAsItIsTold)
{
    Recorder recorder;
    const auto window = recorder.Create();
    EXPECT_EQ(MarbexRunMessages(0), 0);
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(MarbexRunMessages(0), 1);
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_EQ(MarbexRunMessages(-1), 1) << "what waits is enough";

    const auto poster = Thread::Start([&] { EXPECT_TRUE(window->Post(kMessage, 3, 0)); });
    EXPECT_EQ(MarbexRunMessages(-1), 1);

    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(window->Post(kMessage, 4, 0));
    recorder.onMessage = [&](uintptr_t word) {
        if (word < 6) {
            EXPECT_TRUE(window->Post(kMessage, word + 1, 0));
        }
    };
    EXPECT_EQ(MarbexRunMessages(30), 3);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

}  // namespace
}  // namespace marbex::platform
