#include "server/dispatch_table.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string>

#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::server {
namespace {

constexpr char16_t ToLower(char16_t unit)
{
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

bool NamesEqual(std::string_view name, std::u16string_view asked)
{
    return std::equal(name.begin(), name.end(), asked.begin(), asked.end(), [](char letter, char16_t unit) {
        return ToLower(static_cast<unsigned char>(letter)) == ToLower(unit);
    });
}

void Describe(const char* className, const char* reason, HRESULT code, EXCEPINFO* exception) noexcept
{
    if (exception == nullptr) return;
    exception->scode = code;
    try {
        exception->bstrSource = platform::NewBstr(platform::Utf16FromUtf8(className));
        exception->bstrDescription = platform::NewBstr(platform::Utf16FromUtf8(reason));
    } catch (const std::bad_alloc&) {
        // The code has to do without its text.
    }
}

}  // namespace

HRESULT DispatchTable::GetIDsOfNames(REFIID riid, OLECHAR** names, UINT count, DISPID* ids) const
{
    if (!(riid == IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr) return E_POINTER;
    if (count == 0) return E_INVALIDARG;

    std::fill_n(ids, count, DISPID_UNKNOWN);
    const std::u16string_view asked = platform::NameView(names[0]);
    const auto found = std::find_if(methods_.begin(), methods_.end(),
                                    [&](const DispatchMethod& method) { return NamesEqual(method.name, asked); });
    if (found == methods_.end()) return DISP_E_UNKNOWNNAME;
    ids[0] = static_cast<DISPID>(found - methods_.begin()) + 1;
    return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT DispatchTable::Invoke(void* service, DISPID id, REFIID riid, WORD flags, DISPPARAMS* parameters,
                              VARIANT* result, EXCEPINFO* exception, UINT* argumentError) const
{
    if (result != nullptr) VariantInit(result);
    if (exception != nullptr) *exception = {};
    if (argumentError != nullptr) *argumentError = 0;

    if (!(riid == IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (id < 1 || static_cast<std::size_t>(id) > methods_.size()) return DISP_E_MEMBERNOTFOUND;
    // Late-bound callers that want a result ask for a method or a property alike.
    if ((flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) == 0) return DISP_E_MEMBERNOTFOUND;
    if (parameters == nullptr) return E_POINTER;
    if (parameters->cNamedArgs != 0) return DISP_E_NONAMEDARGS;

    const DispatchMethod& method = methods_[static_cast<std::size_t>(id) - 1];
    const bool isBare = parameters->cArgs == 0 && method.alsoWithoutArguments;
    if (parameters->cArgs != method.parameterCount && !isBare) return DISP_E_BADPARAMCOUNT;
    if (parameters->cArgs != 0 && parameters->rgvarg == nullptr) return E_POINTER;

    platform::VariantHolder made;
    DispatchCall call{{parameters->rgvarg, parameters->cArgs}, *made.Get()};
    try {
        const HRESULT outcome = method.call(service, call);
        if (outcome == DISP_E_TYPEMISMATCH || outcome == DISP_E_OVERFLOW) {
            if (argumentError != nullptr) *argumentError = call.argumentError;
        }
        if (SUCCEEDED(outcome) && result != nullptr) std::swap(*result, *made.Get());
        return outcome;
    } catch (const std::bad_alloc&) {
        support::LogWrite("[%s] %s FAILED: out of memory", className_, method.name.data());
        Describe(className_, "out of memory", E_OUTOFMEMORY, exception);
    } catch (const std::exception& problem) {
        support::LogWrite("[%s] %s FAILED: %s", className_, method.name.data(), problem.what());
        Describe(className_, problem.what(), E_UNEXPECTED, exception);
    } catch (...) {
        support::LogWrite("[%s] %s FAILED: unknown exception", className_, method.name.data());
        Describe(className_, "unknown exception", E_UNEXPECTED, exception);
    }
    return DISP_E_EXCEPTION;
}

}  // namespace marbex::server
