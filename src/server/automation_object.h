#pragma once

#include <atomic>
#include <utility>

#include "device/server_lock.h"
#include "server/dispatch_table.h"

namespace marbex::server {

// An automation object: IUnknown and IDispatch over a dispatch table. It begins with one reference, adds one to the
// server's lock count while it exists, and ends with its last reference; a call under way keeps it alive until it
// returns. References may be counted on any thread; the methods are called on the thread that created the object.
class AutomationObject : public IDispatch {
public:
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, OLECHAR** names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

protected:
    explicit AutomationObject(const DispatchTable& table);
    virtual ~AutomationObject();

    // The object of the table's class.
    virtual void* Service() = 0;

    // The client has given up its last reference. Follows at once, also from inside a call.
    virtual void LastReferenceGone() = 0;

private:
    void Drop();  // one of uses_

    const device::ServerLock serverLock_;
    const DispatchTable& table_;
    std::atomic<ULONG> references_{1};  // the client's
    std::atomic<ULONG> uses_{1};        // calls under way, and one for each of the client's references
};

// An automation object with its service inside. A service that has a LastReferenceGone is told.
template <typename ServiceClass>
class ServiceObject final : public AutomationObject {
public:
    // The table must be of that class.
    explicit ServiceObject(const DispatchTable& table) : AutomationObject(table) {}

private:
    void* Service() override { return &service_; }

    void LastReferenceGone() override
    {
        if constexpr (requires { service_.LastReferenceGone(); }) service_.LastReferenceGone();
    }

    ServiceClass service_;
};

}  // namespace marbex::server
