#pragma once

#include <iconv.h>

#include <cerrno>
#include <cstddef>

namespace marbex::platform {

// Owns an iconv conversion. It never transliterates. Used by one thread at a time.
class IconvHandle {
public:
    IconvHandle(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~IconvHandle()
    {
        if (IsOpen()) iconv_close(handle_);
    }
    IconvHandle(const IconvHandle&) = delete;
    IconvHandle& operator=(const IconvHandle&) = delete;

    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // Converts one character of length bytes into room, from a fresh state; 0 or the errno of iconv. used tells the
    // bytes written, those that the conversion held back for a combining character included.
    int Convert(const void* bytes, std::size_t length, void* room, std::size_t roomSize, std::size_t& used)
    {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(static_cast<const char*>(bytes));
        char* out = static_cast<char*>(room);
        std::size_t left = roomSize;
        errno = 0;
        const std::size_t irreversible = iconv(handle_, &in, &length, &out, &left);
        if (irreversible == static_cast<std::size_t>(-1)) return errno;
        if (irreversible != 0) return EILSEQ;
        if (iconv(handle_, nullptr, nullptr, &out, &left) == static_cast<std::size_t>(-1)) return errno;
        used = roomSize - left;
        return 0;
    }

private:
    iconv_t handle_;
};

}  // namespace marbex::platform
