#pragma once

#include "platform/automation.h"

namespace marbex::platform {

// Answers each method with its own number, to be called by its place in the vtable.
struct Numbered : IDispatch {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return 100; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 101; }
    ULONG STDMETHODCALLTYPE Release() override { return 102; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return 103; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return 104; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID*) override { return 105; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT* argument) override
    {
        *argument = flags;
        return id + (riid == IID_NULL ? 6 : 0);
    }
};

}  // namespace marbex::platform
