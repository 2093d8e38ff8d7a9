#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "opos/common.h"
#include "platform/automation.h"
#include "support/printer_tables.h"

namespace marbex::device {

// What a printer device answers to its front and to the companion services. Text is single-byte in the ANSI code page;
// a text result of none is a null string. Every operation has a default body that answers 106 (OPOS_E_ILLEGAL), an
// empty string or nothing, and logs nothing.
//
// Devices are shared: every call under way and every event delivery holds a reference, so that an application may
// replace or release the service from inside an event handler.
//
// Threads: Claimed, DeviceEnabled and State are written by the application's and the spool thread and may be read by
// any.
class POSPrinterDevice {
public:
    virtual ~POSPrinterDevice() = default;

    std::atomic<int32_t> Claimed{0};
    std::atomic<int32_t> DeviceEnabled{0};
    std::atomic<int32_t> State{opos::OPOS_S_CLOSED};

    // A device that is being closed answers as closed, whatever State still says. Any thread.
    bool IsClosed() const { return CurrentState() == opos::OPOS_S_CLOSED; }
    int32_t CurrentState() const { return closing_.load() ? opos::OPOS_S_CLOSED : State.load(); }

    // The character sets that the profile offers, in its order. The front sets them after opening and empties them at
    // close.
    std::vector<support::CharSetStruct> CharSets;

    virtual int32_t OpenService(const std::string& DeviceClass, const std::string& DeviceName, IDispatch* Dispatch);
    virtual int32_t CloseService();
    virtual int32_t ClaimDevice(int32_t Timeout);
    virtual int32_t GetOpenResult();
    virtual int32_t COFreezeEvents(bool Freeze);
    virtual int32_t ResetStatistics(const std::string& StatisticsBuffer);
    virtual int32_t UpdateStatistics(const std::string& StatisticsBuffer);
    virtual int32_t BeginInsertion(int32_t Timeout);
    virtual int32_t BeginRemoval(int32_t Timeout);
    virtual int32_t ChangePrintSide(int32_t Side);
    virtual int32_t CutPaper(int32_t Percentage);
    virtual int32_t EndInsertion();
    virtual int32_t EndRemoval();
    virtual int32_t MarkFeed(int32_t Type);
    virtual int32_t CompareFirmwareVersion(const std::string& FirmwareFileName, int32_t Result);
    virtual int32_t UpdateFirmware(const std::string& FirmwareFileName);
    virtual int32_t ClearPrintArea();
    virtual int32_t PageModePrint(int32_t Control);
    virtual int32_t PrintBarCode(int32_t Station, const std::string& Data, int32_t Symbology, int32_t Height,
                                 int32_t Width, int32_t Alignment, int32_t TextPosition);
    virtual int32_t PrintBitmap(int32_t Station, const std::string& FileName, int32_t Width, int32_t Alignment);
    virtual int32_t PrintImmediate(int32_t Station, const std::string& Data);
    virtual int32_t PrintNormal(int32_t Station, const std::string& Data);
    virtual int32_t PrintTwoNormal(int32_t Stations, const std::string& Data1, const std::string& Data2);
    virtual int32_t RotatePrint(int32_t Station, int32_t Rotation);
    virtual int32_t SetBitmap(int32_t BitmapNumber, int32_t Station, const std::string& FileName, int32_t Width,
                              int32_t Alignment);
    virtual int32_t SetLogo(int32_t Location, const std::string& Data);
    virtual int32_t TransactionPrint(int32_t Station, int32_t Control);
    virtual int32_t ValidateData(int32_t Station, const std::string& Data);
    virtual int32_t GetPropertyNumber(int32_t PropIndex);
    virtual std::optional<std::string> GetPropertyString(int32_t PropIndex);
    virtual void SetPropertyString(int32_t PropIndex, const std::string& String);
    virtual void SetPropertyNumber(int32_t PropIndex, int32_t Number);
    virtual int32_t ReleaseDevice();
    // pString keeps its UTF-16 units, zeros included: one unit carries one byte. Either pointer may be null.
    virtual int32_t DirectIO(int32_t Command, int32_t* pData, std::u16string* pString);
    virtual int32_t CheckHealth(int32_t Level);
    virtual int32_t ClearOutput();
    virtual int32_t RetrieveStatistics(std::string* pStatisticsBuffer);
    virtual int32_t Claim(int32_t Timeout);
    virtual int32_t Close();
    virtual int32_t Release();
    virtual int32_t PrintMemoryBitmap(int32_t Station, const std::string& Data, int32_t Type, int32_t Width,
                                      int32_t Alignment);
    virtual int32_t DrawRuledLine(int32_t Station, const std::string& PositionList, int32_t LineDirection,
                                  int32_t LineWidth, int32_t LineStyle, int32_t LineColor);
    virtual int32_t OpenService_NET(const std::string& DeviceClass, const std::string& DeviceName,
                                    const std::string& EventFileName);
    virtual int32_t External_CashDrawer_OpenDrawer(int32_t OnTime, int32_t OffTime);  // ms
    virtual int32_t External_LineDisplay_ClearText();
    virtual int32_t External_LineDisplay_DisplayText(const std::string& Data, int32_t Attribute);
    virtual int32_t External_LineDisplay_DisplayTextAt(int32_t Row, int32_t Column, const std::string& Data,
                                                       int32_t Attribute);

    // The application has given up its last reference to the service without closing it, and its control object with
    // it: no callback is made any more, not even for what closing still delivers.
    virtual void ControlObjectGone() {}

    // Whether an operation of this device is waiting on the calling thread, further up its stack, for the application
    // to answer or the printer to become free. The front then refuses to replace the device.
    virtual bool OperationWaitsOnThisThread() const { return false; }

    // Whether a close has begun and not yet ended: its rest may be left to an operation that is under way on another
    // thread. Until then the device's port and its log are in use.
    virtual bool IsBeingClosed() const { return false; }

protected:
    std::atomic<bool> closing_{false};  // answers as closed, errors are answered CLEAR
};

}  // namespace marbex::device
