#pragma once

// The message queue of the calling thread.

#include <windows.h>

namespace marbex::platform {

// Keeps quit messages aside and puts the last of them back at its end, for the application's own loop.
class QuitAside {
public:
    QuitAside() = default;
    ~QuitAside() { PutBack(); }
    QuitAside(const QuitAside&) = delete;
    QuitAside& operator=(const QuitAside&) = delete;

    void Keep(WPARAM exitCode)
    {
        kept_ = true;
        exitCode_ = static_cast<int>(exitCode);
    }
    void PutBack()
    {
        if (kept_) PostQuitMessage(exitCode_);
        kept_ = false;
    }

private:
    bool kept_ = false;
    int exitCode_ = 0;
};

// Whether a message other than a quit message waits, which stays in the queue. Runs messages that other threads have
// sent.
bool MessageWaits(QuitAside& quit);

}  // namespace marbex::platform
