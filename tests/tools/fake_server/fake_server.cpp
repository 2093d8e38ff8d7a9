// A server with the entry points of the real one and one object behind all classes. It answers a call with a
// description of what reached it, and posts events that only running the messages delivers.

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/automation.h"
#include "platform/text.h"
#include "platform/window.h"

namespace {

using marbex::platform::BstrView;
using marbex::platform::NameView;
using marbex::platform::NewBstr;
using marbex::platform::Utf16FromUtf8;
using marbex::platform::Utf8FromUtf16;

// Runs what was posted when the thread runs its messages.
class Messages final : public marbex::platform::WindowProcedure {
public:
    Messages() : window_(marbex::platform::Window::Create("FakeServerWindow", "fake server", *this)) {}

    void Post(std::function<void()> message)
    {
        messages_.push_back(std::move(message));
        window_->Post(marbex::platform::kFirstApplicationMessage, 0, 0);
    }

    int OnCreate() override { return 0; }
    void OnDestroy() override {}
    intptr_t WindowProc(uint32_t message, uintptr_t, intptr_t,
                        const std::function<intptr_t()>& defaultProcedure) override
    {
        if (message != marbex::platform::kFirstApplicationMessage) return defaultProcedure();
        const std::function<void()> first = std::move(messages_.front());
        messages_.pop_front();
        first();
        return 0;
    }

private:
    std::deque<std::function<void()>> messages_;
    std::unique_ptr<marbex::platform::Window> window_;
};

std::string Describe(const VARIANT& argument)
{
    switch (argument.vt) {
        case VT_I4:
            return std::to_string(argument.lVal);
        case VT_BOOL:
            return argument.boolVal == VARIANT_TRUE ? "TRUE" : "FALSE";
        case VT_BSTR:
            return Utf8FromUtf16(BstrView(argument.bstrVal));
        case VT_DISPATCH:
            return argument.pdispVal != nullptr ? "dispatch" : "null dispatch";
        case VT_I4 | VT_BYREF:
            return "&" + std::to_string(*argument.plVal);
        case VT_BSTR | VT_BYREF:
            return "&" + Utf8FromUtf16(BstrView(*argument.pbstrVal));
        default:
            return "type " + std::to_string(argument.vt);
    }
}

void CallBack(IDispatch* controlObject, const char* name, DISPPARAMS& parameters)
{
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(marbex::platform::FindName(*controlObject, Utf16FromUtf8(name), id))) return;
    controlObject->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
}

class FakeObject final : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, OLECHAR** names, UINT, LCID, DISPID* ids) override
    {
        lastName_ = Utf8FromUtf16(NameView(names[0]));
        ids[0] = 1;
        return lastName_ == "SetLogo" ? DISP_E_UNKNOWNNAME : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*,
                                     UINT*) override
    {
        received_ = lastName_;
        for (UINT at = parameters->cArgs; at > 0; --at)
            received_ += " " + Describe(parameters->rgvarg[at - 1]);
        result->vt = VT_I4;
        result->lVal = 0;
        if (lastName_ == "OpenService") controlObject_ = parameters->rgvarg[0].pdispVal;
        if (lastName_ == "GetPropertyString") return AnswerText(parameters->rgvarg[0].lVal, *result);
        if (lastName_ == "GetPropertyNumber") result->lVal = parameters->rgvarg[0].lVal;
        if (lastName_ == "SetPropertyNumber" || lastName_ == "SetPropertyString") result->vt = VT_EMPTY;
        if (lastName_ == "DirectIO") return DirectIO(*parameters);
        if (lastName_ == "PrintNormal") PostStatusUpdate(parameters->rgvarg[1].lVal);
        if (lastName_ == "CutPaper") result->lVal = FireError();
        if (lastName_ == "RotatePrint") return DISP_E_TYPEMISMATCH;
        return S_OK;
    }

private:
    ~FakeObject() = default;

    // Text 1000001 is what the last call received; any other is null.
    HRESULT AnswerText(LONG index, VARIANT& result)
    {
        result.vt = VT_BSTR;
        result.bstrVal = index == 1000001 ? NewBstr(Utf16FromUtf8(before_)) : nullptr;
        received_ = before_;
        return S_OK;
    }

    // Gives both in/out arguments new values and reports the call as an event on the next run of the messages.
    HRESULT DirectIO(DISPPARAMS& parameters)
    {
        before_ = received_;
        *parameters.rgvarg[1].plVal += 1;
        const std::u16string text = std::u16string(BstrView(*parameters.rgvarg[0].pbstrVal)) + u"\x1B\"\\\x00E9\x0085";
        SysFreeString(*parameters.rgvarg[0].pbstrVal);
        *parameters.rgvarg[0].pbstrVal = NewBstr(text);
        messages_.Post([this, text] {
            LONG data = 3;
            BSTR copy = NewBstr(text);
            VARIANT arguments[3]{};
            arguments[0].vt = VT_BSTR | VT_BYREF;
            arguments[0].pbstrVal = &copy;
            arguments[1].vt = VT_I4 | VT_BYREF;
            arguments[1].plVal = &data;
            arguments[2].vt = VT_I4;
            arguments[2].lVal = 0;
            DISPPARAMS parameters{arguments, nullptr, 3, 0};
            CallBack(controlObject_, "SODirectIO", parameters);
            SysFreeString(copy);
        });
        return S_OK;
    }

    void PostStatusUpdate(LONG status)
    {
        before_ = received_;
        messages_.Post([this, status] {
            VARIANT argument{};
            argument.vt = VT_I4;
            argument.lVal = status;
            DISPPARAMS parameters{&argument, nullptr, 1, 0};
            CallBack(controlObject_, "SOStatusUpdate", parameters);
        });
    }

    // Reports an error inside the call, as a synchronous job does, and returns the answer.
    LONG FireError()
    {
        LONG response = 99;
        VARIANT arguments[4]{};
        arguments[0].vt = VT_I4 | VT_BYREF;
        arguments[0].plVal = &response;
        const int32_t values[] = {1, 201, 114};
        for (int at = 0; at < 3; ++at) {
            arguments[at + 1].vt = VT_I4;
            arguments[at + 1].lVal = values[at];
        }
        DISPPARAMS parameters{arguments, nullptr, 4, 0};
        CallBack(controlObject_, "SOError", parameters);
        return response;
    }

    ULONG references_ = 1;
    std::string lastName_;
    std::string received_;
    std::string before_;
    IDispatch* controlObject_ = nullptr;
    Messages messages_;
};

class FakeFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, void** object) override
    {
        *object = static_cast<IDispatch*>(new FakeObject);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

constexpr CLSID kLineDisplay{0x3B9304F2, 0x526B, 0x4F11, {0x9A, 0x2F, 0xD8, 0x5E, 0xE3, 0x6B, 0xD2, 0x09}};

}  // namespace

// The fake makes no line displays.
STDAPI DllGetClassObject(REFCLSID classId, REFIID, void** object)
{
    static FakeFactory factory;
    if (classId == kLineDisplay) return CLASS_E_CLASSNOTAVAILABLE;
    *object = static_cast<IClassFactory*>(&factory);
    return S_OK;
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}

STDAPI DllRegisterServer()
{
    return S_OK;
}

STDAPI DllUnregisterServer()
{
    return S_OK;
}
