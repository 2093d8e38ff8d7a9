#pragma once

#include <string>
#include <vector>

namespace marbex::platform {

// A USB printer that the kernel has.
struct KernelUsbPrinter {
    std::string name;      // lp0
    std::string node;      // /dev/usb/lp0
    std::string instance;  // the interface: 1-1.2:1.0
    std::string vendor;    // four hex digits
    std::string device;    // four hex digits
    std::string product;   // may be empty; without backslashes
};

// Those below a class folder (/sys/class/usbmisc), in the order of their numbers, with their nodes in deviceFolder.
std::vector<KernelUsbPrinter> FindKernelUsbPrinters(const std::string& classFolder, const std::string& deviceFolder);

}  // namespace marbex::platform
