#pragma once

#include "platform/window.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

namespace marbex::platform {

// Keeps what comes, and does what a test asks for on the way. What a system tells its windows of its own accord is not
// kept.
class Recorder : public WindowProcedure {
public:
    int OnCreate() override
    {
        owner = std::this_thread::get_id();
        return refuses ? -1 : 0;
    }

    void OnDestroy() override
    {
        EXPECT_FALSE(destroyed);
        destroyed = true;
        destroyedOn = std::this_thread::get_id();
    }

    intptr_t WindowProc(uint32_t message, uintptr_t wParam, intptr_t lParam,
                        const std::function<intptr_t()>& defaultProcedure) override
    {
        EXPECT_EQ(std::this_thread::get_id(), owner);
        EXPECT_FALSE(destroyed);
        if (message < kFirstApplicationMessage) return defaultProcedure();
        messages.push_back(message);
        words.push_back(wParam);
        longs.push_back(lParam);
        if (onMessage) onMessage(wParam);
        return defaultProcedure();
    }

    std::unique_ptr<Window> Create() { return Window::Create("Recorder", "Recorder", *this); }

    bool refuses = false;
    bool destroyed = false;
    std::thread::id owner;
    std::thread::id destroyedOn;
    std::vector<uint32_t> messages;
    std::vector<uintptr_t> words;
    std::vector<intptr_t> longs;
    std::function<void(uintptr_t wParam)> onMessage;
};

}  // namespace marbex::platform
