#include "support/kernel_names.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace marbex::support {
namespace {

using platform::Event;
using platform::Mutex;
using platform::ResetMode;
using platform::Semaphore;
using platform::WaitForOne;

TEST(KernelNames, StrangersOfTheSameNameShareNothing)
{
    int owner = 0;
    char name[64];
    std::snprintf(name, sizeof name, "SClaim_%08X", static_cast<unsigned>(reinterpret_cast<uintptr_t>(&owner)));
    bool existed = true;
    {
        const auto first = CreateOwnedSemaphore("Claim", &owner, 1, 1);
        ASSERT_NE(first, nullptr);
        const auto byName = Semaphore::Create(name, 1, 1, &existed);
        EXPECT_TRUE(existed) << name;
        EXPECT_TRUE(WaitForOne(*byName, 0).Obtained());
        EXPECT_FALSE(WaitForOne(*first, 0).Obtained());
        const auto twin = CreateOwnedSemaphore("Claim", &owner, 1, 1);
        EXPECT_TRUE(WaitForOne(*twin, 0).Obtained()) << "an address twin has a unit of its own";
    }
    const auto later = Semaphore::Create(name, 1, 1, &existed);
    EXPECT_FALSE(existed) << "a closed object's name is free";

    // A name that another kind of object has is a stranger's, too.
    std::snprintf(name, sizeof name, "EQueue_%08X", static_cast<unsigned>(reinterpret_cast<uintptr_t>(&owner)));
    const auto mutex = Mutex::Create(name);
    const auto event = CreateOwnedEvent("Queue", &owner, ResetMode::kManual, true);
    ASSERT_NE(event, nullptr);
    EXPECT_TRUE(WaitForOne(*event, 0).Obtained());
    EXPECT_NE(CreateOwnedMutex("Queue", &owner), nullptr);
}

}  // namespace
}  // namespace marbex::support
