// What a window of the system meets that a queue of our own does not: its class, messages that nobody posted through
// it, other people's loops and windows, and the quit message.

#include "platform/window.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>
#include <thread>

#include "platform/kernel.h"
#include "platform/window_recorder.h"
#include "platform/windows/module.h"
#include "platform/windows/window_state.h"

namespace marbex::platform {
namespace {

constexpr uint32_t kLimit = 30000;
constexpr uint32_t kMessage = kFirstApplicationMessage + 1;
constexpr const char* kClass = "Recorder";  // Recorder::Create makes it, and windows of that title

using Words = std::vector<uintptr_t>;

bool ClassIsThere()
{
    WNDCLASSA info;
    return GetClassInfoA(ThisModule(), kClass, &info) != FALSE;
}

// The first one of this process; other tests may be running in processes of their own.
HWND NativeWindow()
{
    HWND found = nullptr;
    while ((found = FindWindowExA(nullptr, found, kClass, kClass)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(found, &owner);
        if (owner == GetCurrentProcessId()) break;
    }
    return found;
}

TEST(WindowClass, ComesWithTheFirstWindowAndGoesWithTheLast)
{
    for (int i = 0; i < 2; ++i) {
        Recorder one;
        Recorder other;
        EXPECT_FALSE(ClassIsThere());
        auto first = one.Create();
        auto second = other.Create();
        ASSERT_TRUE(first && second);
        EXPECT_TRUE(ClassIsThere());
        first.reset();
        EXPECT_TRUE(ClassIsThere());
        second.reset();
        EXPECT_FALSE(ClassIsThere()) << "round " << i;
    }
    Recorder refusing;
    refusing.refuses = true;
    EXPECT_EQ(refusing.Create(), nullptr);
    EXPECT_FALSE(ClassIsThere());
}

// The window may still be busy with its last message when the class is given up; the next one takes over.
TEST(WindowClass, ServesAgainAfterAWindowThatEndedInItsOwnMessage)
{
    Recorder recorder;
    auto window = recorder.Create();
    recorder.onMessage = [&](uintptr_t) { window.reset(); };
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
    {
        Recorder next;
        const auto again = next.Create();
        ASSERT_TRUE(again);
        EXPECT_TRUE(again->Post(kMessage, 2, 0));
        EXPECT_EQ(RunWaitingMessages(), 1U);
        EXPECT_EQ(next.words, Words{2});
    }
    EXPECT_FALSE(ClassIsThere());
}

TEST(NativeWindow, IsHiddenAndHasTheStyleOfADeliveryWindow)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const HWND native = NativeWindow();
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(native, GWL_STYLE)), 0x86000000U);
    EXPECT_FALSE(IsWindowVisible(native));
    EXPECT_EQ(GetParent(native), nullptr);
}

TEST(NativeWindow, IsNotClosedByStrangers)
{
    Recorder recorder;
    const auto window = recorder.Create();
    EXPECT_EQ(SendMessageA(NativeWindow(), WM_CLOSE, 0, 0), 0);
    EXPECT_FALSE(recorder.destroyed);
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
}

TEST(NativeWindow, TellsOfItsDestructionOnceWhoeverDestroysIt)
{
    Recorder recorder;
    auto window = recorder.Create();
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    ASSERT_TRUE(DestroyWindow(NativeWindow()));
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_FALSE(window->Post(kMessage, 2, 0));
    Words words;
    window->Withdraw(0, 0xFFFFFFFF, [&](uintptr_t word) { words.push_back(word); });
    EXPECT_TRUE(words.empty()) << "they went with it";
    EXPECT_EQ(RunWaitingMessages(), 0U);
    window.reset();
    EXPECT_FALSE(ClassIsThere());
}

TEST(NativeWindow, KeepsExceptionsToItself)
{
    struct Throwing : Recorder {
        int OnCreate() override
        {
            if (throwsAtOnce) throw std::runtime_error("thrown");
            return Recorder::OnCreate();
        }
        void OnDestroy() override
        {
            Recorder::OnDestroy();
            throw std::runtime_error("thrown");
        }
        bool throwsAtOnce = true;
    } recorder;
    EXPECT_EQ(recorder.Create(), nullptr);
    EXPECT_FALSE(recorder.destroyed);

    recorder.throwsAtOnce = false;
    auto window = recorder.Create();
    recorder.onMessage = [](uintptr_t) { throw std::runtime_error("thrown"); };
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
    window.reset();
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_FALSE(ClassIsThere());
}

TEST(SentMessages, AreAnsweredByAWaitAndDoNotEndIt)
{
    struct Answering : Recorder {
        intptr_t WindowProc(uint32_t message, uintptr_t wParam, intptr_t lParam,
                            const std::function<intptr_t()>& defaultProcedure) override
        {
            const intptr_t result = Recorder::WindowProc(message, wParam, lParam, defaultProcedure);
            return message == kMessage ? static_cast<intptr_t>(wParam) + lParam : result;
        }
    } recorder;
    const auto window = recorder.Create();
    const HWND native = NativeWindow();
    const auto answered = Event::Create("", ResetMode::kManual, false);
    LRESULT answer = 0;
    const auto sender = Thread::Start([&] {
        answer = SendMessageA(native, kMessage, 40, 2);
        answered->Set();
    });
    WaitObject* const objects[] = {answered.get()};
    EXPECT_EQ(WaitForAnyOrMessages(objects, kLimit).status, WaitStatus::kSignalled);
    EXPECT_EQ(answer, 42);
    EXPECT_EQ(recorder.words, Words{40});
}

// Its handler signals the object: the object goes first, although a posted message waits as well.
TEST(SentMessages, MaySignalWhatIsWaitedFor)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const HWND native = NativeWindow();
    const auto event = Event::Create("", ResetMode::kAuto, false);
    recorder.onMessage = [&](uintptr_t word) {
        if (word == 1) event->Set();
    };
    const auto sent = Event::Create("", ResetMode::kManual, false);
    const auto sender = Thread::Start([&] {
        EXPECT_TRUE(window->Post(kMessage, 2, 0));
        EXPECT_TRUE(SendNotifyMessageA(native, kMessage, 1, 0));
        sent->Set();
    });
    ASSERT_TRUE(WaitForOne(*sent, kLimit).Obtained());
    WaitObject* const objects[] = {event.get()};
    EXPECT_EQ(WaitForAnyOrMessages(objects, kLimit).status, WaitStatus::kSignalled);
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_EQ(recorder.words, (Words{1, 2}));
}

// Processor time of the calling thread, in milliseconds.
uint64_t ProcessorTime()
{
    FILETIME created, ended, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    const auto units = [](const FILETIME& time) {
        return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    };
    return (units(kernel) + units(user)) / 10000;
}

// Takes the quit message that must be there; what it carries.
WPARAM TakeQuit()
{
    MSG message{};
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    const WPARAM exitCode = message.wParam;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "there were two";
    return exitCode;
}

TEST(QuitMessage, NeitherEndsAWaitNorKeepsItAwakeNorIsLost)
{
    Recorder recorder;
    const auto window = recorder.Create();
    PostQuitMessage(7);
    EXPECT_FALSE(RunOneMessage());
    EXPECT_EQ(RunWaitingMessages(), 0U);

    const uint64_t before = ProcessorTime();
    EXPECT_EQ(WaitForAnyOrMessages({}, 400).status, WaitStatus::kTimedOut);
    EXPECT_LT(ProcessorTime() - before, 200U) << "it spins";

    const auto never = Event::Create("", ResetMode::kAuto, false);
    const auto event = Event::Create("", ResetMode::kAuto, false);
    recorder.onMessage = [&](uintptr_t) { event->Set(); };
    const auto poster = Thread::Start([&] { EXPECT_TRUE(window->Post(kMessage, 1, 0)); });
    EXPECT_EQ(WaitForOneRunningMessages(*event, kLimit).status, WaitStatus::kSignalled);
    EXPECT_EQ(recorder.words, Words{1});
    EXPECT_EQ(TakeQuit(), 7U);
}

// Posted like any other message, it stands in the queue before others.
TEST(QuitMessage, DoesNotHoldUpWhatStandsBehindIt)
{
    Recorder recorder;
    const auto window = recorder.Create();
    EXPECT_TRUE(PostThreadMessageA(GetCurrentThreadId(), WM_QUIT, 9, 0));
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_EQ(WaitForAnyOrMessages({}, 0).status, WaitStatus::kMessages);
    EXPECT_TRUE(RunOneMessage());
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_EQ(recorder.words, (Words{1, 2}));
    EXPECT_EQ(TakeQuit(), 9U);
}

TEST(NativeWithdraw, StopsAMessageThatAnotherLoopHasFetched)
{
    Recorder recorder;
    const auto window = recorder.Create();
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    MSG fetched;
    ASSERT_TRUE(PeekMessageA(&fetched, nullptr, 0, 0, PM_REMOVE));
    Words words;
    window->Withdraw(kMessage, kMessage, [&](uintptr_t word) { words.push_back(word); });
    EXPECT_EQ(words, (Words{1, 2}));
    DispatchMessageA(&fetched);
    EXPECT_TRUE(recorder.words.empty());

    // One that is the same in everything but was posted after that is another.
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_EQ(recorder.words, Words{2});
}

TEST(NativeWithdraw, LeavesWhatStrangersPosted)
{
    Recorder recorder;
    const auto window = recorder.Create();
    EXPECT_TRUE(PostMessageA(NativeWindow(), kMessage, 1, 0));
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_TRUE(PostMessageA(NativeWindow(), kMessage, 3, 0));
    PostQuitMessage(5);
    Words words;
    window->Withdraw(0, 0xFFFFFFFF, [&](uintptr_t word) { words.push_back(word); });
    EXPECT_EQ(words, Words{2});
    EXPECT_EQ(RunWaitingMessages(), 2U);
    EXPECT_EQ(recorder.words, (Words{1, 3}));
    EXPECT_EQ(TakeQuit(), 5U);
}

std::vector<WPARAM> characters;

LRESULT CALLBACK TakeCharacters(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CHAR) characters.push_back(wParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

// The application's own windows are served by our waits, too.
TEST(RunMessages, CharactersOfUnicodeWindowsArriveWhole)
{
    characters.clear();
    WNDCLASSW windowClass{};
    windowClass.lpszClassName = L"MarbexTestUnicode";
    windowClass.hInstance = ThisModule();
    windowClass.lpfnWndProc = TakeCharacters;
    ASSERT_NE(RegisterClassW(&windowClass), 0);
    const HWND window = CreateWindowExW(0, windowClass.lpszClassName, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                        ThisModule(), nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(PostMessageW(window, WM_CHAR, 0x4E2D, 1));
    EXPECT_EQ(WaitForAnyOrMessages({}, kLimit).status, WaitStatus::kMessages);
    while (RunOneMessage()) {
    }
    EXPECT_EQ(characters, std::vector<WPARAM>{0x4E2D});
    DestroyWindow(window);
    UnregisterClassW(windowClass.lpszClassName, ThisModule());
}

// A window given up by another thread while its queue has no room for the message that destroys it.
TEST(FullQueue, DoesNotKeepAWindowAlive)
{
    constexpr int kTooMany = 20000;
    Recorder recorder;
    auto window = recorder.Create();
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    int posted = 0;
    while (posted < kTooMany && PostThreadMessageA(GetCurrentThreadId(), kMessage, 0, 0))
        ++posted;
    std::thread([&] { window.reset(); }).join();
    EXPECT_FALSE(recorder.destroyed);
    MSG message;
    for (int i = 0; i < posted; ++i)
        ASSERT_TRUE(PeekMessageA(&message, reinterpret_cast<HWND>(-1), kMessage, kMessage, PM_REMOVE));
    while (!recorder.destroyed) {
        ASSERT_EQ(WaitForAnyOrMessages({}, kLimit).status, WaitStatus::kMessages);
        EXPECT_TRUE(RunOneMessage());
    }
    EXPECT_EQ(recorder.words, Words{1});
    if (posted == kTooMany) GTEST_SKIP() << "this system's queues are never full";
}

// The same way to the end, where queues are never full: the message that destroys the window is thrown away.
TEST(FullQueue, IsGoneRoundByATimer)
{
    Recorder recorder;
    auto window = recorder.Create();
    const HWND native = NativeWindow();
    EXPECT_TRUE(SendMessageA(native, kDestroyWhenIdleMessage, 0, 0) == 0);
    EXPECT_EQ(WaitForAnyOrMessages({}, 30).status, WaitStatus::kTimedOut) << "heeded although nobody gave it up";

    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    std::thread([&] { window.reset(); }).join();
    MSG thrownAway;
    ASSERT_TRUE(PeekMessageA(&thrownAway, native, kDestroyMessage, kDestroyMessage, PM_REMOVE));
    SendMessageA(native, kDestroyWhenIdleMessage, 0, 0);
    EXPECT_FALSE(recorder.destroyed);
    while (!recorder.destroyed) {
        ASSERT_EQ(WaitForAnyOrMessages({}, kLimit).status, WaitStatus::kMessages);
        EXPECT_TRUE(RunOneMessage());
    }
    EXPECT_EQ(recorder.words, Words{1});
    EXPECT_FALSE(IsWindow(native));
}

}  // namespace
}  // namespace marbex::platform
