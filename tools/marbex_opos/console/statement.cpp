#include "marbex_opos/console/statement.h"

#include "marbex_opos/console/scanner.h"
#include "opos/common.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

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

// What follows "==".
Allowed ParseAllowed(Scanner& scanner)
{
    Allowed allowed;
    do {
        allowed.push_back(scanner.TakeResult());
    } while (scanner.TakeWord("or"));
    return allowed;
}

Statement ParseCall(Scanner& scanner, ObjectKind object, std::string_view name)
{
    const Method* method = FindMethod(object, name);
    if (method == nullptr) throw SyntaxProblem("no method " + std::string(name));
    CallMethod call{object, method, {}, {}};
    if (!scanner.Take(")")) {
        do {
            call.arguments.push_back(scanner.TakeValue());
        } while (scanner.Take(","));
        scanner.Need(")");
    }
    const std::size_t expected = ArgumentKinds(*method).size() - (TakesControlObject(*method) ? 1 : 0);
    const bool isBare = call.arguments.empty() && method->alsoWithoutArguments;
    if (call.arguments.size() != expected && !isBare)
        throw SyntaxProblem("wrong number of arguments: " + Signature(*method));
    if (scanner.Take("==")) call.allowed = ParseAllowed(scanner);
    return call;
}

Statement ParseMember(Scanner& scanner, std::string_view objectName)
{
    const ObjectKind object = ObjectNamed(objectName);
    const std::string_view name = scanner.Name();
    if (name.empty()) scanner.Fail();
    if (scanner.Take("(")) return ParseCall(scanner, object, name);

    const std::optional<Property> property = FindProperty(object, name);
    if (!property) throw SyntaxProblem("no property " + std::string(name));
    const auto refuse = [&] {
        throw SyntaxProblem(std::string(property->name) + (property->IsText() ? " is a text" : " is a number"));
    };
    if (scanner.Take("==")) {
        Allowed allowed = ParseAllowed(scanner);
        for (const Result& one : allowed) {
            if (std::holds_alternative<int32_t>(one) == property->IsText()) refuse();
        }
        return ReadProperty{object, *property, std::move(allowed)};
    }
    if (!scanner.Take("=")) return ReadProperty{object, *property, {}};

    Value value = scanner.TakeValue();
    if (std::holds_alternative<std::u16string>(value) != property->IsText()) refuse();
    return WriteProperty{object, *property, std::move(value)};
}

Statement ParseExpect(Scanner& scanner, bool isRequired)
{
    const std::string name(scanner.Name());
    const std::optional<EventKind> event = FindEvent(name);
    if (!event && !platform::SameName(name, "any")) throw SyntaxProblem("no event " + name);
    return Expect{event, scanner.TakeMilliseconds(), isRequired};
}

Statement ParseAnswer(Scanner& scanner)
{
    const std::string name(scanner.Name());
    if (platform::SameName(name, "retry")) return Answer{opos::OPOS_ER_RETRY};
    if (platform::SameName(name, "clear")) return Answer{opos::OPOS_ER_CLEAR};
    if (platform::SameName(name, "none")) return Answer{std::nullopt};
    throw SyntaxProblem("no answer " + name);
}

Statement ParseHelp(Scanner& scanner)
{
    if (scanner.AtEnd()) return Help{};
    const ObjectKind object = ObjectNamed(scanner.Name());
    if (!scanner.Take(".")) return Help{object, {}};
    const std::string_view name = scanner.Name();
    if (name.empty()) scanner.Fail();
    if (const Method* method = FindMethod(object, name)) return Help{object, std::string(method->name)};
    if (const auto property = FindProperty(object, name)) return Help{object, std::string(property->name)};
    throw SyntaxProblem("no method or property " + std::string(name));
}

Statement Parse(Scanner& scanner)
{
    if (scanner.AtEnd() || scanner.Take("#")) return Nothing{};
    const std::string_view word = scanner.Name();
    if (word.empty()) scanner.Fail();
    if (scanner.Take(".")) return ParseMember(scanner, word);
    if (word == "wait") return Wait{scanner.TakeMilliseconds()};
    if (word == "expect") return ParseExpect(scanner, false);
    if (word == "require") return ParseExpect(scanner, true);
    if (word == "answer") return ParseAnswer(scanner);
    if (word == "release") return ReleaseObject{ObjectNamed(scanner.Name())};
    if (word == "quit") return Quit{};
    if (word == "help") return ParseHelp(scanner);
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

}  // namespace marbex::tools
