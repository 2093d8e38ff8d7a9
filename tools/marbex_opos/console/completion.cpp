#include "marbex_opos/console/completion.h"

#include <algorithm>
#include <cctype>

#include "marbex_opos/opos/constant_table.h"
#include "marbex_opos/opos/method_table.h"
#include "marbex_opos/opos/value.h"
#include "marbex_opos/session/device_names.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kEventWords[] = {"StatusUpdateEvent", "OutputCompleteEvent", "ErrorEvent", "DirectIOEvent",
                                            "any"};
constexpr std::string_view kAnswerWords[] = {"retry", "clear", "none"};
constexpr std::string_view kStatementWords[] = {"wait ", "expect ", "require ", "answer ", "release ", "help ", "quit"};
constexpr std::size_t kMostListed = 200;

bool StartsWithName(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && platform::SameName(text.substr(0, prefix.size()), prefix);
}

bool IsNamePart(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Where the text begins that the end of the line stands in, behind its quote; none when it stands in no text.
std::optional<std::size_t> OpenText(std::string_view line)
{
    std::optional<std::size_t> start;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (start && line[at] == '\\') {
            ++at;
        } else if (line[at] == '"') {
            start = start ? std::nullopt : std::optional(at + 1);
        }
    }
    return start;
}

bool ContinuesCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Whether the text before a place in UTF-8 ends in the middle of a character.
bool IsInsideCharacter(std::string_view utf8, std::size_t at)
{
    return at < utf8.size() && ContinuesCharacter(utf8[at]);
}

std::size_t CharactersIn(std::string_view utf8)
{
    return utf8.size() - static_cast<std::size_t>(std::ranges::count_if(utf8, ContinuesCharacter));
}

class Collector {
public:
    explicit Collector(std::string_view typed) : typed_(typed) {}

    void Offer(std::string_view name, std::string_view ending = {})
    {
        if (StartsWithName(name, typed_)) found_.push_back(std::string(name) + std::string(ending));
    }
    void OfferMembers(ObjectKind kind, bool withBrackets)
    {
        for (const Method& method : MethodsOf(kind))
            Offer(method.name, !withBrackets ? "" : method.arguments.empty() ? "()" : "(");
        for (const Property& property : PropertiesOf(kind))
            Offer(property.name);
    }
    void OfferObjects(std::string_view ending)
    {
        for (const ObjectClass& object : kObjectClasses)
            Offer(object.name, ending);
    }
    template <typename Words>
    void OfferAll(const Words& words)
    {
        for (const std::string_view word : words)
            Offer(word);
    }
    std::vector<std::string> Sorted()
    {
        std::sort(found_.begin(), found_.end());
        return std::move(found_);
    }

private:
    std::string_view typed_;
    std::vector<std::string> found_;
};

// The text arguments of an OpenService: the class, then the device. before: the line up to the open quote.
Completions CompleteOpening(std::string_view before, std::string_view typed, const platform::Registry& registry)
{
    const std::size_t dot = before.find('.');
    const std::size_t bracket = before.find('(');
    if (dot == std::string_view::npos || bracket == std::string_view::npos || bracket < dot) return {};
    const auto object = FindObject(before.substr(0, dot));
    const std::string_view method = before.substr(dot + 1, bracket - dot - 1);
    const bool isNet = platform::SameName(method, "OpenService_NET");
    if (!object || (!isNet && !platform::SameName(method, "OpenService"))) return {};

    Collector collector(typed);
    const auto commas = std::ranges::count(before.substr(bracket), ',');
    if (commas == 0) {
        collector.Offer(ClassOf(*object).name);
        return {std::string(typed), collector.Sorted(), "\", \""};
    }
    if (commas > 1) return {};
    for (const std::string& name : DeviceNames(registry, *object)) {
        const std::string quoted = Quoted(platform::Utf16FromUtf8(name));
        collector.Offer(std::string_view(quoted).substr(1, quoted.size() - 2));
    }
    return {std::string(typed), collector.Sorted(), isNet ? "\", \"" : "\")"};
}

void OfferStatement(Collector& collector, std::string_view before)
{
    const std::size_t start = before.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        collector.OfferObjects(".");
        collector.OfferAll(kStatementWords);
        return;
    }
    before.remove_prefix(start);
    constexpr std::string_view kHelp = "help ";
    const std::string_view object = before.starts_with(kHelp) ? before.substr(kHelp.size()) : before;
    if (before == "expect " || before == "require ") {
        collector.OfferAll(kEventWords);
    } else if (before == "answer ") {
        collector.OfferAll(kAnswerWords);
    } else if (before == "release " || before == kHelp) {
        collector.OfferObjects("");
    } else if (object.ends_with('.') && FindObject(object.substr(0, object.size() - 1))) {
        collector.OfferMembers(*FindObject(object.substr(0, object.size() - 1)), object.size() == before.size());
    } else if (before.find_first_of("(=") != std::string_view::npos) {
        for (const Constant& constant : Constants())
            collector.Offer(constant.name);
        collector.Offer("true");
        collector.Offer("false");
    }
}

}  // namespace

std::optional<std::string> Completions::Replacement() const
{
    if (candidates.empty()) return std::nullopt;
    if (candidates.size() == 1) return candidates.front() + ending;
    std::string common = candidates.front();
    for (const std::string& candidate : candidates) {
        const auto [end, _] = std::mismatch(common.begin(), common.end(), candidate.begin(), candidate.end());
        common.erase(end, common.end());
    }
    while (!common.empty() && IsInsideCharacter(candidates.front(), common.size()))
        common.pop_back();
    if (common.size() <= typed.size()) return std::nullopt;
    return common;
}

Completions Complete(std::string_view line, const platform::Registry& registry)
{
    if (const std::optional<std::size_t> text = OpenText(line)) {
        return CompleteOpening(line.substr(0, *text - 1), line.substr(*text), registry);
    }
    std::size_t start = line.size();
    while (start > 0 && IsNamePart(line[start - 1]))
        --start;
    Collector collector(line.substr(start));
    OfferStatement(collector, line.substr(0, start));
    return {std::string(line.substr(start)), collector.Sorted(), {}};
}

std::string InColumns(const std::vector<std::string>& names, std::size_t width)
{
    constexpr std::size_t kGap = 2;
    const std::size_t shown = std::min(names.size(), kMostListed);
    std::size_t widest = 0;
    for (std::size_t at = 0; at < shown; ++at)
        widest = std::max(widest, CharactersIn(names[at]));
    const std::size_t columns = std::max<std::size_t>(1, (width + kGap) / (widest + kGap));
    const std::size_t rows = (shown + columns - 1) / columns;
    std::string text;
    for (std::size_t row = 0; row < rows; ++row) {
        if (row > 0) text += '\n';
        for (std::size_t at = row; at < shown; at += rows) {
            text += names[at];
            if (at + rows < shown) text.append(widest + kGap - CharactersIn(names[at]), ' ');
        }
    }
    if (shown < names.size()) text += "\n... and " + std::to_string(names.size() - shown) + " more";
    return text;
}

}  // namespace marbex::tools
