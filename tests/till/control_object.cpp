// Control objects for the tests of the samples, as plain as they can be: Open finds the service object in the registry
// by the device's name, a few properties go by their numbers, and every other method is the service object's own.
// Events are taken and forgotten. scripts/check-windows registers them as "OPOS.POSPrinter", "OPOS.CashDrawer" and
// "OPOS.LineDisplay".

// clang-format off
#include <windows.h>
#include <oaidl.h>
#include <oleauto.h>
#include <objbase.h>
// clang-format on

#include <cwchar>
#include <iterator>
#include <string>

namespace {

// The last byte of a class's identifier is its place here.
constexpr const wchar_t* kClasses[] = {L"POSPrinter", L"CashDrawer", L"LineDisplay"};
constexpr const wchar_t* kCallbacks[] = {L"SODirectIO", L"SOError", L"SOOutputComplete", L"SOStatusUpdate"};
constexpr struct {
    const wchar_t* name;
    LONG number;
} kProperties[] = {{L"DeviceEnabled", 3}, {L"ResultCode", 6}, {L"ResultCodeExtended", 7}, {L"AsyncMode", 8001}};
enum : DISPID { kOpen = 1, kClose = 2, kFirstProperty = 100, kFirstCallback = 200, kFirstOfService = 1000 };

class ControlObject final : public IDispatch {
public:
    explicit ControlObject(std::wstring deviceClass) : deviceClass_(std::move(deviceClass)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IDispatch;
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override
    {
        const auto isName = [&](const wchar_t* name) { return std::wcscmp(names[0], name) == 0; };
        for (DISPID i = 0; i < static_cast<DISPID>(std::size(kProperties)); ++i)
            if (isName(kProperties[i].name)) return Found(ids, kFirstProperty + i);
        for (DISPID i = 0; i < static_cast<DISPID>(std::size(kCallbacks)); ++i)
            if (isName(kCallbacks[i])) return Found(ids, kFirstCallback + i);
        if (isName(L"Open")) return Found(ids, kOpen);
        if (isName(L"Close")) return Found(ids, kClose);
        const HRESULT result =
            service_ != nullptr ? service_->GetIDsOfNames(IID_NULL, names, 1, 0, ids) : DISP_E_UNKNOWNNAME;
        if (SUCCEEDED(result)) ids[0] += kFirstOfService;
        return result;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* call, VARIANT* answer, EXCEPINFO*,
                                     UINT*) override
    {
        if (id == kOpen && call->cArgs == 1) return Open(call->rgvarg[0], answer);
        if (id >= kFirstCallback && id < kFirstOfService) return S_OK;
        if (service_ == nullptr) return E_UNEXPECTED;
        if (id >= kFirstOfService)
            return service_->Invoke(id - kFirstOfService, IID_NULL, 0, DISPATCH_METHOD, call, answer, nullptr, nullptr);
        if (id == kClose) {
            const HRESULT result = Ask(L"CloseService", nullptr, 0, answer);
            service_->Release();
            service_ = nullptr;
            return result;
        }
        VARIANT arguments[2] = {};
        VARIANT& number = arguments[kind == DISPATCH_PROPERTYPUT ? 1 : 0];
        number.vt = VT_I4;
        number.lVal = kProperties[id - kFirstProperty].number;
        if (kind != DISPATCH_PROPERTYPUT) return Ask(L"GetPropertyNumber", arguments, 1, answer);
        arguments[0] = call->rgvarg[0];
        return Ask(L"SetPropertyNumber", arguments, 2, nullptr);
    }

private:
    ~ControlObject()
    {
        if (service_ != nullptr) service_->Release();
    }

    static HRESULT Found(DISPID* ids, DISPID id)
    {
        ids[0] = id;
        return S_OK;
    }

    HRESULT Open(VARIANT& device, VARIANT* answer)
    {
        VARIANT name{};
        if (FAILED(VariantChangeType(&name, &device, 0, VT_BSTR))) return DISP_E_TYPEMISMATCH;
        const std::wstring key = L"SOFTWARE\\OLEforRetail\\ServiceOPOS\\" + deviceClass_ + L"\\" + name.bstrVal;
        wchar_t progId[256];
        DWORD size = sizeof progId;
        CLSID id;
        if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, progId, &size) != 0 ||
            FAILED(CLSIDFromProgID(progId, &id)) ||
            FAILED(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                    reinterpret_cast<void**>(&service_)))) {
            VariantClear(&name);
            answer->vt = VT_I4;
            answer->lVal = 109;  // OPOS_E_NOEXIST
            return S_OK;
        }
        VARIANT arguments[3] = {};
        arguments[0].vt = VT_DISPATCH;
        arguments[0].pdispVal = this;
        arguments[1] = name;
        arguments[2].vt = VT_BSTR;
        arguments[2].bstrVal = SysAllocString(deviceClass_.c_str());
        const HRESULT result = Ask(L"OpenService", arguments, 3, answer);
        SysFreeString(arguments[2].bstrVal);
        VariantClear(&name);
        return result;
    }

    // The arguments stand last first, and stay the caller's.
    HRESULT Ask(const wchar_t* method, VARIANT* arguments, UINT count, VARIANT* answer)
    {
        LPOLESTR names[] = {const_cast<LPOLESTR>(method)};
        DISPID id;
        DISPPARAMS call{arguments, nullptr, count, 0};
        const HRESULT result = service_->GetIDsOfNames(IID_NULL, names, 1, 0, &id);
        return FAILED(result) ? result
                              : service_->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &call, answer, nullptr, nullptr);
    }

    std::wstring deviceClass_;
    IDispatch* service_ = nullptr;
    ULONG references_ = 1;
};

class Factory final : public IClassFactory {
public:
    const wchar_t* deviceClass = nullptr;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IClassFactory;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override
    {
        auto* const control = new ControlObject(deviceClass);
        const HRESULT result = control->QueryInterface(id, object);
        control->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID id, void** object)
{
    static Factory factories[std::size(kClasses)];
    const unsigned place = classId.Data4[7];
    if (place >= std::size(kClasses)) return CLASS_E_CLASSNOTAVAILABLE;
    factories[place].deviceClass = kClasses[place];
    return factories[place].QueryInterface(id, object);
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}
