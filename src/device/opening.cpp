// Opening the service: profile, log, control object, port, printer, spooler, events.

#include <new>

#include "device/printer_device.h"
#include "device/process_state.h"
#include "opos/common.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/kernel_names.h"
#include "support/service_log.h"

namespace marbex::device {

using support::DeviceProfileStruct;
using support::LogWrite;

int32_t PrinterDevice::GetRegistryData(const std::string& DeviceName, DeviceProfileStruct& Profile)
{
    LogWrite("[%s] GetRegistryData Begin (%s)", tag_, DeviceName.c_str());
    Registry.SelectDevice(platform::Utf8FromUtf16(platform::WidenAnsi(DeviceName)));
    if (!Registry.ReadProfile(Profile)) Registry.SetDefaults(Profile);
    LogWrite("[%s] GetRegistryData End", tag_);
    return 0;
}

// False while a close of this device is not finished: its port is still in use.
bool PrinterDevice::BeginOpening()
{
    if (State.load() != opos::OPOS_S_CLOSED) CloseService();
    if (IsBeingClosed()) return false;
    openSettled_->Reset();
    ++openGeneration_;
    Events.SetOwner(weak_from_this());
    platform::LoadAnsiCodePage(systemRegistry_);
    SetErrorCode(0, 0);
    return true;
}

bool PrinterDevice::LoadProfile(const std::string& DeviceName, DeviceProfileStruct& profile)
{
    if (GetRegistryData(DeviceName, profile) != 0) return false;
    support::LogOpen(profile.LogPath, profile.LogEnabled, profile.LogLevel, 1, profile.LogLimit);
    return true;
}

int32_t PrinterDevice::FailOpening(int32_t resultCode)
{
    ControlObject_.Detach();
    SetErrorCode(resultCode, 0);
    openSettled_->Set();
    return resultCode;
}

int32_t PrinterDevice::OpenService(const std::string&, const std::string& DeviceName, IDispatch* Dispatch)
{
    TheProcess().SetEventDelivery(false, {});
    if (!BeginOpening()) return Refuse(opos::OPOS_E_BUSY);
    DeviceProfileStruct profile{};
    if (!LoadProfile(DeviceName, profile)) return FailOpening(opos::OPOS_E_NOSERVICE);
    LogWrite("[%s] OpenService Begin", tag_);
    if (!ControlObject_.Attach(Dispatch)) return FailOpening(opos::OPOS_E_NOSERVICE);
    if (const int32_t failure = OpenComponentsInMemory(profile); failure != 0) return FailOpening(failure);
    LogWrite("[%s] OpenService End", tag_);
    return opos::OPOS_SUCCESS;
}

int32_t PrinterDevice::OpenService_NET(const std::string&, const std::string& DeviceName,
                                       const std::string& EventFileName)
{
    TheProcess().SetEventDelivery(true, EventFileName);
    const bool fileMade = platform::CreateEmptyFile(EventFileName);
    if (!BeginOpening()) return Refuse(opos::OPOS_E_BUSY);
    DeviceProfileStruct profile{};
    if (!LoadProfile(DeviceName, profile)) return FailOpening(opos::OPOS_E_NOSERVICE);
    LogWrite("[%s] OpenService_NET Begin", tag_);
    if (!fileMade) {
        LogWrite("[%s] OpenService_NET The event file %s could not be created", tag_, EventFileName.c_str());
        return FailOpening(opos::OPOS_E_NOSERVICE);
    }
    if (const int32_t failure = OpenComponentsInMemory(profile); failure != 0) return FailOpening(failure);
    LogWrite("[%s] OpenService_NET End", tag_);
    return opos::OPOS_SUCCESS;
}

int32_t PrinterDevice::OpenComponentsInMemory(const DeviceProfileStruct& profile)
{
    try {
        return OpenComponents(profile);
    } catch (const std::bad_alloc&) {
        LogWrite("[%s] Not enough memory to open", tag_);
        AbandonOpening();
        return opos::OPOS_E_FAILURE;
    }
}

int32_t PrinterDevice::OpenComponents(const DeviceProfileStruct& profile)
{
    PrinterSubModel = profile.PrinterSubModel;
    InitPropertyOnOpen();
    ConfigurePort(profile);

    PrinterEncoder.RequestStop(false);
    PrinterEncoder.AttachPort(&PrinterPort);
    if (PrinterEncoder.Open() != 0) {
        LogWrite("[%s] Error opening Communication Port Type %d", tag_, static_cast<int>(profile.PortType));
        PrinterEncoder.DetachPort();
        PrinterPort.Close();
        return opos::OPOS_E_FAILURE;
    }
    if (!PrinterEncoder.CheckPrinter()) {
        LogWrite("[%s] Error checking printer", tag_);
        ClosePort();
        return opos::OPOS_E_NOHARDWARE;
    }
    PrinterEncoder.InitialiseAtOpen();
    {
        platform::LockHold hold(claimLock_);
        ClaimSemaphore = support::CreateOwnedSemaphore("hClaimSemaphore", this, 1, 1);
    }
    if (!OpenSpoolerAndEvents(profile)) return opos::OPOS_E_FAILURE;

    DeviceEnabled = 0;
    activity_.Open();
    openSettled_->Set();
    SetAsyncMode(AsyncMode.load() != 0);
    DoSetMapMode(MapMode.load());
    return 0;
}

bool PrinterDevice::OpenSpoolerAndEvents(const DeviceProfileStruct& profile)
{
    const bool spooling = Spooler.Open(profile.Settings) == 0;
    Spooler.SetCallback(&PrinterDevice::SpoolerCallback, this);
    Spooler.ConfirmOutput(profile.ConfirmOutput != 0);
    Spooler.AttachPrinter(&PrinterEncoder);
    Spooler.Clear();
    const bool delivering = spooling && Events.Open() == 0;
    Events.SetCallback(&PrinterDevice::EventCallback, this);
    Events.Clear();
    Events.SetNetMode(TheProcess().NetMode());
    if (delivering) return true;

    LogWrite("[%s] Error starting the spooler or the event handler", tag_);
    AbandonOpening();
    return false;
}

// Closes what has been opened so far.
void PrinterDevice::AbandonOpening()
{
    BeginClosing();
    openSettled_->Set();
    CloseComponents();
    BecomeClosed();
}

void PrinterDevice::ConfigurePort(const DeviceProfileStruct& profile)
{
    PrinterPort.SetPortType(profile.PortType);
    PrinterPort.SetLog(profile.LogEnabled, profile.LogLevel, profile.LogPath, 1, profile.LogLimit);
    PrinterPort.SetTimeouts(profile.TimeoutTX, profile.TimeoutRX);
    PrinterPort.SetTcpPort(profile.Port);
    PrinterPort.SetIpAddress(profile.IPAddress);
    PrinterPort.SetPrinterName(profile.PrinterName);
    PrinterPort.SetComPort(profile.Com, profile.Speed);
    PrinterPort.SetFormat(profile.Format);
    PrinterPort.SetHandshake(profile.Handshake);
}

void PrinterDevice::ClosePort()
{
    PrinterEncoder.Close();
    PrinterEncoder.DetachPort();
}

}  // namespace marbex::device
