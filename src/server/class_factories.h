#pragma once

#include <span>

#include "platform/automation.h"
#include "server/automation_object.h"

namespace marbex::server {

// One creatable class of the server. Its identifier never changes: installers and control objects refer to it.
struct CreatableClass {
    const char* progId;
    CLSID classId;
    AutomationObject* (*create)();  // with one reference
};

std::span<const CreatableClass> CreatableClasses();

// Hands out the factory of a class: S_OK, CLASS_E_CLASSNOTAVAILABLE, E_NOINTERFACE or E_POINTER.
HRESULT GetClassFactory(REFCLSID classId, REFIID riid, void** object);

}  // namespace marbex::server
