#include <utility>

#include "device/printer_device.h"
#include "device/process_state.h"

namespace marbex::device {

namespace {

DeviceFactory& Replacement()
{
    static auto& factory = *new DeviceFactory;
    return factory;
}

}  // namespace

std::shared_ptr<POSPrinterDevice> CreateModelDevice(std::string_view modelName)
{
    if (Replacement()) return Replacement()(modelName);
    const ModelDescription* model = FindModel(modelName);
    return model != nullptr ? std::make_shared<PrinterDevice>(*model) : nullptr;
}

void ReplaceDeviceFactory(DeviceFactory factory)
{
    Replacement() = std::move(factory);
}

}  // namespace marbex::device
