#pragma once

// The console's language: what one line says.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "marbex_opos/opos/constant_table.h"
#include "marbex_opos/opos/event_kind.h"
#include "marbex_opos/opos/method_table.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/opos/value.h"

namespace marbex::tools {

struct Nothing {};  // an empty line or a comment

// What the result of a call or a read has to be, one of these; empty: any.
using Allowed = std::vector<Result>;

struct CallMethod {
    ObjectKind object;
    const Method* method;
    std::vector<Value> arguments;  // as many as the method takes, without the control object
    Allowed allowed;
};

struct ReadProperty {
    ObjectKind object;
    Property property;
    Allowed allowed;
};

struct WriteProperty {
    ObjectKind object;
    Property property;
    Value value;  // text exactly when the property is text
};

struct Wait {
    int32_t milliseconds;
};

struct Expect {
    std::optional<EventKind> event;  // none: any event
    int32_t milliseconds;
    bool isRequired = false;  // it is an error when none comes
};

struct Answer {
    std::optional<int32_t> response;  // OPOS_ER_RETRY, OPOS_ER_CLEAR, or none: leave it as it stands
};

struct ReleaseObject {
    ObjectKind object;
};

struct Quit {};

struct Help {
    std::optional<ObjectKind> object;  // none: of the language
    std::string member;                // a method's or a property's name as the standard writes it; empty: of them all
};

using Statement =
    std::variant<Nothing, CallMethod, ReadProperty, WriteProperty, Wait, Expect, Answer, ReleaseObject, Quit, Help>;

struct Misunderstood {
    std::string why;  // for a person, one line
};

std::variant<Statement, Misunderstood> ParseStatement(std::string_view line);

}  // namespace marbex::tools
