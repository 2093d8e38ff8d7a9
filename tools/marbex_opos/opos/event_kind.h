#pragma once

// The events that a service object reports.

#include <optional>
#include <string_view>

namespace marbex::tools {

enum class EventKind { kDirectIO, kError, kOutputComplete, kStatusUpdate, kData };

std::string_view EventName(EventKind kind);                 // "StatusUpdateEvent"
std::optional<EventKind> FindEvent(std::string_view name);  // without regard to case

}  // namespace marbex::tools
