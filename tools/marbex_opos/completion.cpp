#include "marbex_opos/completion.h"

#include <algorithm>
#include <cctype>

#include "marbex_opos/constant_table.h"
#include "marbex_opos/method_table.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kEventWords[] = {"StatusUpdateEvent", "OutputCompleteEvent", "ErrorEvent", "DirectIOEvent",
                                            "any"};
constexpr std::string_view kAnswerWords[] = {"retry", "clear", "none"};
constexpr std::string_view kStatementWords[] = {"wait ", "expect ", "answer ", "release ", "quit"};

bool StartsWithName(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && platform::SameName(text.substr(0, prefix.size()), prefix);
}

bool IsNamePart(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Whether the end of the line stands inside double quotes.
bool IsInText(std::string_view line)
{
    bool isIn = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (isIn && line[at] == '\\') {
            ++at;
        } else if (line[at] == '"') {
            isIn = !isIn;
        }
    }
    return isIn;
}

class Collector {
public:
    explicit Collector(std::string_view typed) : typed_(typed) {}

    void Offer(std::string_view name, std::string_view ending = {})
    {
        if (StartsWithName(name, typed_)) found_.push_back(std::string(name) + std::string(ending));
    }
    void OfferMembers(ObjectKind kind)
    {
        for (const Method& method : MethodsOf(kind))
            Offer(method.name, method.arguments.empty() ? "()" : "(");
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

}  // namespace

Completions Complete(std::string_view line)
{
    if (IsInText(line)) return {};
    std::size_t start = line.size();
    while (start > 0 && IsNamePart(line[start - 1]))
        --start;
    const std::string_view before = line.substr(0, start);
    Collector collector(line.substr(start));

    if (before.find_first_not_of(' ') == std::string_view::npos) {
        collector.OfferObjects(".");
        collector.OfferAll(kStatementWords);
    } else if (before == "expect ") {
        collector.OfferAll(kEventWords);
    } else if (before == "answer ") {
        collector.OfferAll(kAnswerWords);
    } else if (before == "release ") {
        collector.OfferObjects("");
    } else if (before.ends_with('.') && FindObject(before.substr(0, before.size() - 1))) {
        collector.OfferMembers(*FindObject(before.substr(0, before.size() - 1)));
    } else if (before.find_first_of("(=") != std::string_view::npos) {
        for (const Constant& constant : Constants())
            collector.Offer(constant.name);
        collector.Offer("true");
        collector.Offer("false");
    }
    return {line.size() - start, collector.Sorted()};
}

std::string CommonStart(const std::vector<std::string>& candidates)
{
    if (candidates.empty()) return {};
    std::string common = candidates.front();
    for (const std::string& candidate : candidates) {
        const auto [end, _] = std::mismatch(common.begin(), common.end(), candidate.begin(), candidate.end());
        common.erase(end, common.end());
    }
    return common;
}

std::string Listed(const std::vector<std::string>& candidates)
{
    constexpr std::size_t kShown = 60;
    std::string list;
    for (std::size_t at = 0; at < candidates.size() && at < kShown; ++at)
        list += candidates[at] + "  ";
    if (candidates.size() > kShown) list += "... and " + std::to_string(candidates.size() - kShown) + " more";
    return list;
}

}  // namespace marbex::tools
