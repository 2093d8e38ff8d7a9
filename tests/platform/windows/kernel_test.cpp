#include "platform/kernel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "platform/files.h"
#include "platform/windows/unique_handle.h"

namespace marbex::platform {
namespace {

constexpr uint32_t kLimit = 30000;

TEST(KernelNames, AreThoseOfTheSession)
{
    const std::string name = "EKernelTest_" + std::to_string(GetCurrentProcessId());
    const UniqueHandle elsewhere(CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    ASSERT_TRUE(elsewhere);
    bool existed = false;
    const auto event = Event::Create(name, ResetMode::kAuto, false, &existed);
    ASSERT_NE(event, nullptr);
    EXPECT_TRUE(existed);
    SetEvent(elsewhere.Get());
    EXPECT_TRUE(WaitForOne(*event, 0).Obtained());
}

TEST(KernelThread, MayThrow)
{
    static std::string said;
    said.clear();
    CaptureDebugOutput([](std::string_view text) { said = text; });
    const auto thread = Thread::Start([] { throw std::runtime_error("thrown"); });
    EXPECT_TRUE(WaitForOne(*thread, kLimit).Obtained());
    CaptureDebugOutput(nullptr);
    EXPECT_EQ(said, "A thread ended because of an exception\n");
}

// The system counts in ticks, and may count one too few.
TEST(KernelWait, NeverEndsBeforeItsTime)
{
    using std::chrono::milliseconds;
    using std::chrono::steady_clock;
    const auto never = Event::Create("", ResetMode::kManual, false);
    WaitObject* const objects[] = {never.get()};
    for (int i = 0; i < 20; ++i) {
        const auto start = steady_clock::now();
        EXPECT_EQ(WaitForAny(objects, 3).status, WaitStatus::kTimedOut);
        EXPECT_GE(steady_clock::now() - start, milliseconds(3));
        const auto again = steady_clock::now();
        EXPECT_EQ(WaitForAnyOrMessages(objects, 3).status, WaitStatus::kTimedOut);
        EXPECT_GE(steady_clock::now() - again, milliseconds(3));
    }
}

}  // namespace
}  // namespace marbex::platform
