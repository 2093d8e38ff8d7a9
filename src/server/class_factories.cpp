#include "server/class_factories.h"

#include <marbex/class_ids.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

#include "companions/cash_drawer_driver.h"
#include "companions/line_display_driver.h"
#include "device/process_state.h"
#include "server/companion_methods.h"
#include "server/posprinter_front.h"
#include "server/posprinter_methods.h"

namespace marbex::server {
namespace {

constexpr CreatableClass kClasses[] = {
    {kPrinterProgId, kPrinterClassId,
     []() -> AutomationObject* { return new ServiceObject<MarbexOposPrnDriver>(PosPrinterTable()); }},
    {kCashDrawerProgId, kCashDrawerClassId,
     []() -> AutomationObject* {
         return new ServiceObject<companions::MarbexOposCashDrawerDriver>(CashDrawerTable());
     }},
    {kLineDisplayProgId, kLineDisplayClassId,
     []() -> AutomationObject* {
         return new ServiceObject<companions::MarbexOposLineDisplayDriver>(LineDisplayTable());
     }},
};

// Lives as long as the server; its references only keep the server loaded.
class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const CreatableClass& creatable) : creatable_(creatable) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override
    {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!(riid == IID_IUnknown) && !(riid == IID_IClassFactory)) return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override
    {
        ++device::TheProcess().ServerLocks;
        return ++references_;
    }

    ULONG STDMETHODCALLTYPE Release() override
    {
        --device::TheProcess().ServerLocks;
        return --references_;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override
    {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        try {
            AutomationObject* const made = creatable_.create();
            const HRESULT result = made->QueryInterface(riid, object);
            made->Release();
            return result;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        device::TheProcess().ServerLocks += lock != 0 ? 1 : -1;
        return S_OK;
    }

private:
    const CreatableClass& creatable_;
    std::atomic<ULONG> references_{0};
};

ClassFactory* FactoryOf(REFCLSID classId)
{
    // Never destroyed: a client may release its factory while the process ends.
    static auto& factories = *[] {
        auto* const made = new std::array<ClassFactory*, std::size(kClasses)>;
        std::transform(std::begin(kClasses), std::end(kClasses), made->begin(),
                       [](const CreatableClass& creatable) { return new ClassFactory(creatable); });
        return made;
    }();
    for (std::size_t i = 0; i < std::size(kClasses); ++i) {
        if (kClasses[i].classId == classId) return factories[i];
    }
    return nullptr;
}

}  // namespace

std::span<const CreatableClass> CreatableClasses()
{
    return kClasses;
}

HRESULT GetClassFactory(REFCLSID classId, REFIID riid, void** object)
{
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    ClassFactory* const factory = FactoryOf(classId);
    return factory != nullptr ? factory->QueryInterface(riid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace marbex::server
