#include "server/automation_object.h"

namespace marbex::server {

AutomationObject::AutomationObject(const DispatchTable& table) : table_(table) {}

AutomationObject::~AutomationObject() = default;

HRESULT AutomationObject::QueryInterface(REFIID riid, void** object)
{
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!(riid == IID_IUnknown) && !(riid == IID_IDispatch)) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
}

ULONG AutomationObject::AddRef()
{
    ++uses_;
    return ++references_;
}

ULONG AutomationObject::Release()
{
    const ULONG left = --references_;
    if (left == 0) LastReferenceGone();
    Drop();
    return left;
}

void AutomationObject::Drop()
{
    if (--uses_ == 0) delete this;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfo(UINT, LCID, ITypeInfo** info)
{
    if (info != nullptr) *info = nullptr;
    return E_NOTIMPL;
}

HRESULT AutomationObject::GetIDsOfNames(REFIID riid, OLECHAR** names, UINT count, LCID, DISPID* ids)
{
    return table_.GetIDsOfNames(riid, names, count, ids);
}

HRESULT AutomationObject::Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                 EXCEPINFO* exception, UINT* argumentError)
{
    ++uses_;  // the application may release the object from inside an event handler
    const HRESULT outcome = table_.Invoke(Service(), id, riid, flags, parameters, result, exception, argumentError);
    Drop();
    return outcome;
}

}  // namespace marbex::server
