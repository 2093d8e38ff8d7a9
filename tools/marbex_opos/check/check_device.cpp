#include "marbex_opos/check/check.h"

namespace marbex::tools {

Steps CheckDevice(const std::string& name)
{
    Steps steps;
    const std::optional<DeviceView> device = CheckEntries(name, steps);
    if (!device) return steps;
    CheckValues(*device, steps);
    CheckLogFolder(*device, steps);
    if (std::unique_ptr<Cable> cable = CheckPort(*device, steps)) CheckPrinter(std::move(cable), *device, steps);
    return steps;
}

}  // namespace marbex::tools
