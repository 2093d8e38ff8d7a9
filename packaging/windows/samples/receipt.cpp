// A receipt and the cash drawer, late bound: by the names of the methods, without #import or a type library.
//
//     cl /EHsc /std:c++17 receipt.cpp ole32.lib oleaut32.lib
//     receipt.exe Till1
//
// A 64-bit program needs the x64 package and 64-bit control objects, a 32-bit one the x86 package and 32-bit ones.

#include <windows.h>

#include <oaidl.h>
#include <objbase.h>
#include <oleauto.h>

#include <iostream>
#include <stdexcept>
#include <string>

// An argument of a call, or its result.
class Value {
public:
    Value() { VariantInit(&variant); }
    Value(long number) : Value()
    {
        variant.vt = VT_I4;
        variant.lVal = number;
    }
    Value(bool truth) : Value()
    {
        variant.vt = VT_BOOL;
        variant.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    }
    Value(const std::wstring& text) : Value()
    {
        variant.vt = VT_BSTR;
        variant.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(&variant); }

    VARIANT variant;
};

class ControlObject {
public:
    explicit ControlObject(const wchar_t* progId)
    {
        CLSID id;
        if (FAILED(CLSIDFromProgID(progId, &id)) ||
            FAILED(
                CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object_))))
            throw std::runtime_error("the control object is not installed, or of the other width");
    }
    ControlObject(const ControlObject&) = delete;
    ControlObject& operator=(const ControlObject&) = delete;
    ~ControlObject() { object_->Release(); }

    // A method whose result is a result code; anything but OPOS_SUCCESS is thrown.
    template <typename... Arguments>
    void Do(const wchar_t* method, const Arguments&... arguments)
    {
        const long code = Invoke(DISPATCH_METHOD, method, arguments...);
        if (code != 0) Fail(method, code);
    }
    void Enable()
    {
        Invoke(DISPATCH_PROPERTYPUT, L"DeviceEnabled", true);
        const long code = Invoke(DISPATCH_PROPERTYGET, L"ResultCode");
        if (code != 0) Fail(L"DeviceEnabled", code);
    }

private:
    [[noreturn]] static void Fail(const std::wstring& what, long code)
    {
        throw std::runtime_error(std::string(what.begin(), what.end()) + " gives " + std::to_string(code));
    }

    template <typename... Arguments>
    long Invoke(WORD kind, const wchar_t* name, const Arguments&... arguments)
    {
        Value given[] = {Value(arguments)..., Value()};
        VARIANT reversed[sizeof...(Arguments) + 1];
        for (std::size_t i = 0; i < sizeof...(Arguments); ++i)
            reversed[sizeof...(Arguments) - 1 - i] = given[i].variant;
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        DISPID id, put = DISPID_PROPERTYPUT;
        DISPPARAMS parameters = {reversed, nullptr, static_cast<UINT>(sizeof...(Arguments)), 0};
        if (kind == DISPATCH_PROPERTYPUT) {
            parameters.rgdispidNamedArgs = &put;
            parameters.cNamedArgs = 1;
        }
        Value answer;
        HRESULT result = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
        if (SUCCEEDED(result))
            result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, &answer.variant, nullptr,
                                     nullptr);
        if (FAILED(result)) Fail(name, result);
        return answer.variant.vt == VT_I4 ? answer.variant.lVal : 0;
    }

    IDispatch* object_ = nullptr;
};

int wmain(int argc, wchar_t** argv)
{
    const std::wstring device = argc > 1 ? argv[1] : L"Till1";
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // whose events arrive in the thread's message loop
    try {
        // The printer comes first, and goes last: the drawer works through it.
        ControlObject printer(L"OPOS.POSPrinter");
        printer.Do(L"Open", device);
        printer.Do(L"ClaimDevice", 1000L);
        printer.Enable();
        ControlObject drawer(L"OPOS.CashDrawer");
        drawer.Do(L"Open", device);
        drawer.Do(L"ClaimDevice", 0L);
        drawer.Enable();

        constexpr long kReceipt = 2;  // PTR_S_RECEIPT
        printer.Do(L"PrintNormal", kReceipt, std::wstring(L"\x1B|cA\x1B|4CCorner Coffee\n"));
        printer.Do(L"PrintNormal", kReceipt, std::wstring(L"2 x Flat White              7,80\n"));
        printer.Do(L"PrintNormal", kReceipt, std::wstring(L"\x1B|bCTOTAL                   EUR 7,80\n"));
        printer.Do(L"CutPaper", 100L);
        drawer.Do(L"OpenDrawer");

        drawer.Do(L"Close");
        printer.Do(L"Close");
        std::cout << "printed\n";
    } catch (const std::exception& error) {
        std::cerr << error.what() << "; the log of the driver says more (LogEnabled=3)\n";
        return 1;
    }
    CoUninitialize();
    return 0;
}
