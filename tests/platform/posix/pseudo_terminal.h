#pragma once

// The printer's end of a serial cable: a pseudo-terminal whose other end is a port of this machine.

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace marbex::tests {

class PseudoTerminal {
public:
    PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        char name[128];
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, name, sizeof name) != 0)
            throw std::runtime_error("no pseudo-terminal");
        path_ = name;
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() { Unplug(); }

    const std::string& Path() const { return path_; }
    int Master() const { return master_; }

    void Send(std::string_view bytes) const
    {
        if (write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the pseudo-terminal takes nothing");
    }

    // As many bytes as asked; fewer when none come for ten seconds or the port is closed.
    std::string Read(std::size_t count) const
    {
        std::string bytes(count, '\0');
        std::size_t done = 0;
        while (done < count) {
            pollfd item{master_, POLLIN, 0};
            if (poll(&item, 1, 10000) <= 0) break;
            const ssize_t got = read(master_, bytes.data() + done, count - done);
            if (got <= 0) break;
            done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

    bool HasInput() const
    {
        pollfd item{master_, POLLIN, 0};
        return poll(&item, 1, 0) > 0 && (item.revents & POLLIN) != 0;
    }

    // The settings that the port's user made.
    termios Settings() const
    {
        termios settings{};
        tcgetattr(master_, &settings);
        return settings;
    }

    void Unplug()
    {
        if (master_ >= 0) close(std::exchange(master_, -1));
    }

private:
    int master_ = -1;
    std::string path_;
};

}  // namespace marbex::tests
