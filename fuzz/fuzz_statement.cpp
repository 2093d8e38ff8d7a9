// A line typed into the console is understood, or refused with one line of reasons; what is offered to follow it begins
// with what was typed.

#include <algorithm>

#include "common/code_page_registry.h"
#include "marbex_opos/console/completion.h"
#include "marbex_opos/console/help.h"
#include "marbex_opos/console/line_buffer.h"
#include "marbex_opos/console/statement.h"
#include "must.h"

using namespace marbex;
using fuzz::Must;

namespace {

// All lines of the input, when it comes in pieces of so many bytes.
std::vector<std::string> Lines(std::string_view input, std::size_t piece)
{
    tools::LineBuffer buffer;
    std::vector<std::string> lines;
    for (; !input.empty(); input.remove_prefix(std::min(piece, input.size()))) {
        buffer.Append(input.substr(0, piece));
        while (auto line = buffer.TakeLine())
            lines.push_back(std::move(*line));
    }
    if (auto rest = buffer.TakeRest()) lines.push_back(std::move(*rest));
    return lines;
}

void Check(const tools::Statement& statement)
{
    if (const auto* call = std::get_if<tools::CallMethod>(&statement)) {
        const auto kinds = tools::ArgumentKinds(*call->method);
        const auto supplied = std::ranges::count(kinds, tools::ArgumentKind::kDispatch);
        const std::size_t wanted = kinds.size() - static_cast<std::size_t>(supplied);
        Must(call->arguments.size() == wanted || (call->method->alsoWithoutArguments && call->arguments.empty()));
    } else if (const auto* write = std::get_if<tools::WriteProperty>(&statement)) {
        Must(write->property.IsText() == std::holds_alternative<std::u16string>(write->value));
    } else if (const auto* help = std::get_if<tools::Help>(&statement)) {
        Must(tools::HelpText(*help).ends_with('\n'));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(bytes), size);
    const std::vector<std::string> lines = Lines(input, input.size());
    Must(lines == Lines(input, 1));
    const test::CodePageRegistry registry("1252");
    for (const std::string& line : lines) {
        Must(line.find('\n') == std::string::npos);
        const auto parsed = tools::ParseStatement(line);
        if (const auto* problem = std::get_if<tools::Misunderstood>(&parsed)) {
            Must(!problem->why.empty() && problem->why.find('\n') == std::string::npos);
        } else {
            Check(std::get<tools::Statement>(parsed));
        }
        const tools::Completions offered = tools::Complete(line, registry);
        Must(line.ends_with(offered.typed) && std::ranges::is_sorted(offered.candidates));
        for (const std::string& candidate : offered.candidates)
            Must(platform::SameName(candidate.substr(0, offered.typed.size()), offered.typed));
        Must(!tools::InColumns(offered.candidates, 80).ends_with('\n'));
    }
    return 0;
}
