#include "marbex_opos/statement.h"

#include <array>

#include "marbex_opos/scanner.h"
#include "opos/common.h"
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

ObjectKind ObjectNamed(std::string_view name)
{
    const std::optional<ObjectKind> object = FindObject(name);
    if (!object) throw SyntaxProblem("no object " + std::string(name));
    return *object;
}

bool TakesControlObject(const Method& method)
{
    const std::vector<ArgumentKind> kinds = ArgumentKinds(method);
    return !kinds.empty() && kinds.back() == ArgumentKind::kDispatch;
}

Statement ParseCall(Scanner& scanner, ObjectKind object, std::string_view name)
{
    const Method* method = FindMethod(object, name);
    if (method == nullptr) throw SyntaxProblem("no method " + std::string(name));
    CallMethod call{object, method, {}};
    if (!scanner.Take(')')) {
        do {
            call.arguments.push_back(scanner.TakeValue());
        } while (scanner.Take(','));
        scanner.Need(')');
    }
    const std::size_t expected = ArgumentKinds(*method).size() - (TakesControlObject(*method) ? 1 : 0);
    if (call.arguments.size() != expected) throw SyntaxProblem("wrong number of arguments: " + Signature(*method));
    return call;
}

Statement ParseMember(Scanner& scanner, std::string_view objectName)
{
    const ObjectKind object = ObjectNamed(objectName);
    const std::string_view name = scanner.Name();
    if (name.empty()) scanner.Fail();
    if (scanner.Take('(')) return ParseCall(scanner, object, name);

    const std::optional<Property> property = FindProperty(object, name);
    if (!property) throw SyntaxProblem("no property " + std::string(name));
    if (!scanner.Take('=')) return ReadProperty{object, *property};

    Value value = scanner.TakeValue();
    if (std::holds_alternative<std::u16string>(value) != property->IsText()) {
        throw SyntaxProblem(std::string(property->name) + (property->IsText() ? " is a text" : " is a number"));
    }
    return WriteProperty{object, *property, std::move(value)};
}

Statement ParseExpect(Scanner& scanner)
{
    const std::string name(scanner.Name());
    std::optional<EventKind> event;
    for (const NamedEvent& candidate : kEvents) {
        if (platform::SameName(candidate.name, name)) event = candidate.kind;
    }
    if (!event && !platform::SameName(name, "any")) throw SyntaxProblem("no event " + name);
    return Expect{event, scanner.TakeMilliseconds()};
}

Statement ParseAnswer(Scanner& scanner)
{
    const std::string name(scanner.Name());
    if (platform::SameName(name, "retry")) return Answer{opos::OPOS_ER_RETRY};
    if (platform::SameName(name, "clear")) return Answer{opos::OPOS_ER_CLEAR};
    if (platform::SameName(name, "none")) return Answer{std::nullopt};
    throw SyntaxProblem("no answer " + name);
}

Statement Parse(Scanner& scanner)
{
    if (scanner.AtEnd() || scanner.Take('#')) return Nothing{};
    const std::string_view word = scanner.Name();
    if (word.empty()) scanner.Fail();
    if (scanner.Take('.')) return ParseMember(scanner, word);
    if (word == "wait") return Wait{scanner.TakeMilliseconds()};
    if (word == "expect") return ParseExpect(scanner);
    if (word == "answer") return ParseAnswer(scanner);
    if (word == "release") return ReleaseObject{ObjectNamed(scanner.Name())};
    if (word == "quit") return Quit{};
    throw SyntaxProblem("no statement " + std::string(word));
}

}  // namespace

std::variant<Statement, Misunderstood> ParseStatement(std::string_view line)
{
    try {
        Scanner scanner(line);
        Statement statement = Parse(scanner);
        if (!std::holds_alternative<Nothing>(statement)) scanner.NeedEnd();
        return statement;
    } catch (const SyntaxProblem& problem) {
        return Misunderstood{problem.what()};
    }
}

std::string_view EventName(EventKind kind)
{
    return kEvents[static_cast<std::size_t>(kind)].name;
}

}  // namespace marbex::tools
