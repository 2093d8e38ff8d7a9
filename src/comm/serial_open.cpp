// How a serial port is found, checked and opened.

#include <algorithm>
#include <array>
#include <string_view>

#include "comm/serial_transport.h"

namespace marbex::comm {

using platform::LineControl;
using platform::LineSettings;
using platform::SystemVersion;

namespace {

constexpr const char* kDeviceMapKey = "Hardware\\Devicemap\\Serialcomm\\";
constexpr std::size_t kPortListSize = 1024;
constexpr std::size_t kLongestPortName = 19;

constexpr uint32_t kFlowHardware = 0;
constexpr uint32_t kFlowXonXoff = 1;

// A value that InitPort accepts, and its name in the log.
struct Accepted {
    uint32_t value;
    const char* name;
};

constexpr std::array kBaudRates{Accepted{1200, "1200"},   Accepted{2400, "2400"},    Accepted{4800, "4800"},
                                Accepted{9600, "9600"},   Accepted{19200, "19200"},  Accepted{38400, "38400"},
                                Accepted{57600, "57600"}, Accepted{115200, "115200"}};
constexpr std::array kParities{Accepted{0, "None"}, Accepted{1, "Odd"}, Accepted{2, "Even"}};
constexpr std::array kByteSizes{Accepted{7, "7"}, Accepted{8, "8"}};
constexpr std::array kStopBits{Accepted{0, "1"}, Accepted{2, "2"}};
constexpr std::array kFlowControls{Accepted{0, "Hardware"}, Accepted{1, "Xon/Xoff"}, Accepted{2, "None"}};

const char* NameOf(std::span<const Accepted> accepted, uint32_t value)
{
    const auto found =
        std::find_if(accepted.begin(), accepted.end(), [=](const Accepted& a) { return a.value == value; });
    return found == accepted.end() ? nullptr : found->name;
}

// Codes of the system's version, as the log has always shown them.
constexpr uint32_t kVersion95 = 95;
constexpr uint32_t kVersionMe = 19781;
constexpr uint32_t kVersionNt4 = 5133312;
constexpr uint32_t kVersion2000 = 512000;
constexpr uint32_t kVersionXp = 5787648;
constexpr uint32_t kVersion2003 = 4726784;
constexpr uint32_t kVersionVista = 1010;
constexpr uint32_t kVersion7 = 4790;
constexpr uint32_t kVersionLater = 8298;

uint32_t CodeOfNt(const SystemVersion& version)
{
    if (version.major < 5) return kVersionNt4;
    if (version.major == 5 && version.minor == 0) return kVersion2000;
    if (version.major == 5 && version.minor == 1) return kVersionXp;
    if (version.major == 5 && version.minor == 2) return kVersion2003;
    if (version.major == 6 && version.minor == 0) return kVersionVista;
    if (version.major == 6 && version.minor == 1) return kVersion7;
    return kVersionLater;
}

uint32_t CodeOf9x(const SystemVersion& version)
{
    if (version.major != 4) return 0;
    if (version.minor == 0 || version.minor == 10) return kVersion95;
    return version.minor == 90 ? kVersionMe : 0;
}

bool HasLinks(uint32_t version)
{
    return version != kVersion95 && version != kVersionMe && version != 0;
}

}  // namespace

uint32_t CNuComSerial::InitPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                                uint32_t stopBits, uint32_t flowControl)
{
    const OperationLog log(log_, "CNuComSerial::InitPort - ");
    initialised_ = true;
    log.Start();
    if (open_) return log.Fail(1024, "Init failed: serial device already opened\n");
    if (CheckCom(portName) == 0) {
        initialised_ = false;
        log.Error("Init failed: comm port %s not found\n", portName);
        return 256;
    }
    const uint32_t rejected = InitParameters(log, baudRate, parity, byteSize, stopBits, flowControl);
    if (rejected != 0) {
        initialised_ = false;
        return rejected;
    }
    parametersSet_ = true;
    portName_ = portName;
    return log.End();
}

// Stores and logs what is accepted; returns the sum of what is not.
uint32_t CNuComSerial::InitParameters(const OperationLog& log, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                                      uint32_t stopBits, uint32_t flowControl)
{
    uint32_t rejected = 0;
    if (const char* name = NameOf(kBaudRates, baudRate)) {
        baudRate_ = baudRate;
        OperationLog(log_, "CNuComSerial::InitParameters- ").Progress("BaudRate setted to %s \n", name);
    } else {
        rejected |= log.Fail(1, "BaudRate not setted, wrong parameter\n");
    }
    if (const char* name = NameOf(kParities, parity)) {
        parity_ = parity;
        log.Progress("Parity setted to %s \n", name);
    } else {
        rejected |= log.Fail(2, "Parity not setted, wrong parameter\n");
    }
    if (const char* name = NameOf(kByteSizes, byteSize)) {
        byteSize_ = byteSize;
        log.Progress("Byte Size setted to %s \n", name);
    } else {
        rejected |= log.Fail(4, "Byte Size not setted, wrong parameter\n");
    }
    if (const char* name = NameOf(kStopBits, stopBits)) {
        stopBits_ = stopBits;
        log.Progress("Stop Byte setted to %s \n", name);
    } else {
        rejected |= log.Fail(8, "Stop Byte not setted, wrong parameter\n");
    }
    if (const char* name = NameOf(kFlowControls, flowControl)) {
        flowControl_ = flowControl;
        log.Progress("Flux Control setted to %s \n", name);
    } else {
        rejected |= log.Fail(16, "Flux Control not setted, wrong parameter\n");
    }
    return rejected;
}

int32_t CNuComSerial::CheckCom(const char* portName)
{
    const OperationLog log(log_, "CNuComSerial::CheckCom - ");
    log.Start();
    std::array<char, kPortListSize> buffer{};
    if (EnumPorts(buffer) != 0) return 0;
    const std::string_view wanted = portName;
    std::string_view list = buffer.data();
    while (!list.empty()) {
        const std::string_view entry = list.substr(0, list.find('|'));
        if (entry == wanted && entry.size() <= kLongestPortName) {
            log.End();
            return 1;
        }
        list.remove_prefix(std::min(list.size(), entry.size() + 1));
    }
    return 0;
}

uint32_t CNuComSerial::EnumPorts(std::span<char> buffer)
{
    const OperationLog log(log_, "CNuComSerial::EnumPorts - ");
    log.Start();
    log.Progress("Searching for serial ports in registry key: %s \n", kDeviceMapKey);
    std::string list;
    if (system_.CountPorts() == 0) {
        log.Progress("No serial ports\n");
    } else {
        const auto ports = system_.Ports();
        if (!ports) {
            log.Error("Error opening registry key: %s \n", kDeviceMapKey);
            return 1;
        }
        for (const auto& entry : *ports)
            list += (list.empty() ? "" : "|") + entry.port;
    }
    if (list.size() >= buffer.size()) return log.Fail(3, "Buffer size parameter can not contain the result\n");
    *std::copy(list.begin(), list.end(), buffer.begin()) = '\0';
    if (!list.empty()) log.Progress("Serial ports found: %s \n", list.c_str());
    return log.End();
}

int32_t CNuComSerial::GetSystemVersion(uint32_t& version, uint32_t& error)
{
    const OperationLog log(log_, "CNuComSerial::GetSystemVersion - ");
    log.Start();
    version = 0;
    const auto system = system_.Version(error);
    if (!system) return 0;
    if (system->family == SystemVersion::Family::kWindowsNt) version = CodeOfNt(*system);
    if (system->family == SystemVersion::Family::kWindows9x) version = CodeOf9x(*system);
    log.End();
    return 1;
}

int32_t CNuComSerial::GetTheLinkPathName(const std::string& portName, std::string& device)
{
    const OperationLog log(log_, "CNuComSerial::GetTheLinkPathName - ");
    log.Start();
    const auto ports = system_.Ports();
    if (!ports) {
        log.Error("Error opening registry key: %s \n", kDeviceMapKey);
        return 0;
    }
    const auto found =
        std::find_if(ports->begin(), ports->end(), [&](const auto& entry) { return entry.port == portName; });
    if (found == ports->end()) {
        log.Error("Link device not found in registry for port %s \n", portName.c_str());
        return 0;
    }
    device = found->device;
    log.End();
    return 1;
}

int32_t CNuComSerial::CreateComPortLink(const std::string& portName, uint32_t version, std::string& openPath)
{
    const OperationLog log(log_, "CNuComSerial::CreateComPortLink - ");
    log.Start();
    std::string device;
    if (GetTheLinkPathName(portName, device) == 0) return 0;
    linkName_ = "LinkToSerial" + portName.substr(std::min<std::size_t>(3, portName.size()));
    linkTarget_ = version == kVersionNt4 ? "\\Device\\" + device : device;
    switch (system_.QueryLink(linkName_, lastSystemError_)) {
        case platform::SerialSystem::LinkState::kPresent:
            break;
        case platform::SerialSystem::LinkState::kMissing:
            if (!system_.DefineLink(linkName_, linkTarget_, lastSystemError_)) {
                log.Error("Symbolic link not exists: error creating it\n");
                return 0;
            }
            linkIsOwn_ = true;
            break;
        case platform::SerialSystem::LinkState::kError:
            log.Error("Error querying dos device: link not found and can not create it\n");
            return 0;
    }
    openPath = "\\\\.\\" + linkName_;
    log.End();
    return 1;
}

void CNuComSerial::RemoveOwnLink()
{
    if (linkIsOwn_) system_.RemoveLink(linkName_, linkTarget_);
    linkIsOwn_ = false;
}

uint32_t CNuComSerial::OpenSerial()
{
    const OperationLog log(log_, "CNuComSerial::OpenSerial - ");
    log.Start();
    if (!initialised_) return log.Fail(101, "Open failed: serial device has not been initalized\n");
    if (open_) return log.Fail(102, "Serial device already opened\n");
    if (const uint32_t result = OpenLine(log); result != 0) return result;
    open_ = true;
    lostLink_.Forget();
    dtr_.reset();
    rts_.reset();
    log.Progress("Com port succesfully opened\n");
    return log.End();
}

// From the system's version to a configured line; what failed leaves nothing held.
uint32_t CNuComSerial::OpenLine(const OperationLog& log)
{
    uint32_t version = 0;
    if (GetSystemVersion(version, lastSystemError_) == 0) return log.Fail(104, "Impossibile to identify the system\n");
    log.Progress("System version: %d\n", version);
    std::string openPath;
    if (HasLinks(version) && CreateComPortLink(portName_, version, openPath) == 0)
        return log.Fail(105, "Error during creation of symbolic link\n");
    log.Progress("Serial link: %s\n", openPath.c_str());
    handle_ = system_.Open(openPath, lastSystemError_);
    if (handle_ == nullptr) {
        RemoveOwnLink();
        return log.Fail(106, "Open failed: invalid handle returned\n");
    }
    handle_->HeedStop(stop_);
    const uint32_t result = ConfigureLine(log);
    if (result != 0) {
        lastSystemError_ = handle_->LastError();
        handle_.reset();
        RemoveOwnLink();
        return result;
    }
    use_.Opened();
    return 0;
}

uint32_t CNuComSerial::ConfigureLine(const OperationLog& log)
{
    if (parametersSet_) {
        auto settings = handle_->Settings();
        if (settings) FillSettings(*settings);
        if (!settings || !handle_->Apply(*settings)) return log.Fail(108, "Open failed: error during SetCommState \n");
    }
    if (!handle_->Apply(timeouts_)) return log.Fail(107, "Open failed: error during SetCommTimeouts \n");
    return 0;
}

// Everything but the parity-check switch, which stays as the port had it.
void CNuComSerial::FillSettings(LineSettings& settings) const
{
    const bool hardware = flowControl_ == kFlowHardware;
    const bool xonXoff = flowControl_ == kFlowXonXoff;
    const LineControl lines = hardware  ? LineControl::kHandshake
                              : xonXoff ? LineControl::kEnabled
                                        : LineControl::kDisabled;
    settings.baudRate = baudRate_;
    settings.byteSize = static_cast<uint8_t>(byteSize_);
    settings.parity = static_cast<platform::LineParity>(parity_);
    settings.stopBits = static_cast<platform::StopBits>(stopBits_);
    settings.ctsOutputFlow = hardware || xonXoff;
    settings.dsrOutputFlow = false;
    settings.dtr = lines;
    settings.rts = lines;
    settings.xonXoffOutput = xonXoff;
    settings.xonXoffInput = xonXoff;
    settings.xonCharacter = xonXoff ? 0x11 : 0;   // DC1 of ISO/IEC 646
    settings.xoffCharacter = xonXoff ? 0x13 : 0;  // DC3
    settings.xonLimit = 2048;
    settings.xoffLimit = 512;
    settings.endOfFileCharacter = 0;
    settings.eventCharacter = 0x0A;
    settings.binary = true;
    settings.continueAfterXoff = true;
    settings.dsrSensitivity = false;
    settings.replaceErrors = false;
    settings.stripNul = false;
    settings.abortOnError = false;
}

}  // namespace marbex::comm
