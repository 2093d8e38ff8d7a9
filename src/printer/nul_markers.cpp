#include "printer/nul_markers.h"

#include "support/printer_tables.h"

namespace marbex::printer {

std::string_view ReplaceNulMarkers(std::string_view text, std::string& storage)
{
    std::size_t marker = text.find(support::kNulMarker);
    if (marker == std::string_view::npos) return text;

    storage.clear();
    storage.reserve(text.size());
    std::size_t from = 0;
    while (marker != std::string_view::npos) {
        storage.append(text, from, marker - from);
        storage.push_back('\0');
        from = marker + support::kNulMarker.size();
        marker = text.find(support::kNulMarker, from);
    }
    storage.append(text, from);
    return storage;
}

}  // namespace marbex::printer
