#pragma once

// The automation ABI of libmarbexopos.so, for C++17 and later: the part of COM that a control object needs, with the
// binary layout of the 64-bit Windows headers (vtable order, VARIANT of 24 bytes, BSTR with its byte count in the four
// bytes before the text). OLECHAR is UTF-16, 16 bits a unit. Names, numbers and layouts are those of the published COM
// and Automation references.

#include <cstddef>
#include <cstdint>

// Empty here; on 32-bit Windows they name the calling convention of interfaces and entry points.
#define STDMETHODCALLTYPE
#define STDAPI extern "C" HRESULT

using HRESULT = int32_t;
using BOOL = int32_t;
using ULONG = uint32_t;
using LONG = int32_t;
using UINT = uint32_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using LCID = uint32_t;
using DISPID = int32_t;
using VARTYPE = uint16_t;
using VARIANT_BOOL = int16_t;
using SCODE = int32_t;
using OLECHAR = char16_t;
using BSTR = OLECHAR*;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFU);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = static_cast<HRESULT>(0x80020001U);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = static_cast<HRESULT>(0x80020003U);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = static_cast<HRESULT>(0x80020004U);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = static_cast<HRESULT>(0x80020006U);
inline constexpr HRESULT DISP_E_NONAMEDARGS = static_cast<HRESULT>(0x80020007U);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008U);
inline constexpr HRESULT DISP_E_EXCEPTION = static_cast<HRESULT>(0x80020009U);
inline constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000AU);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = static_cast<HRESULT>(0x8002000EU);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110U);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111U);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);

constexpr bool SUCCEEDED(HRESULT result)
{
    return result >= 0;
}
constexpr bool FAILED(HRESULT result)
{
    return result < 0;
}

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];

    friend constexpr bool operator==(const GUID& left, const GUID& right)
    {
        for (int i = 0; i < 8; ++i) {
            if (left.Data4[i] != right.Data4[i]) return false;
        }
        return left.Data1 == right.Data1 && left.Data2 == right.Data2 && left.Data3 == right.Data3;
    }
    friend constexpr bool operator!=(const GUID& left, const GUID& right) { return !(left == right); }
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr IID IID_NULL{};
inline constexpr IID IID_IUnknown{0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory{0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch{0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;  // objects are destroyed by their last Release, never through the interface
};

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF,
};

struct IDispatch;

struct VariantRecord {
    void* pvRecord;
    void* pRecInfo;
};

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        int8_t cVal;
        uint8_t bVal;
        int16_t iVal;
        uint16_t uiVal;
        int32_t lVal;
        uint32_t ulVal;
        int32_t intVal;
        uint32_t uintVal;
        int64_t llVal;
        uint64_t ullVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        void* byref;
        int16_t* piVal;
        uint16_t* puiVal;
        int32_t* plVal;
        uint32_t* pulVal;
        int64_t* pllVal;
        double* pdblVal;
        VARIANT_BOOL* pboolVal;
        BSTR* pbstrVal;
        IDispatch** ppdispVal;
        VARIANT* pvarVal;
        VariantRecord brecVal;  // gives the union its 16 bytes
    };
};
static_assert(sizeof(VARIANT) == 24 || sizeof(void*) == 4, "VARIANT has the 64-bit Windows layout");
using VARIANTARG = VARIANT;

// Arguments of a call; rgvarg holds them last first, as every IDispatch caller passes them.
struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    void* pvReserved;
    HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

struct ITypeInfo;

inline constexpr WORD VARIANT_ALPHABOOL = 2;  // VT_BOOL becomes the text "True" or "False", not "-1" or "0"
inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;
inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;

struct IDispatch : IUnknown {
    virtual HRESULT GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT GetIDsOfNames(REFIID riid, OLECHAR** rgszNames, UINT cNames, LCID lcid, DISPID* rgDispId) = 0;
    virtual HRESULT Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags, DISPPARAMS* pDispParams,
                           VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;

protected:
    ~IDispatch() = default;
};

struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
    virtual HRESULT LockServer(BOOL fLock) = 0;

protected:
    ~IClassFactory() = default;
};

#pragma GCC visibility push(default)

// Text and variants that cross the border come from this one allocator (malloc), whichever side frees them.
// Strings may hold U+0000; a null BSTR is empty text.
extern "C" {
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);  // length in UTF-16 units
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);      // in UTF-16 units; 0 for null
UINT SysStringByteLen(BSTR text);  // in bytes; 0 for null
void VariantInit(VARIANT* variant);
HRESULT VariantClear(VARIANT* variant);  // frees a BSTR, releases an interface; by-reference values are left alone

// Coerces a value; source and destination may be one. By-reference values are followed. Between the integer widths,
// VT_R4, VT_R8, VT_BOOL and decimal text in VT_BSTR; from VT_EMPTY, VT_CY and VT_DATE to those. Reals round to the
// nearest integer, halves to the even one. DISP_E_OVERFLOW when the number does not fit, DISP_E_TYPEMISMATCH when there
// is no such conversion or the text is no number; destination is then unchanged. Flags: VARIANT_ALPHABOOL or 0.
HRESULT VariantChangeType(VARIANT* destination, const VARIANT* source, WORD flags, VARTYPE type);
}

// The entry points that libmarbexopos.so exports.
extern "C" {
HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
HRESULT DllCanUnloadNow();
HRESULT DllRegisterServer();
HRESULT DllUnregisterServer();
}

#pragma GCC visibility pop
