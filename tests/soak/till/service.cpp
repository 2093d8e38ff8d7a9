#include "till/service.h"

#include <marbex/class_ids.h>
#include <marbex/create_service.h>

#include <array>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace marbex::soak {
namespace {

constexpr std::array<std::u16string_view, 4> kCallbacks{u"SODirectIO", u"SOError", u"SOOutputComplete",
                                                        u"SOStatusUpdate"};
constexpr DISPID kFirstCallback = 100;

}  // namespace

HRESULT ControlObject::QueryInterface(REFIID id, void** object)
{
    const bool known = id == IID_IUnknown || id == IID_IDispatch;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

HRESULT ControlObject::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

HRESULT ControlObject::GetIDsOfNames(REFIID, OLECHAR** names, UINT count, LCID, DISPID* ids)
{
    for (std::size_t i = 0; i < kCallbacks.size() && count == 1; ++i) {
        if (kCallbacks[i] == names[0]) {
            ids[0] = kFirstCallback + static_cast<DISPID>(i);
            return S_OK;
        }
    }
    return DISP_E_UNKNOWNNAME;
}

HRESULT ControlObject::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT*, EXCEPINFO*, UINT*)
{
    const VARIANT* const last = call->rgvarg;
    switch (id - kFirstCallback) {
        case 0:
            return S_OK;
        case 1:
            *last[0].plVal = onError(last[3].lVal, last[2].lVal);
            return S_OK;
        case 2:
            onComplete(last[0].lVal);
            return S_OK;
        case 3:
            onStatus(last[0].lVal);
            return S_OK;
        default:
            return DISP_E_MEMBERNOTFOUND;
    }
}

Argument::Argument(int32_t value)
{
    variant.vt = VT_I4;
    variant.lVal = value;
}

Argument::Argument(const std::string& text)
{
    const std::u16string wide(text.begin(), text.end());
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

Argument::Argument(IDispatch* object)
{
    object->AddRef();
    variant.vt = VT_DISPATCH;
    variant.pdispVal = object;
}

Service::Service()
{
    if (FAILED(MarbexCreateService(kPrinterProgId, &object_))) {
        throw std::runtime_error("no service object");
    }
}

Service::~Service()
{
    object_->Release();
}

int32_t Service::Call(const char* method, std::initializer_list<Argument> arguments)
{
    const std::string_view ascii = method;
    std::u16string name(ascii.begin(), ascii.end());
    OLECHAR* names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    HRESULT result = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
    std::vector<VARIANT> reversed;
    for (auto one = std::rbegin(arguments); one != std::rend(arguments); ++one) {
        reversed.push_back(one->variant);
    }
    DISPPARAMS call{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    VARIANT answer;
    VariantInit(&answer);
    if (SUCCEEDED(result)) {
        result =
            object_->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &call, &answer, nullptr, nullptr);
    }
    for (VARIANT& variant : reversed) {
        VariantClear(&variant);
    }
    if (FAILED(result)) {
        throw std::runtime_error(std::string(method) + " cannot be called");
    }
    const int32_t number = answer.vt == VT_I4 ? answer.lVal : 0;
    VariantClear(&answer);
    return number;
}

}  // namespace marbex::soak
