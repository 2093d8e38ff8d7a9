// The entry points of the in-process server. Nothing that goes wrong behind them leaves them as an exception.

#include "device/process_state.h"
#include "platform/automation.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "platform/version.h"
#include "server/class_factories.h"
#include "server/registration.h"

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    try {
        return marbex::server::GetClassFactory(rclsid, riid, ppv);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

STDAPI DllCanUnloadNow()
{
    return marbex::device::TheProcess().ServerLocks == 0 ? S_OK : S_FALSE;
}

// Both report S_OK whatever becomes of the single entries: installers take anything else as a broken server. What could
// not be written is told to the debugger.
STDAPI DllRegisterServer()
{
    namespace platform = marbex::platform;
    try {
        auto& registry = platform::SystemRegistry();
        if (!marbex::server::RegisterClasses(registry, platform::ModulePath())) {
            platform::WriteDebugOutput("Registration is incomplete: " + registry.LastProblem() + "\n");
        }
    } catch (...) {
        platform::WriteDebugOutput("Registration is incomplete: out of memory\n");
    }
    return S_OK;
}

STDAPI DllUnregisterServer()
{
    namespace platform = marbex::platform;
    try {
        auto& registry = platform::SystemRegistry();
        if (!marbex::server::UnregisterClasses(registry)) {
            platform::WriteDebugOutput("Unregistration is incomplete: " + registry.LastProblem() + "\n");
        }
    } catch (...) {
        platform::WriteDebugOutput("Unregistration is incomplete: out of memory\n");
    }
    return S_OK;
}
