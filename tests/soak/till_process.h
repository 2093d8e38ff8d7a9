#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace marbex::soak {

// A till, run as a process of its own: lines in, lines out. Killed when it is forgotten.
class TillProcess {
public:
    // Throws std::system_error.
    explicit TillProcess(const std::string& folder);
    ~TillProcess();
    TillProcess(const TillProcess&) = delete;
    TillProcess& operator=(const TillProcess&) = delete;

    void Say(const std::string& line) const;
    // The next line; nothing when the time is over or the process has ended.
    std::optional<std::string> Next(std::chrono::milliseconds limit);
    void Kill() const;  // kill -9
    // Its end: the exit status, or minus the signal. Waits for it.
    int Reap();
    pid_t Id() const { return child_; }

private:
    pid_t child_ = -1;
    int in_ = -1;
    int out_ = -1;
    std::string text_;
};

}  // namespace marbex::soak
