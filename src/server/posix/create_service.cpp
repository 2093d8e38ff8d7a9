#include <marbex/create_service.h>

#include <new>
#include <string_view>

#include "platform/registry.h"
#include "server/class_factories.h"

HRESULT MarbexCreateService(const char* progId, IDispatch** service)
{
    namespace server = marbex::server;
    if (service == nullptr) return E_POINTER;
    *service = nullptr;
    if (progId == nullptr) return E_POINTER;
    for (const server::CreatableClass& creatable : server::CreatableClasses()) {
        if (!marbex::platform::SameName(creatable.progId, progId)) continue;
        try {
            *service = creatable.create();
            return S_OK;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}
