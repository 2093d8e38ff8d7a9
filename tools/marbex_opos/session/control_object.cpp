#include "marbex_opos/session/control_object.h"

#include <array>

#include "marbex_opos/opos/value.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

struct Callback {
    std::string_view name;
    EventKind event;
    UINT arguments;
};

// A callback's dispatch identifier is its position, from 1.
constexpr std::array<Callback, 5> kCallbacks{{
    {"SOData", EventKind::kData, 1},
    {"SODirectIO", EventKind::kDirectIO, 3},
    {"SOError", EventKind::kError, 4},
    {"SOOutputComplete", EventKind::kOutputComplete, 1},
    {"SOStatusUpdate", EventKind::kStatusUpdate, 1},
}};

// The arguments of a call in the order of the declaration.
const VARIANT& ArgumentAt(const DISPPARAMS& parameters, UINT at)
{
    return parameters.rgvarg[parameters.cArgs - 1 - at];
}

std::optional<int32_t> NumberAt(const DISPPARAMS& parameters, UINT at)
{
    const VARIANT& variant = ArgumentAt(parameters, at);
    if (variant.vt == VT_I4) return variant.lVal;
    if (variant.vt == (VT_I4 | VT_BYREF) && variant.plVal != nullptr) return *variant.plVal;
    return std::nullopt;
}

std::optional<std::u16string> TextAt(const DISPPARAMS& parameters, UINT at)
{
    const VARIANT& variant = ArgumentAt(parameters, at);
    if (variant.vt == VT_BSTR) return std::u16string(platform::BstrView(variant.bstrVal));
    if (variant.vt == (VT_BSTR | VT_BYREF) && variant.pbstrVal != nullptr) {
        return std::u16string(platform::BstrView(*variant.pbstrVal));
    }
    return std::nullopt;
}

// The application's answer goes back through the last argument of an error event.
void AnswerError(const DISPPARAMS& parameters, const std::optional<int32_t>& response)
{
    const VARIANT& variant = ArgumentAt(parameters, 3);
    if (response && variant.vt == (VT_I4 | VT_BYREF) && variant.plVal != nullptr) *variant.plVal = *response;
}

// None when an argument has the wrong type.
std::optional<std::vector<Result>> Arguments(const DISPPARAMS& parameters)
{
    std::vector<Result> arguments;
    for (UINT at = 0; at < parameters.cArgs; ++at) {
        if (const std::optional<int32_t> number = NumberAt(parameters, at)) {
            arguments.emplace_back(*number);
        } else if (std::optional<std::u16string> text = TextAt(parameters, at)) {
            arguments.emplace_back(std::move(*text));
        } else {
            return std::nullopt;
        }
    }
    return arguments;
}

NameSets NamesOfArgument(const Event& event, std::size_t at)
{
    if (event.kind == EventKind::kStatusUpdate) return NamesOfStatusEvents(event.object);
    if (event.kind != EventKind::kError || at > 1) return {};
    return at == 0 ? NamesOfResults() : NamesOfExtendedResults(event.object);
}

}  // namespace

std::string Described(const Event& event, bool withNames)
{
    std::string text = std::string(EventName(event.kind)) + " " + std::string(ClassOf(event.object).name);
    for (std::size_t at = 0; at < event.arguments.size(); ++at) {
        text += " " + Printed(event.arguments[at], withNames ? NamesOfArgument(event, at) : NameSets());
    }
    return text;
}

HRESULT ControlObject::QueryInterface(REFIID riid, void** ppvObject)
{
    if (ppvObject == nullptr) return E_POINTER;
    *ppvObject = nullptr;
    if (riid != IID_IUnknown && riid != IID_IDispatch) return E_NOINTERFACE;
    *ppvObject = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

HRESULT ControlObject::GetTypeInfoCount(UINT* pctinfo)
{
    if (pctinfo == nullptr) return E_POINTER;
    *pctinfo = 0;
    return S_OK;
}

HRESULT ControlObject::GetTypeInfo(UINT, LCID, ITypeInfo**)
{
    return E_NOTIMPL;
}

HRESULT ControlObject::GetIDsOfNames(REFIID, OLECHAR** rgszNames, UINT cNames, LCID, DISPID* rgDispId)
{
    if (rgszNames == nullptr || rgDispId == nullptr || cNames == 0) return E_INVALIDARG;
    const std::string name = platform::Utf8FromUtf16(platform::NameView(rgszNames[0]));
    for (std::size_t at = 0; at < kCallbacks.size(); ++at) {
        if (!platform::SameName(kCallbacks[at].name, name)) continue;
        rgDispId[0] = static_cast<DISPID>(at + 1);
        return S_OK;
    }
    rgDispId[0] = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
}

HRESULT ControlObject::Invoke(DISPID dispIdMember, REFIID, LCID, WORD, DISPPARAMS* pDispParams, VARIANT*, EXCEPINFO*,
                              UINT*)
{
    if (dispIdMember < 1 || static_cast<std::size_t>(dispIdMember) > kCallbacks.size()) return DISP_E_MEMBERNOTFOUND;
    const Callback& callback = kCallbacks[static_cast<std::size_t>(dispIdMember - 1)];
    if (pDispParams == nullptr || pDispParams->cArgs != callback.arguments) return DISP_E_BADPARAMCOUNT;
    if (callback.event == EventKind::kError) AnswerError(*pDispParams, errorResponse_);
    std::optional<std::vector<Result>> arguments = Arguments(*pDispParams);
    if (!arguments) return DISP_E_TYPEMISMATCH;
    listener_({callback.event, object_, std::move(*arguments)});
    return S_OK;
}

}  // namespace marbex::tools
