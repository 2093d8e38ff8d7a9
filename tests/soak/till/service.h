#pragma once

// The service object as an application on Linux has it: the public headers, the entry points and names, and nothing of
// the driver's own code.

#include <marbex/automation.h>

#include <functional>
#include <initializer_list>
#include <string>

namespace marbex::soak {

// What the service object calls. An event runs on the thread that opened the service, in RunMessages.
class ControlObject final : public IDispatch {
public:
    std::function<void(int32_t outputId)> onComplete;
    std::function<int32_t(int32_t code, int32_t extended)> onError;  // answers RETRY (11) or CLEAR (12)
    std::function<void(int32_t data)> onStatus;

    HRESULT QueryInterface(REFIID id, void** object) override;
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override { return --references_; }  // on its owner's stack: nobody's reference ends it
    HRESULT GetTypeInfoCount(UINT* count) override;
    HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, OLECHAR** names, UINT count, LCID, DISPID* ids) override;
    HRESULT Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT*, EXCEPINFO*, UINT*) override;

private:
    ULONG references_ = 1;
};

struct Argument {
    Argument(int32_t value);
    Argument(const std::string& text);  // ASCII
    Argument(const char* text) : Argument(std::string(text)) {}
    Argument(IDispatch* object);

    VARIANT variant{};
};

// Throws std::runtime_error when a call fails as a call; what the method answers is the caller's business.
class Service {
public:
    Service();
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    int32_t Call(const char* method, std::initializer_list<Argument> arguments = {});
    int32_t Get(int32_t property) { return Call("GetPropertyNumber", {property}); }
    void Set(int32_t property, int32_t value) { Call("SetPropertyNumber", {property, value}); }

private:
    IDispatch* object_ = nullptr;
};

}  // namespace marbex::soak
