#pragma once

#include <unistd.h>

#include <utility>

namespace marbex::platform {

// Owns a file descriptor.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd() { Reset(); }
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        if (this != &other) {
            Reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    int Get() const { return fd_; }
    int Release() { return std::exchange(fd_, -1); }  // to a new owner
    explicit operator bool() const { return fd_ >= 0; }
    void Reset()
    {
        if (fd_ >= 0) close(std::exchange(fd_, -1));
    }

private:
    int fd_ = -1;
};

}  // namespace marbex::platform
