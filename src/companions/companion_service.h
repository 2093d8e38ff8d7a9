#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "device/posprinter_device.h"
#include "opos/common.h"
#include "support/printer_tables.h"

namespace marbex::companions {

// What sets one companion service apart from the other. The texts live as long as the process.
struct CompanionTraits {
    const char* tag;                                   // of its log lines: the class name
    const char* deviceName;                            // the ProgID
    const char* deviceDescription;                     // the service object description adds the version to it
    const char* hardwareMissing;                       // told to the log on a model without the companion
    uint32_t support::PrinterModelStruct::*modelFlag;  // non-zero on a model with the companion
    std::span<const int32_t> zeroProperties;           // indices of numbers that are always 0
};

// What the service objects of the devices that hang on the printer have in common. They have no port of their own: they
// work through the current printer device of the process, which every call reads afresh and holds until it returns, and
// only while that device is open, claimed and enabled and its model has the companion. Otherwise a method answers 106
// (OPOS_E_ILLEGAL), an empty string, or nothing. Without a printer device it logs nothing either.
//
// Open, claimed and enabled are flags of the companion itself; the printer's are not touched.
//
// Called on the thread of the control object; takes no lock. Calls may be nested: a call that waits for the printer may
// run an event handler of the application.
class CompanionService {
public:
    CompanionService(const CompanionService&) = delete;
    CompanionService& operator=(const CompanionService&) = delete;

    // The arguments are not used: there is one printer to hang on, and there are no events.
    int32_t OpenService(const std::string& DeviceClass, const std::string& DeviceName, IDispatch* Dispatch);
    int32_t CloseService();
    int32_t ClaimDevice(int32_t Timeout);  // never waits
    int32_t ReleaseDevice();
    int32_t COFreezeEvents(bool Freeze);
    int32_t GetPropertyNumber(int32_t PropIndex);
    std::optional<std::string> GetPropertyString(int32_t PropIndex);

    // Not supported.
    int32_t CheckHealth(int32_t Level);
    int32_t CompareFirmwareVersion(const std::string& FirmwareFileName, int32_t Result);
    int32_t UpdateFirmware(const std::string& FirmwareFileName);
    int32_t ResetStatistics(const std::string& StatisticsBuffer);
    int32_t RetrieveStatistics(std::string* pStatisticsBuffer);
    int32_t UpdateStatistics(const std::string& StatisticsBuffer);

protected:
    using Printer = std::shared_ptr<device::POSPrinterDevice>;

    explicit CompanionService(const CompanionTraits& traits) : traits_(traits) {}
    ~CompanionService() = default;

    // The way into every method. Logs beginLine and gives the printer device to work through, or null, after logging
    // why, when the method has to be refused.
    Printer Enter(const std::string& beginLine) const;

    // The way out of a method that did its work.
    void Leave(const char* endLine) const;

    // The whole of a method that is not supported.
    int32_t RefuseUnsupported(const char* beginLine, const char* reasonLine) const;

    // Whether the companion is open, claimed and enabled. When it is not, the result code says which.
    bool VerifyMayUse();

    void SetErrorCode(int32_t resultCode, int32_t resultCodeExtended);
    int32_t ResultCode() const { return resultCode_; }
    bool IsClosed() const { return state_ == opos::OPOS_S_CLOSED; }
    void SetDeviceEnabled(bool enabled) { deviceEnabled_ = enabled ? 1 : 0; }

private:
    int32_t NumberOf(device::POSPrinterDevice& printer, int32_t propIndex) const;
    std::optional<std::string> TextOf(device::POSPrinterDevice& printer, int32_t propIndex) const;

    const CompanionTraits& traits_;
    int32_t claimed_ = 0;
    int32_t deviceEnabled_ = 0;
    int32_t state_ = opos::OPOS_S_CLOSED;
    int32_t resultCode_ = opos::OPOS_E_CLOSED;
    int32_t resultCodeExtended_ = 0;
};

}  // namespace marbex::companions
