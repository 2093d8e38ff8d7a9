#pragma once

// One service object, called as a control object calls it: by name, with variants. Used on the thread that created it.

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "marbex_opos/opos/method_table.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/opos/value.h"
#include "marbex_opos/session/server_library.h"

namespace marbex::tools {

struct CallOutcome {
    std::string problem;  // not empty when the call did not reach the method
    Result result;
    std::vector<Result> inOut;  // the in/out arguments, in order, as the call left them
};

class ServiceObject {
public:
    // Null, with a reason, when the server does not make one. The registry may name another class for the ProgID.
    static std::unique_ptr<ServiceObject> Create(ServerLibrary& server, const platform::Registry& registry,
                                                 ObjectKind kind, std::string& problem);
    ~ServiceObject();  // drops the last reference
    ServiceObject(const ServiceObject&) = delete;
    ServiceObject& operator=(const ServiceObject&) = delete;

    // The control object goes where the method takes one; it must outlive this object.
    CallOutcome Call(const Method& method, std::span<const Value> arguments, IDispatch* controlObject = nullptr);

    // The same for callers that know what they call.
    CallOutcome Call(std::string_view name, std::initializer_list<Value> arguments, IDispatch* controlObject = nullptr);
    int32_t CallNumber(std::string_view name, std::initializer_list<Value> arguments,
                       IDispatch* controlObject = nullptr);  // the number, OPOS_E_FAILURE when there is none

private:
    ServiceObject(ObjectKind kind, IDispatch* dispatch) : kind_(kind), dispatch_(dispatch) {}

    ObjectKind kind_;
    IDispatch* dispatch_;
};

}  // namespace marbex::tools
