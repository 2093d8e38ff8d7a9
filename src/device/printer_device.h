#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "comm/printer_port.h"
#include "device/activity.h"
#include "device/calls_under_way.h"
#include "device/control_object.h"
#include "device/locked_text.h"
#include "device/model_description.h"
#include "device/posprinter_device.h"
#include "device/print_data_converter.h"
#include "device/server_lock.h"
#include "events/event_handler.h"
#include "platform/clock.h"
#include "platform/kernel.h"
#include "platform/lock.h"
#include "platform/registry.h"
#include "printer/printer_encoder.h"
#include "spooler/application_thread.h"
#include "spooler/print_spooler.h"
#include "support/device_profile.h"
#include "support/device_registry.h"

namespace marbex::device {

// The printer device of every model; what differs stands in the ModelDescription. Owns and wires the port, the encoder,
// the spooler and the event handler.
//
// Public operations run on the application's threads, mostly the one that opened the service (the window thread, on
// which events are delivered). The spool thread enters through SpoolerCallback, the delivery window through
// EventCallback. While an operation waits on the window thread that thread runs its messages, so the application can
// call in again from an event handler; what such a nested call may do, and how closing stays safe, is in closing.cpp.
class PrinterDevice final : public POSPrinterDevice,
                            public std::enable_shared_from_this<PrinterDevice>,
                            private spooler::ApplicationThread {
public:
    explicit PrinterDevice(const ModelDescription& model, platform::Registry& registry = platform::SystemRegistry(),
                           platform::Clock& clock = platform::SystemClock());
    ~PrinterDevice() override;

    int32_t OpenService(const std::string& DeviceClass, const std::string& DeviceName, IDispatch* Dispatch) override;
    int32_t OpenService_NET(const std::string& DeviceClass, const std::string& DeviceName,
                            const std::string& EventFileName) override;
    int32_t CloseService() override;
    int32_t ClaimDevice(int32_t Timeout) override;
    int32_t ReleaseDevice() override;
    int32_t COFreezeEvents(bool Freeze) override;
    int32_t Claim(int32_t Timeout) override;
    int32_t Close() override;
    int32_t Release() override;

    int32_t GetPropertyNumber(int32_t PropIndex) override;
    std::optional<std::string> GetPropertyString(int32_t PropIndex) override;
    void SetPropertyString(int32_t PropIndex, const std::string& String) override;
    void SetPropertyNumber(int32_t PropIndex, int32_t Number) override;

    int32_t PrintNormal(int32_t Station, const std::string& Data) override;
    int32_t PrintImmediate(int32_t Station, const std::string& Data) override;
    int32_t CutPaper(int32_t Percentage) override;
    int32_t MarkFeed(int32_t Type) override;
    int32_t PrintBarCode(int32_t Station, const std::string& Data, int32_t Symbology, int32_t Height, int32_t Width,
                         int32_t Alignment, int32_t TextPosition) override;
    int32_t PrintBitmap(int32_t Station, const std::string& FileName, int32_t Width, int32_t Alignment) override;
    int32_t RotatePrint(int32_t Station, int32_t Rotation) override;
    int32_t TransactionPrint(int32_t Station, int32_t Control) override;
    int32_t ValidateData(int32_t Station, const std::string& Data) override;
    int32_t ClearOutput() override;
    int32_t External_CashDrawer_OpenDrawer(int32_t OnTime, int32_t OffTime) override;
    int32_t External_LineDisplay_ClearText() override;
    int32_t External_LineDisplay_DisplayText(const std::string& Data, int32_t Attribute) override;
    int32_t External_LineDisplay_DisplayTextAt(int32_t Row, int32_t Column, const std::string& Data,
                                               int32_t Attribute) override;

    int32_t CheckHealth(int32_t Level) override;
    int32_t DirectIO(int32_t Command, int32_t* pData, std::u16string* pString) override;

    int32_t GetOpenResult() override;
    int32_t ResetStatistics(const std::string& StatisticsBuffer) override;
    int32_t UpdateStatistics(const std::string& StatisticsBuffer) override;
    int32_t RetrieveStatistics(std::string* pStatisticsBuffer) override;
    int32_t BeginInsertion(int32_t Timeout) override;
    int32_t BeginRemoval(int32_t Timeout) override;
    int32_t EndInsertion() override;
    int32_t EndRemoval() override;
    int32_t ChangePrintSide(int32_t Side) override;
    int32_t CompareFirmwareVersion(const std::string& FirmwareFileName, int32_t Result) override;
    int32_t UpdateFirmware(const std::string& FirmwareFileName) override;
    int32_t ClearPrintArea() override;
    int32_t PageModePrint(int32_t Control) override;
    void ControlObjectGone() override { ControlObject_.Detach(); }
    int32_t PrintTwoNormal(int32_t Stations, const std::string& Data1, const std::string& Data2) override;
    int32_t SetBitmap(int32_t BitmapNumber, int32_t Station, const std::string& FileName, int32_t Width,
                      int32_t Alignment) override;
    int32_t SetLogo(int32_t Location, const std::string& Data) override;

    bool OperationWaitsOnThisThread() const override { return calls_.Depth() > 0; }
    bool IsBeingClosed() const override { return closing_.load(); }

private:
    friend struct PropertyTable;

    // Counts an operation while it runs; the last one to end finishes a close that was asked for meanwhile.
    class OperationScope {
    public:
        explicit OperationScope(PrinterDevice& device);
        ~OperationScope();
        OperationScope(const OperationScope&) = delete;
        OperationScope& operator=(const OperationScope&) = delete;

    private:
        PrinterDevice& device_;
    };

    // Opening and closing
    int32_t GetRegistryData(const std::string& DeviceName, support::DeviceProfileStruct& Profile);
    bool BeginOpening();
    bool LoadProfile(const std::string& DeviceName, support::DeviceProfileStruct& profile);
    int32_t FailOpening(int32_t resultCode);
    int32_t OpenComponentsInMemory(const support::DeviceProfileStruct& profile);
    int32_t OpenComponents(const support::DeviceProfileStruct& profile);
    void ConfigurePort(const support::DeviceProfileStruct& profile);
    bool OpenSpoolerAndEvents(const support::DeviceProfileStruct& profile);
    void AbandonOpening();
    void BeginClosing();
    bool FinishClosing();  // false when output that had been queued was dropped
    void CloseComponents();
    void BecomeClosed();
    void ClosePort();

    // State
    void SetErrorCode(int32_t code, int32_t extended);
    int32_t Refuse(int32_t code);
    int32_t Refusal(int32_t flags);  // recorded, 0: it may be done
    void SetDeviceEnabledState(bool Enabled);
    void DoFreezeEvents(bool Freeze);
    void SetAsyncMode(bool Async);
    void SetFlagWhenIdle(bool Flag);

    // Properties
    void InitPropertyOnOpen();
    bool VerifyPropertyAccess(int32_t PIDX);
    int32_t DoSetMapMode(int32_t mapMode);
    int32_t ConvertValueWithMapMode(int32_t Value);
    std::string CharacterSetList() const;

    // Output
    int32_t RecordSpoolerResult(int32_t packed);
    bool FileExist(const std::string& FileName);
    int32_t SendDirectIO(std::string_view bytes, bool secondLink = false);  // at most 128 bytes

    // Line display
    int32_t SendDisplayCommand(const char* operation, int32_t attribute, const std::string& command,
                               const std::string& text);
    std::string DisplayBytesOf(const std::string& text) const;
    int32_t DisplayPropertyNumber(int32_t PropIndex);
    void SetDisplayPropertyNumber(int32_t PropIndex, int32_t Number);

    // Direct I/O
    std::optional<int32_t> SendRawBytes(const int32_t* pData, const std::u16string* pString);
    int32_t OpenDrawerDirectly(const int32_t* pData, const std::u16string* pString);
    std::optional<int32_t> SwitchConfirmation(const int32_t* pData, const std::u16string* pString);

    // From the spooler
    static int32_t SpoolerCallback(void* context, int32_t code, intptr_t argument1, intptr_t argument2);
    int32_t OnSpooler(int32_t code, intptr_t argument1, intptr_t argument2);
    int32_t OnPrinterError(const printer::PrinterStatus& status);
    void DescribeError(int32_t resultCode, int32_t resultCodeExtended);
    int32_t AskAboutError(const printer::PrinterStatus& status);
    int32_t FireError(int32_t resultCode, int32_t resultCodeExtended);
    void OnStatusChange(const printer::PrinterStatus& status, uint32_t fullStatus);
    void ReportPaperJam(uint32_t fullStatus, bool answered);

    // To the application
    static int32_t EventCallback(void* context, int32_t code, events::EventRecord& record);
    int32_t OnEvent(int32_t code, events::EventRecord& record);
    void Deliver(int32_t code, events::EventRecord& record);
    void DeliverError(events::ErrorEventRecord& record);
    void AppendEvent(int32_t code, const events::EventRecord& record);

    // How the spooler waits on the window thread.
    bool AcquirePrinter(platform::Mutex& printer) override;
    bool Wait(platform::WaitObject& object, uint32_t timeout) override;

    const ServerLock serverLock_;
    const ModelDescription& model_;
    const char* const tag_;
    platform::Registry& systemRegistry_;
    platform::Clock& clock_;

    ControlObject ControlObject_;
    std::atomic<int32_t> ErrorResponse{0};
    platform::Lock claimLock_;
    std::shared_ptr<platform::Semaphore> ClaimSemaphore MARBEX_GUARDED_BY(claimLock_);

    // Properties that change; the others are constants of the property table.
    std::atomic<int32_t> FreezeEvents{0};
    std::atomic<int32_t> OutputID{0};
    std::atomic<int32_t> ResultCode{opos::OPOS_E_CLOSED};
    std::atomic<int32_t> ResultCodeExtended{0};
    std::atomic<int32_t> ServiceObjectVersion{0};
    std::atomic<int32_t> AsyncMode{0};
    std::atomic<int32_t> CoverOpen{0};
    std::atomic<int32_t> ErrorStation{1};
    std::atomic<int32_t> FlagWhenIdle{0};
    std::atomic<int32_t> MapMode{1};
    std::atomic<int32_t> RecEmpty{0};
    std::atomic<int32_t> RecLineHeight{0};
    std::atomic<int32_t> RecLineSpacing{0};
    std::atomic<int32_t> RecLinesToPaperCut{0};
    std::atomic<int32_t> RecLineWidth{0};
    std::atomic<int32_t> RecNearEnd{0};
    std::atomic<int32_t> ErrorLevel{1};
    std::atomic<int32_t> RotateMode{1};
    std::atomic<int32_t> DisplayCharacterSet{0};  // of the line display: a code page, or 999 for the system's
    std::atomic<bool> COFreezeEvents_{false};
    LockedText CheckHealthText;
    LockedText ErrorString;
    std::string PrinterSubModel;

    Activity activity_{State, closing_};
    CallsUnderWay calls_;
    std::atomic<bool> closeRunning_{false};    // a CloseService is between its first and last step
    std::atomic<uint32_t> openGeneration_{0};  // counts openings, so that a delivery can tell that it outlived one
    const std::unique_ptr<platform::Event> openSettled_;  // manual: the open has succeeded or failed
    std::atomic<bool> paperJam_{false};

    PrintDataConverter converter_;
    comm::CPrinterPort PrinterPort;
    printer::CPrinterEncoder PrinterEncoder;
    spooler::CPrintSpooler Spooler;
    events::CEventHandler Events;
    support::CDeviceRegistry Registry;
};

}  // namespace marbex::device
