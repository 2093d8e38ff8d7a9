#include "virtual_printer/posix/endpoints.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace marbex::virtual_printer {
namespace {

constexpr int kBacklog = 8;

[[noreturn]] void Fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

void Listen(const Descriptor& socket, const sockaddr* address, socklen_t length, const std::string& what)
{
    if (::bind(socket.Get(), address, length) != 0 || ::listen(socket.Get(), kBacklog) != 0) {
        Fail("listen on " + what);
    }
}

}  // namespace

Descriptor ListenTcp(const std::string& host, uint16_t& port, int receiveBuffer)
{
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.Open()) {
        Fail("socket");
    }
    const int on = 1;
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    if (receiveBuffer > 0) {
        ::setsockopt(socket.Get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::inet_pton(AF_INET, host.c_str(), &address.sin_addr) != 1) {
        throw std::system_error(EINVAL, std::generic_category(), "address " + host);
    }
    Listen(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address), host + ":" + std::to_string(port));
    socklen_t length = sizeof(address);
    if (::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        Fail("getsockname");
    }
    port = ntohs(address.sin_port);
    return socket;
}

Descriptor ListenUnix(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        throw std::system_error(ENAMETOOLONG, std::generic_category(), "socket path " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.Open()) {
        Fail("socket");
    }
    struct stat old {};
    if (::lstat(path.c_str(), &old) == 0 && S_ISSOCK(old.st_mode)) {
        ::unlink(path.c_str());
    }
    Listen(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address), path);
    return socket;
}

PseudoTerminal OpenPseudoTerminal(bool keepOpen)
{
    PseudoTerminal terminal;
    terminal.master = Descriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!terminal.master.Open() || ::grantpt(terminal.master.Get()) != 0 || ::unlockpt(terminal.master.Get()) != 0) {
        Fail("pseudo-terminal");
    }
    std::array<char, 128> name{};
    if (::ptsname_r(terminal.master.Get(), name.data(), name.size()) != 0) {
        Fail("ptsname");
    }
    terminal.path = name.data();
    terminal.keptOpen = Descriptor(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios settings{};
    if (!terminal.keptOpen.Open() || ::tcgetattr(terminal.keptOpen.Get(), &settings) != 0) {
        Fail("open " + terminal.path);
    }
    ::cfmakeraw(&settings);
    if (::tcsetattr(terminal.keptOpen.Get(), TCSANOW, &settings) != 0) {
        Fail("tcsetattr " + terminal.path);
    }
    if (!keepOpen) {
        terminal.keptOpen.Close();
    }
    return terminal;
}

void LeadLinkTo(const std::string& target, const std::string& link)
{
    const std::string made = link + ".new";
    ::unlink(made.c_str());
    if (::symlink(target.c_str(), made.c_str()) != 0 || ::rename(made.c_str(), link.c_str()) != 0) {
        Fail("link " + link);
    }
}

void ResetOnClose(const Descriptor& connection)
{
    const linger now{1, 0};
    ::setsockopt(connection.Get(), SOL_SOCKET, SO_LINGER, &now, sizeof(now));
}

}  // namespace marbex::virtual_printer
