// A 64-bit Windows keeps what is registered for programs of 32 bits apart from the rest: a till finds only what stands
// in the half of its own kind.

#include <windows.h>

#include "marbex_opos/check/check.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/session/device_names.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

struct View {
    const char* name;
    const char* package;
    REGSAM flag;
};

constexpr View kView64{"64 bits", "x64", KEY_WOW64_64KEY};
constexpr View kView32{"32 bits", "x86", KEY_WOW64_32KEY};

// How many subkeys a key of the local machine has in the view; none when there is no such key.
std::optional<DWORD> CountSubkeys(const View& view, const std::string& path)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, platform::WideFromUtf8(path).c_str(), 0, KEY_READ | view.flag, &key) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    DWORD count = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(key);
    return count;
}

bool IsRegistered(const View& view, const std::string& progId)
{
    return CountSubkeys(view, "SOFTWARE\\Classes\\" + progId + "\\CLSID").has_value();
}

void CheckView(const View& view, Steps& steps)
{
    const std::string name = view.name;
    std::size_t services = 0;
    std::size_t controls = 0;
    for (const ObjectClass& object : kObjectClasses) {
        services += IsRegistered(view, std::string(object.progId)) ? 1 : 0;
        controls += IsRegistered(view, "OPOS." + std::string(object.name)) ? 1 : 0;
    }
    const DWORD devices = CountSubkeys(view, DeviceClassKey(kObjectClasses[0].name)).value_or(0);
    const std::string tool = std::string("marbex-opos of the ") + view.package + " package: ";
    const std::string tills = "tills of " + name + ": ";
    if (services == 0 && controls != 0) {
        steps.Warn(name, tills + "control objects are registered and no service objects", tool + "register");
    } else if (services != 0 && controls < kObjectClasses.size()) {
        steps.Warn(name,
                   tills + "service objects are registered and " + std::to_string(controls) +
                       " of the three control objects (OPOS.POSPrinter and its like)",
                   "install the control objects of OPOS for " + name);
    } else if (services != 0 && devices == 0) {
        steps.Warn(name, tills + "no printer is configured for them", tool + "devices add Till1 PrinterModel=MODEL");
    } else if (services == 0) {
        steps.Fine(name, tills + "nothing is registered");
    } else {
        steps.Fine(name, tills + "service objects and control objects are registered");
    }
}

}  // namespace

void CheckRegistryViews(Steps& steps)
{
    SYSTEM_INFO system{};
    GetNativeSystemInfo(&system);
    if (system.wProcessorArchitecture != PROCESSOR_ARCHITECTURE_INTEL) CheckView(kView64, steps);
    CheckView(kView32, steps);
}

}  // namespace marbex::tools
