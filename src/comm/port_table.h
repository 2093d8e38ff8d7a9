#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "comm/port_record.h"
#include "comm/port_system.h"
#include "platform/lock.h"

namespace marbex::comm {

// The communication ports of the process and the flat port interface over them: one record is current, and every
// function but CreateCommunicationPort and SetCommunicationPort acts on it. Results are 0 or a code (port_record.h,
// transports).
//
// A record lives until it is removed and neither current nor in use: whoever resolved one keeps it, without the table's
// lock, which is held for the selection only and never across a transfer.
class PortTable {
public:
    explicit PortTable(PortSystem system = {});

    // Makes a record with the next id (the first is 1) and makes it current. A com type other than 0 serial, 1
    // Ethernet, 2 USB counts as 0. Destination 0 nothing, 1 file, 2 debugger's output; the limit of
    // the file in megabytes, 0 for none. The signal shortens what waits
    // for a printer that makes no progress.
    uint32_t CreateCommunicationPort(
        int32_t comType, uint32_t logDestination, uint32_t logMask, const char* logFilePath, uint32_t* communicationId,
        std::shared_ptr<const platform::StopSignal> stop = std::make_shared<platform::StopSignal>(),
        uint32_t logLimit = 0);
    uint32_t SetCommunicationPort(uint32_t communicationId);

    uint32_t InitSerialPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                            uint32_t stopBits, uint32_t flowControl);
    uint32_t SetSerialTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier,
                              uint32_t writeConstant, uint32_t writeMultiplier);
    uint32_t AdvSetSerialDTR(bool on);
    uint32_t AdvSetSerialRTS(bool on);
    uint32_t InitEthTCP(const char* address, uint32_t port);
    uint32_t SetEthTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t InitUsbPrinter(const char* printerName);
    uint32_t SetUsbTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t SetPacketSize(uint32_t writeBytes, uint32_t readBytes);
    uint32_t Open();
    uint32_t Write(const uint8_t* buffer, uint16_t length);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count);
    uint32_t Clean(bool clearOutput, bool clearInput);
    uint32_t Close();

    // SetCommunicationPort and the record it made current, in one step that no other thread divides; null without one.
    std::shared_ptr<PortRecord> Select(uint32_t communicationId);
    // The record of an id, without making it current and without a line in the log; null when there is none.
    std::shared_ptr<PortRecord> Find(uint32_t communicationId) const;
    // The id means nothing from now on. A record that is current stays so until another one is.
    void Remove(uint32_t communicationId);

private:
    std::shared_ptr<PortRecord> FindLocked(uint32_t communicationId) const MARBEX_REQUIRES(lock_);
    template <typename Call>
    uint32_t OnCurrent(Call call);

    const PortSystem system_;
    mutable platform::Lock lock_;
    std::map<uint32_t, std::shared_ptr<PortRecord>> records_ MARBEX_GUARDED_BY(lock_);  // by their ids
    std::shared_ptr<PortRecord> current_ MARBEX_GUARDED_BY(lock_);
    uint32_t lastId_ MARBEX_GUARDED_BY(lock_) = 0;
};

// The one table of the process. It lives until the process ends, for a device may outlast any order of destruction.
PortTable& ProcessPortTable();

}  // namespace marbex::comm
