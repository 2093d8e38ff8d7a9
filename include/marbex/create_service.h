#pragma once

// The short way to a service object: no registration, no class factory.

#include <marbex/automation.h>

#pragma GCC visibility push(default)
extern "C" {

// Makes the service object of a ProgID (marbex/class_ids.h), without regard to case, with one reference. May be called
// on any thread; the object belongs to the thread that calls its OpenService. E_POINTER when either argument is null,
// CLASS_E_CLASSNOTAVAILABLE when the server has no such class, E_OUTOFMEMORY; *service is then null.
HRESULT MarbexCreateService(const char* progId, IDispatch** service);
}
#pragma GCC visibility pop
