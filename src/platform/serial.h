#pragma once

// Serial ports: which there are, links that give a port's device a name of ours, and one open line with the meaning of
// the Win32 communication functions (speed, framing, flow control, five time-outs).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/stop_signal.h"

namespace marbex::platform {

// One entry of the serial device map.
struct SerialPortEntry {
    std::string device;  // \Device\Serial2 on Windows, a terminal such as /dev/ttyS1 on POSIX
    std::string port;    // COM3
};

struct SystemVersion {
    enum class Family { kWindows9x, kWindowsNt, kOther };
    Family family = Family::kOther;
    uint32_t major = 0;
    uint32_t minor = 0;
};

enum class LineParity : uint8_t { kNone = 0, kOdd = 1, kEven = 2 };
enum class StopBits : uint8_t { kOne = 0, kTwo = 2 };
// What drives the DTR or RTS line: nothing (low), the user (high until told otherwise), or the driver.
enum class LineControl : uint8_t { kDisabled = 0, kEnabled = 1, kHandshake = 2 };

// The settings of a line; the fields are those of the published device control block. What a terminal cannot express is
// accepted and kept.
struct LineSettings {
    uint32_t baudRate = 9600;
    uint8_t byteSize = 8;
    LineParity parity = LineParity::kNone;
    StopBits stopBits = StopBits::kOne;
    bool binary = true;
    bool parityCheck = false;
    bool ctsOutputFlow = false;
    bool dsrOutputFlow = false;
    LineControl dtr = LineControl::kEnabled;
    LineControl rts = LineControl::kEnabled;
    bool dsrSensitivity = false;
    bool continueAfterXoff = false;
    bool xonXoffOutput = false;
    bool xonXoffInput = false;
    bool replaceErrors = false;
    bool stripNul = false;
    bool abortOnError = false;
    uint16_t xonLimit = 0;
    uint16_t xoffLimit = 0;
    uint8_t xonCharacter = 0;
    uint8_t xoffCharacter = 0;
    uint8_t endOfFileCharacter = 0;
    uint8_t eventCharacter = 0;
};

// Milliseconds. A read ends when its bytes are there, when readInterval has passed since the last byte (0: no such
// limit), or after readConstant + readMultiplier * count; a write after writeConstant + writeMultiplier * count. A sum
// of 0 only looks: nothing waits without limit.
struct SerialTimeouts {
    uint32_t readInterval = 0;
    uint32_t readMultiplier = 0;
    uint32_t readConstant = 0;
    uint32_t writeMultiplier = 0;
    uint32_t writeConstant = 0;
};

struct SerialTransfer {
    bool ok = false;  // false: the system failed; a time-out is a success with fewer bytes
    std::size_t count = 0;
};

// An open line. One caller at a time. Closed by its destructor; output that the printer has not taken is thrown away.
class SerialLine {
public:
    virtual ~SerialLine() = default;
    // From now on a transfer without progress ends two seconds after this signal, as if its time were over. The signal
    // must outlive the line.
    virtual void HeedStop(const StopSignal& stop) = 0;
    virtual std::optional<LineSettings> Settings() = 0;
    virtual bool Apply(const LineSettings& settings) = 0;
    virtual bool Apply(const SerialTimeouts& timeouts) = 0;
    // Raise or lower a line; a terminal without modem lines accepts.
    virtual bool SetDtr(bool on) = 0;
    virtual bool SetRts(bool on) = 0;
    // Throws away what is waiting; output that is being sent is aborted too.
    virtual bool Purge(bool output, bool input) = 0;
    virtual SerialTransfer Read(std::span<std::byte> buffer) = 0;
    // Likewise, with this limit in place of the line's total; the signal ends it at once.
    virtual SerialTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) = 0;
    // The count is of bytes that have left the computer.
    virtual SerialTransfer Write(std::span<const std::byte> bytes) = 0;
    virtual bool Close() = 0;
    virtual bool IsGone() const = 0;  // a transfer found that the device is no longer there
    virtual uint32_t LastError() const = 0;
};

// The serial ports of this machine. Any thread.
class SerialSystem {
public:
    enum class LinkState { kPresent, kMissing, kError };

    virtual ~SerialSystem() = default;

    // The number of entries of the serial device map, 0 when there is none.
    virtual std::size_t CountPorts() = 0;
    // The entries; none when the map cannot be opened.
    virtual std::optional<std::vector<SerialPortEntry>> Ports() = 0;
    // None when the system does not tell; error then says why.
    virtual std::optional<SystemVersion> Version(uint32_t& error) = 0;

    // Names for devices, used as "\\.\<name>". On POSIX they are the process's own.
    virtual LinkState QueryLink(const std::string& name, uint32_t& error) = 0;
    virtual bool DefineLink(const std::string& name, const std::string& target, uint32_t& error) = 0;
    virtual void RemoveLink(const std::string& name, const std::string& target) = 0;

    // Opens for reading and writing, shared with nobody. Null when that fails; error then says why.
    virtual std::unique_ptr<SerialLine> Open(const std::string& path, uint32_t& error) = 0;
};

// On POSIX the device map is HARDWARE\DEVICEMAP\SERIALCOMM of the registry file (value name: a terminal, data: "COM1")
// when that key is there, so that a pseudo-terminal can be a port; else the terminals found, /dev/ttyS* first, then
// /dev/ttyUSB* and /dev/ttyACM*, numbered from COM1.
SerialSystem& SystemSerial();

}  // namespace marbex::platform
