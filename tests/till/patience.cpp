// What Wine's script host lacks: WScript.Sleep, which waits and runs the messages of the script meanwhile. An
// in-process server of one object without a class of its own; scripts/check-windows registers it as
// "MarbexTests.Patience".

// clang-format off
#include <windows.h>
#include <oaidl.h>
#include <oleauto.h>
#include <objbase.h>
// clang-format on

#include <cwchar>

namespace {

void RunMessagesFor(DWORD milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

// Lives as long as the library, which lives as long as the script.
class Patience final : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IDispatch;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override
    {
        ids[0] = std::wcscmp(names[0], L"Sleep") == 0 ? 1 : DISPID_UNKNOWN;
        return ids[0] == 1 ? S_OK : DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT*, EXCEPINFO*, UINT*) override
    {
        VARIANT time;
        VariantInit(&time);
        if (call->cArgs != 1 || FAILED(VariantChangeType(&time, call->rgvarg, 0, VT_I4))) return DISP_E_TYPEMISMATCH;
        RunMessagesFor(static_cast<DWORD>(time.lVal));
        return S_OK;
    }
};

class Factory final : public IClassFactory {
public:
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
        static Patience patience;
        return patience.QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID, REFIID id, void** object)
{
    static Factory factory;
    return factory.QueryInterface(id, object);
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}
