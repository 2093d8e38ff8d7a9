#include "server/posprinter_front.h"

#include <opos/common.h>

#include <algorithm>
#include <new>
#include <span>
#include <utility>

#include "device/process_state.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "support/device_registry.h"
#include "support/printer_tables.h"
#include "support/service_log.h"

namespace marbex::server {
namespace {

using device::POSPrinterDevice;
using device::TheProcess;
using support::LogWrite;

constexpr const char* kDeviceClass = "POSPRINTER";
constexpr int32_t kKickTime = 100;  // ms, on and off

std::string UpperCase(std::string text)
{
    for (char& character : text) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    }
    return text;
}

std::string TextOfField(std::span<const char> field)
{
    return {field.begin(), std::find(field.begin(), field.end(), '\0')};
}

support::DeviceProfileStruct ReadProfileOf(const std::string& deviceName)
{
    support::DeviceProfileStruct profile{};
    support::CDeviceRegistry registry;
    registry.SelectDevice(platform::Utf8FromUtf16(platform::WidenAnsi(deviceName)));
    if (!registry.ReadProfile(profile)) registry.SetDefaults(profile);
    return profile;
}

uint32_t ModelIndexOf(const std::string& modelName)
{
    const auto models = support::PrinterModels();
    const auto found = std::find_if(models.begin(), models.end(), [&](const support::PrinterModelStruct& model) {
        return TextOfField(model.Name) == modelName;
    });
    return found != models.end() ? static_cast<uint32_t>(found - models.begin()) : 0;
}

std::vector<support::CharSetStruct> CharacterSetsOf(const support::DeviceProfileStruct& profile)
{
    const std::span<const uint8_t> fonts(profile.Fonts);
    const std::size_t count = std::min<std::size_t>(fonts[0], fonts.size() - 1);
    std::vector<support::CharSetStruct> sets;
    for (const uint8_t setNumber : fonts.subspan(1, count)) {
        if (const auto* const set = support::FindCharacterSet(setNumber); set != nullptr) sets.push_back(*set);
    }
    return sets;
}

// Null for an unknown model, and when there is no memory for it.
std::shared_ptr<POSPrinterDevice> MakeDevice(const std::string& model)
{
    try {
        return device::CreateModelDevice(model);
    } catch (const std::bad_alloc&) {
        LogWrite("[OpenService] No memory for the device");
        return nullptr;
    }
}

// Ends the life of a device as the current one. It is freed when the last call in it has returned.
void CloseAndDrop(const std::shared_ptr<POSPrinterDevice>& device)
{
    if (device == nullptr) return;
    if (device->State != opos::OPOS_S_CLOSED) device->CloseService();
    device->CharSets.clear();
    if (device->IsBeingClosed()) TheProcess().SetClosingDevice(device);
    if (TheProcess().CurrentDevice() == device) TheProcess().SetCurrentDevice(nullptr);
}

// Whether its port and its log cannot be had yet: an operation waits further up this stack, or a close is not finished.
bool IsInUse(const std::shared_ptr<POSPrinterDevice>& device)
{
    return device != nullptr && (device->OperationWaitsOnThisThread() || device->IsBeingClosed());
}

}  // namespace

MarbexOposPrnDriver::MarbexOposPrnDriver()
{
    platform::LoadAnsiCodePage(platform::SystemRegistry());
    if (TheProcess().Fronts++ > 0) return;
    TheProcess().SetCurrentDevice(nullptr);
    TheProcess().CurrentModelIndex = 0;
}

MarbexOposPrnDriver::~MarbexOposPrnDriver()
{
    LastReferenceGone();  // again, for an opening that was under way then
    --TheProcess().Fronts;
}

void MarbexOposPrnDriver::LastReferenceGone() noexcept
{
    try {
        const auto device = device_.lock();
        if (device != nullptr) device->ControlObjectGone();
        CloseAndDrop(device);
    } catch (...) {
        LogWrite("[MarbexOposPrnDriver] Closing FAILED, the device stays as it is");
    }
}

std::shared_ptr<POSPrinterDevice> MarbexOposPrnDriver::Device() const
{
    auto device = TheProcess().CurrentDevice();
    if (device != device_.lock()) device.reset();
    return device;
}

int32_t MarbexOposPrnDriver::OpenService(const std::string& DeviceClass, const std::string& DeviceName,
                                         IDispatch* Dispatch)
{
    return SelectModelAndOpen(DeviceClass, DeviceName, [&](POSPrinterDevice& device) {
        return device.OpenService(DeviceClass, DeviceName, Dispatch);
    });
}

int32_t MarbexOposPrnDriver::OpenService_NET(const std::string& DeviceClass, const std::string& DeviceName,
                                             const std::string& EventFileName)
{
    return SelectModelAndOpen(DeviceClass, DeviceName, [&](POSPrinterDevice& device) {
        return device.OpenService_NET(DeviceClass, DeviceName, EventFileName);
    });
}

int32_t MarbexOposPrnDriver::SelectModelAndOpen(const std::string& deviceClass, const std::string& deviceName,
                                                const std::function<int32_t(POSPrinterDevice&)>& open)
{
    if (UpperCase(deviceClass) != kDeviceClass) return opos::OPOS_E_ILLEGAL;

    if (IsInUse(TheProcess().CurrentDevice()) || IsInUse(TheProcess().ClosingDevice())) return opos::OPOS_E_BUSY;
    CloseAndDrop(TheProcess().CurrentDevice());
    if (IsInUse(TheProcess().ClosingDevice())) return opos::OPOS_E_BUSY;
    ModelName.clear();
    platform::LoadAnsiCodePage(platform::SystemRegistry());

    Profile = ReadProfileOf(deviceName);
    ModelName = UpperCase(TextOfField(Profile.PrinterModel));
    const std::shared_ptr<POSPrinterDevice> device = MakeDevice(ModelName);
    if (device == nullptr) return opos::OPOS_E_ILLEGAL;
    device_ = device;
    TheProcess().SetCurrentDevice(device);
    TheProcess().CurrentModelIndex = ModelIndexOf(ModelName);

    auto characterSets = CharacterSetsOf(Profile);
    const int32_t result = open(*device);
    device->CharSets = std::move(characterSets);
    if ((Profile.Settings & support::SETTINGS_OPENCDTCUT) != 0) {
        LogWrite("[OpenService] Settings: SETTINGS_OPENCDTCUT Enabled");
    }
    return result;
}

int32_t MarbexOposPrnDriver::CloseService()
{
    const auto device = Device();
    if (device == nullptr) return opos::OPOS_E_ILLEGAL;
    const int32_t result = device->CloseService();
    device->CharSets.clear();
    return result;
}

int32_t MarbexOposPrnDriver::Close()
{
    const auto device = Device();
    if (device == nullptr) return opos::OPOS_E_ILLEGAL;
    const int32_t result = device->Close();
    device->CharSets.clear();
    return result;
}

int32_t MarbexOposPrnDriver::CutPaper(int32_t Percentage)
{
    const auto device = Device();
    if (device == nullptr) return opos::OPOS_E_ILLEGAL;
    const int32_t result = device->CutPaper(Percentage);
    if ((Profile.Settings & support::SETTINGS_OPENCDTCUT) == 0) return result;

    if (support::PrinterModels()[TheProcess().CurrentModelIndex].HasCashDrawer != 0) {
        LogWrite("[CutPaper] OpenDrawer Start");
        device->External_CashDrawer_OpenDrawer(kKickTime, kKickTime);
        LogWrite("[CutPaper] OpenDrawer End");
    } else {
        LogWrite("[CutPaper] Printer do not support Cash Drawer");
    }
    return result;
}

std::optional<std::string> MarbexOposPrnDriver::GetPropertyString(int32_t PropIndex)
{
    const auto device = Device();
    return device != nullptr ? device->GetPropertyString(PropIndex) : std::string();
}

int32_t MarbexOposPrnDriver::DirectIO_NET(int32_t Command, int32_t Data, const std::u16string& String)
{
    LogWrite("[MarbexOposPrnDriver] DirectIO_NET Begin (%d)", Command);
    std::u16string string = String;
    const auto device = Device();
    const int32_t result = device != nullptr ? device->DirectIO(Command, &Data, &string) : opos::OPOS_E_ILLEGAL;
    LogWrite("[MarbexOposPrnDriver] DirectIO_NET End");
    return result;
}

std::optional<std::string> MarbexOposPrnDriver::RetrieveStatistics_NET(const std::string& StatisticsBuffer)
{
    LogWrite("[TalisFiscalPrinter] RetrieveStatistics_NET Begin");
    std::string buffer = StatisticsBuffer;
    if (const auto device = Device(); device != nullptr) device->RetrieveStatistics(&buffer);
    LogWrite("[TalisFiscalPrinter] RetrieveStatistics_NET End");
    return buffer;
}

}  // namespace marbex::server
