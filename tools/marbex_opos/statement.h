#pragma once

// The console's language: what one line says.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "marbex_opos/constant_table.h"
#include "marbex_opos/method_table.h"
#include "marbex_opos/object_kind.h"
#include "marbex_opos/value.h"

namespace marbex::tools {

enum class EventKind { kDirectIO, kError, kOutputComplete, kStatusUpdate, kData };

struct Nothing {};  // an empty line or a comment

struct CallMethod {
    ObjectKind object;
    const Method* method;
    std::vector<Value> arguments;  // as many as the method takes, without the control object
};

struct ReadProperty {
    ObjectKind object;
    Property property;
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
};

struct Answer {
    std::optional<int32_t> response;  // OPOS_ER_RETRY, OPOS_ER_CLEAR, or none: leave it as it stands
};

struct ReleaseObject {
    ObjectKind object;
};

struct Quit {};

using Statement =
    std::variant<Nothing, CallMethod, ReadProperty, WriteProperty, Wait, Expect, Answer, ReleaseObject, Quit>;

struct Misunderstood {
    std::string why;  // for a person, one line
};

std::variant<Statement, Misunderstood> ParseStatement(std::string_view line);

std::string_view EventName(EventKind kind);  // "StatusUpdateEvent"

}  // namespace marbex::tools
