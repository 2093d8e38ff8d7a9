#pragma once

// A NativeObject is a handle by another name.

#include <windows.h>

#include "platform/kernel.h"

namespace marbex::platform {

inline NativeObject* AsNative(HANDLE handle)
{
    return static_cast<NativeObject*>(handle);
}

inline HANDLE HandleOf(NativeObject* object)
{
    return static_cast<HANDLE>(object);
}

}  // namespace marbex::platform
