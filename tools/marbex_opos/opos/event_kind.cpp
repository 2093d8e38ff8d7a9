#include "marbex_opos/opos/event_kind.h"

#include <algorithm>
#include <array>

#include "platform/registry.h"

namespace marbex::tools {

namespace {

struct NamedEvent {
    EventKind kind;
    std::string_view name;
};

constexpr std::array<NamedEvent, 5> kEvents{{
    {EventKind::kDirectIO, "DirectIOEvent"},
    {EventKind::kError, "ErrorEvent"},
    {EventKind::kOutputComplete, "OutputCompleteEvent"},
    {EventKind::kStatusUpdate, "StatusUpdateEvent"},
    {EventKind::kData, "DataEvent"},
}};

}  // namespace

std::string_view EventName(EventKind kind)
{
    return kEvents[static_cast<std::size_t>(kind)].name;
}

std::optional<EventKind> FindEvent(std::string_view name)
{
    const auto found =
        std::ranges::find_if(kEvents, [name](const NamedEvent& one) { return platform::SameName(one.name, name); });
    if (found == kEvents.end()) return std::nullopt;
    return found->kind;
}

}  // namespace marbex::tools
