#pragma once

// The control object's side: the IDispatch through which a service object reports events.

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "marbex_opos/opos/event_kind.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/opos/value.h"
#include "platform/automation.h"

namespace marbex::tools {

struct Event {
    EventKind kind;
    ObjectKind object;
    std::vector<Result> arguments;  // numbers and texts
};

// "ErrorEvent POSPrinter 114 201 1 12"; with names, what the standard calls the codes stands behind them.
std::string Described(const Event& event, bool withNames);

// The device keeps no reference to it: it lives until every service object that was given it is gone. Called on the
// thread that opened the service, while it runs messages.
class ControlObject final : public IDispatch {
public:
    using Listener = std::function<void(const Event&)>;

    ControlObject(ObjectKind object, Listener listener) : object_(object), listener_(std::move(listener)) {}

    // What error events are answered from now on; none leaves the response as it stands.
    void AnswerErrors(std::optional<int32_t> response) { errorResponse_ = response; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, OLECHAR** rgszNames, UINT cNames, LCID lcid,
                                            DISPID* rgDispId) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags, DISPPARAMS* pDispParams,
                                     VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) override;

private:
    ObjectKind object_;
    Listener listener_;
    std::optional<int32_t> errorResponse_;
    std::atomic<ULONG> references_{1};
};

}  // namespace marbex::tools
