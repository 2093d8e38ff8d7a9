#include "virtual_printer/operator/occasion.h"

#include <array>
#include <charconv>
#include <sstream>
#include <string_view>
#include <utility>

namespace marbex::virtual_printer {
namespace {

using Count = PrinterServer::Count;

// "line", or "lines".
std::optional<Count> CountNamed(std::string_view word)
{
    constexpr std::array<std::pair<std::string_view, Count>, 3> kNames{
        {{"byte", Count::kBytes}, {"line", Count::kLines}, {"cut", Count::kCuts}}};
    if (word.ends_with('s')) {
        word.remove_suffix(1);
    }
    for (const auto& [name, count] : kNames) {
        if (word == name) {
            return count;
        }
    }
    return std::nullopt;
}

std::optional<uint64_t> NumberIn(std::string_view text)
{
    uint64_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return whole && number < uint64_t{1} << 62U ? std::optional(number) : std::nullopt;
}

std::string Rest(std::istringstream& stream)
{
    std::string rest;
    std::getline(stream >> std::ws, rest);
    return rest;
}

}  // namespace

std::optional<Occasion> ParseOccasion(const std::string& text)
{
    const std::size_t colon = text.find(':');
    std::istringstream stream(text.substr(0, colon));
    std::string when;
    std::string first;
    std::string second;
    stream >> when >> first;
    std::optional<uint64_t> number = NumberIn(first);
    Occasion occasion;
    occasion.further = when == "after";
    if (when == "at" && number) {
        // Of bytes, and without a colon.
        std::istringstream whole(text);
        whole >> when >> first;
        occasion.command = Rest(whole);
    } else if ((when == "after" || when == "at") && colon != std::string::npos && stream >> second &&
               Rest(stream).empty()) {
        const auto what = CountNamed(occasion.further ? second : first);
        number = occasion.further ? number : NumberIn(second);
        if (!what) {
            return std::nullopt;
        }
        occasion.what = *what;
        std::istringstream behind(text.substr(colon + 1));
        occasion.command = Rest(behind);
    }
    if (!number || occasion.command.empty()) {
        return std::nullopt;
    }
    occasion.count = *number;
    return occasion;
}

}  // namespace marbex::virtual_printer
