#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace marbex::platform {

// Writes all bytes, with one system call unless the kernel takes fewer; false when it failed (errno tells).
inline bool WriteAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(fd, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace marbex::platform
