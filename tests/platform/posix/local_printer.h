#pragma once

// The printer's end of a USB cable: a stream socket in the file system.

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include "loopback_server.h"

namespace marbex::tests {

class LocalPrinter {
public:
    explicit LocalPrinter(std::string path) : path_(std::move(path)) { PlugIn(); }
    LocalPrinter(const LocalPrinter&) = delete;
    LocalPrinter& operator=(const LocalPrinter&) = delete;
    ~LocalPrinter() { Unplug(); }

    const std::string& Path() const { return path_; }

    LoopbackPeer Accept() const
    {
        const int accepted = accept(listener_, nullptr, nullptr);
        if (accepted < 0) throw std::runtime_error("nobody opened the printer");
        return LoopbackPeer(accepted);
    }

    bool HasCaller() const
    {
        pollfd item{listener_, POLLIN, 0};
        return poll(&item, 1, 0) > 0;
    }

    // No more opening, as if the cable were out; connections end with their peers.
    void Unplug()
    {
        if (listener_ < 0) return;
        close(std::exchange(listener_, -1));
        unlink(path_.c_str());
    }

    void PlugIn()
    {
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const timeval limit{10, 0};
        setsockopt(listener_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
        if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(listener_, 8) != 0)
            throw std::runtime_error("no local printer");
    }

private:
    std::string path_;
    int listener_ = -1;
};

// The registry lines of an installed USB printer whose file is node. unit tells several of one vendor apart.
inline std::string UsbPrinterLines(const std::string& node, const std::string& name = "Receipt Printer",
                                   const std::string& vendor = "F055", char unit = '1')
{
    const std::string top = "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\";
    const std::string device = "VID_" + vendor + "&PID_0101";
    const std::string instance = std::string("5&77&0&") + unit;
    const char last = static_cast<char>(unit - '1');
    return top + "Control\\Print\\Printers\\" + name + "\\PnPData]\n" +
           "\"DeviceInstanceId\"=\"USBPRINT\\\\Marbex\\\\" + "6&1a2b3" + static_cast<char>('c' + last) +
           "&0&USB001\"\n" + top + "Enum\\USB\\" + device + "\\" + instance + "]\n\"ParentIdPrefix\"=\"6&1A2B3" +
           static_cast<char>('C' + last) + "&0\"\n" + top +
           "Control\\DeviceClasses\\{28d78fad-5a12-11d1-ae5b-0000f803a8c2}\\##?#USB#" + device + "#" + instance +
           "#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}]\n\"DeviceNode\"=\"" + node + "\"\n";
}

}  // namespace marbex::tests
