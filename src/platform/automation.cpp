#include "platform/automation.h"

namespace marbex::platform {

std::u16string_view BstrView(BSTR text)
{
    if (text == nullptr) return {};
    return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)};
}

BSTR NewBstr(std::u16string_view text)
{
    // A null pointer would ask for text that is not filled in.
    const char16_t* const units = text.empty() ? u"" : text.data();
    return SysAllocStringLen(reinterpret_cast<const OLECHAR*>(units), static_cast<UINT>(text.size()));
}

std::u16string_view NameView(const OLECHAR* name)
{
    if (name == nullptr) return {};
    return reinterpret_cast<const char16_t*>(name);
}

HRESULT FindName(IDispatch& dispatch, std::u16string_view name, DISPID& id)
{
    std::u16string writable(name);  // as GetIDsOfNames takes it
    auto* names = reinterpret_cast<OLECHAR*>(writable.data());
    return dispatch.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_SYSTEM_DEFAULT, &id);
}

}  // namespace marbex::platform
