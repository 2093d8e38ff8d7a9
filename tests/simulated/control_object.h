#pragma once

#include <functional>
#include <string>

#include "platform/automation.h"

namespace marbex::tests {

// One event as the control object gets it.
struct TillEvent {
    enum class Kind { kDirectIO, kError, kOutputComplete, kStatusUpdate };
    Kind kind = Kind::kDirectIO;
    int32_t first = 0;  // event number, result code, output identifier, data
    int32_t second = 0;
};

// Hands the events of the service on. Not counted.
class ControlObject final : public IDispatch {
public:
    std::function<void(const TillEvent& event, int32_t* response)> onEvent;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, OLECHAR** names, UINT, LCID, DISPID* ids) override
    {
        static const std::u16string kNames[] = {u"SODirectIO", u"SOError", u"SOOutputComplete", u"SOStatusUpdate"};
        for (DISPID id = 0; id < 4; ++id) {
            if (kNames[id] != names[0]) continue;
            ids[0] = id;
            return S_OK;
        }
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        const auto argument = [given](UINT fromFirst) -> VARIANT& {
            return given->rgvarg[given->cArgs - 1 - fromFirst];
        };
        TillEvent event{static_cast<TillEvent::Kind>(id), static_cast<int32_t>(argument(0).lVal), 0};
        int32_t* response = nullptr;
        if (event.kind == TillEvent::Kind::kError) {
            event.second = static_cast<int32_t>(argument(1).lVal);
            response = argument(3).plVal;
        }
        onEvent(event, response);
        return S_OK;
    }
};

}  // namespace marbex::tests
