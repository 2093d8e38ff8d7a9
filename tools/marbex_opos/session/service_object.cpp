#include "marbex_opos/session/service_object.h"

#include <algorithm>

#include "marbex_opos/opos/automation_text.h"
#include "opos/common.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

// One argument on its way: the variant, and what it refers to when it goes by reference.
struct Argument {
    VARIANT variant{};
    LONG number = 0;
    BSTR text = nullptr;
    bool isInOut = false;

    Argument() = default;
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
    ~Argument() { SysFreeString(text); }
};

bool IsInOut(ArgumentKind kind)
{
    return kind == ArgumentKind::kLongInOut || kind == ArgumentKind::kTextInOut;
}

int32_t AsNumber(const Value& value)
{
    const auto* truth = std::get_if<bool>(&value);
    return truth != nullptr ? (*truth ? 1 : 0) : std::get<int32_t>(value);
}

// The value goes as it was written; the method says only whether it goes by reference, and that a BOOL is one.
void Fill(Argument& argument, ArgumentKind kind, const Value& value)
{
    argument.isInOut = IsInOut(kind);
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        argument.text = platform::NewBstr(*text);
        argument.variant.vt = static_cast<VARTYPE>(argument.isInOut ? VT_BSTR | VT_BYREF : VT_BSTR);
        if (argument.isInOut) {
            argument.variant.pbstrVal = &argument.text;
        } else {
            argument.variant.bstrVal = argument.text;
        }
        return;
    }
    argument.number = AsNumber(value);
    if (argument.isInOut) {
        argument.variant.vt = VT_I4 | VT_BYREF;
        argument.variant.plVal = &argument.number;
    } else if (kind == ArgumentKind::kBool) {
        argument.variant.vt = VT_BOOL;
        argument.variant.boolVal = argument.number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    } else {
        argument.variant.vt = VT_I4;
        argument.variant.lVal = argument.number;
    }
}

Result TextResult(BSTR text)
{
    if (text == nullptr) return NullText{};
    return std::u16string(platform::BstrView(text));
}

Result FromVariant(const VARIANT& variant)
{
    switch (variant.vt) {
        case VT_I4:
        case VT_INT:
            return static_cast<int32_t>(variant.lVal);
        case VT_I2:
            return static_cast<int32_t>(variant.iVal);
        case VT_BOOL:
            return static_cast<int32_t>(variant.boolVal != VARIANT_FALSE ? 1 : 0);
        case VT_BSTR:
            return TextResult(variant.bstrVal);
        default:
            return {};
    }
}

}  // namespace

std::unique_ptr<ServiceObject> ServiceObject::Create(ServerLibrary& server, const platform::Registry& registry,
                                                     ObjectKind kind, std::string& problem)
{
    const ObjectClass& object = ClassOf(kind);
    const CLSID classId = RegisteredClass(registry, std::string(object.progId), object.classId);
    void* made = nullptr;
    HRESULT result = server.GetClassObject(classId, IID_IClassFactory, &made);
    if (FAILED(result) || made == nullptr) {
        problem = Described(result);
        return nullptr;
    }
    auto* factory = static_cast<IClassFactory*>(made);
    made = nullptr;
    result = factory->CreateInstance(nullptr, IID_IDispatch, &made);
    factory->Release();
    if (FAILED(result) || made == nullptr) {
        problem = Described(result);
        return nullptr;
    }
    return std::unique_ptr<ServiceObject>(new ServiceObject(kind, static_cast<IDispatch*>(made)));
}

ServiceObject::~ServiceObject()
{
    dispatch_->Release();
}

CallOutcome ServiceObject::Call(const Method& method, std::span<const Value> arguments, IDispatch* controlObject)
{
    CallOutcome outcome;
    DISPID id = DISPID_UNKNOWN;
    HRESULT result = platform::FindName(*dispatch_, platform::Utf16FromUtf8(method.name), id);
    if (FAILED(result)) {
        outcome.problem = std::string(method.name) + ": " + Described(result);
        return outcome;
    }

    std::vector<ArgumentKind> kinds = ArgumentKinds(method);
    if (arguments.empty() && method.alsoWithoutArguments) kinds.clear();
    std::vector<Argument> passed(kinds.size());
    for (std::size_t at = 0, written = 0; at < kinds.size(); ++at) {
        if (kinds[at] == ArgumentKind::kDispatch) {
            passed[at].variant.vt = VT_DISPATCH;
            passed[at].variant.pdispVal = controlObject;
        } else if (written < arguments.size()) {
            Fill(passed[at], kinds[at], arguments[written++]);
        }
    }
    std::vector<VARIANT> reversed;
    std::transform(passed.rbegin(), passed.rend(), std::back_inserter(reversed),
                   [](const Argument& argument) { return argument.variant; });

    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    platform::VariantHolder answer;
    UINT wrongArgument = 0;
    result = dispatch_->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, answer.Get(), nullptr,
                               &wrongArgument);
    if (FAILED(result)) {
        outcome.problem = std::string(method.name) + ": " + Described(result);
        return outcome;
    }
    outcome.result = FromVariant(*answer.Get());
    for (const Argument& argument : passed) {
        if (!argument.isInOut) continue;
        const bool isText = argument.variant.vt == (VT_BSTR | VT_BYREF);
        outcome.inOut.push_back(isText ? TextResult(argument.text) : Result(static_cast<int32_t>(argument.number)));
    }
    return outcome;
}

CallOutcome ServiceObject::Call(std::string_view name, std::initializer_list<Value> arguments, IDispatch* controlObject)
{
    const Method* method = FindMethod(kind_, name);
    if (method == nullptr) return {"no method " + std::string(name), {}, {}};
    return Call(*method, std::span(arguments.begin(), arguments.size()), controlObject);
}

int32_t ServiceObject::CallNumber(std::string_view name, std::initializer_list<Value> arguments,
                                  IDispatch* controlObject)
{
    const CallOutcome outcome = Call(name, arguments, controlObject);
    const auto* number = std::get_if<int32_t>(&outcome.result);
    return number != nullptr ? *number : opos::OPOS_E_FAILURE;
}

}  // namespace marbex::tools
