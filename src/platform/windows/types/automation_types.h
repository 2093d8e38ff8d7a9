#pragma once

// COM and Automation as Windows has them, and entry points under the names its own headers give them.

// clang-format off
#include <windows.h>
#include <oaidl.h>
#include <oleauto.h>
#include <unknwn.h>
#include <objbase.h>
// clang-format on

// Macros that the headers above make of names of ours.
#undef CreateWindow
#undef DrawText
#undef GetMessage
#undef SendMessage
#undef small

// As <olectl.h> has them.
STDAPI DllRegisterServer();
STDAPI DllUnregisterServer();

// The source of a coercion is only read, whatever the published prototype says.
inline HRESULT VariantChangeType(VARIANTARG* destination, const VARIANTARG* source, USHORT flags, VARTYPE type)
{
    return VariantChangeType(destination, const_cast<VARIANTARG*>(source), flags, type);
}
