#pragma once

// A Win32 handle that is closed by its owner. Both values by which Windows says "none" are none here.

#include <windows.h>

#include <utility>

namespace marbex::platform {

class UniqueHandle {
public:
    UniqueHandle() = default;
    explicit UniqueHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept
    {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~UniqueHandle() { Close(); }

    HANDLE Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    // False when there is none, or when the system reports an error; it is given up either way.
    bool Close()
    {
        const HANDLE handle = std::exchange(handle_, nullptr);
        return handle != nullptr && CloseHandle(handle) != FALSE;
    }

private:
    HANDLE handle_ = nullptr;
};

}  // namespace marbex::platform
