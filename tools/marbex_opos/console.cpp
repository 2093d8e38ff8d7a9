#include "marbex_opos/console.h"

#include <algorithm>

namespace marbex::tools {

Console::Console(std::string serverPath, bool echo, std::function<void(std::string_view)> print)
    : print_(std::move(print)),
      session_(std::move(serverPath), [this](const Event& event) { OnEvent(event); }),
      echo_(echo)
{
}

void Console::Execute(std::string_view line)
{
    ++lineNumber_;
    const auto parsed = ParseStatement(line);
    const auto* statement = std::get_if<Statement>(&parsed);
    const bool isNothing = statement != nullptr && std::holds_alternative<Nothing>(*statement);
    if (echo_ && !isNothing) print_("> " + std::string(line));
    if (statement == nullptr) {
        Complain(std::get<Misunderstood>(parsed).why);
        return;
    }
    std::visit([this](const auto& what) { Run(what); }, *statement);
}

void Console::Run(const CallMethod& call)
{
    ServiceObject* object = Need(call.object);
    if (object == nullptr) return;
    PrintOutcome(object->Call(*call.method, call.arguments, session_.ControlObjectOf(call.object)));
}

void Console::Run(const ReadProperty& read)
{
    ServiceObject* object = Need(read.object);
    if (object == nullptr) return;
    PrintOutcome(
        object->Call(read.property.IsText() ? "GetPropertyString" : "GetPropertyNumber", {read.property.index}));
}

void Console::Run(const WriteProperty& write)
{
    ServiceObject* object = Need(write.object);
    if (object == nullptr) return;
    CallOutcome outcome = object->Call(write.property.IsText() ? "SetPropertyString" : "SetPropertyNumber",
                                       {write.property.index, write.value});
    outcome.result = {};
    PrintOutcome(outcome);
}

void Console::Run(const Wait& wait)
{
    session_.RunMessagesUntil(wait.milliseconds, [] { return false; });
    PrintDone();
}

void Console::Run(const Expect& expect)
{
    const bool came = session_.RunMessagesUntil(expect.milliseconds, [&] { return TakeArrived(expect); });
    print_(came ? "= 0" : "= 1");
}

void Console::Run(const Answer& answer)
{
    session_.AnswerErrors(answer.response);
    PrintDone();
}

void Console::Run(const ReleaseObject& release)
{
    session_.Release(release.object);
    PrintDone();
}

void Console::Run(const Quit&)
{
    hasQuit_ = true;
}

void Console::OnEvent(const Event& event)
{
    arrived_.push_back(event.kind);
    print_("! " + std::string(EventName(event.kind)) + " " + std::string(ClassOf(event.object).name) + " " +
           event.arguments);
}

bool Console::TakeArrived(const Expect& expect)
{
    const auto found = std::find_if(arrived_.begin(), arrived_.end(),
                                    [&](EventKind kind) { return !expect.event || *expect.event == kind; });
    if (found == arrived_.end()) return false;
    arrived_.erase(found);
    return true;
}

ServiceObject* Console::Need(ObjectKind kind)
{
    std::string problem;
    ServiceObject* object = session_.Object(kind, problem);
    if (object == nullptr) Complain(std::string(ClassOf(kind).name) + " cannot be created: " + problem);
    return object;
}

void Console::PrintOutcome(const CallOutcome& outcome)
{
    if (!outcome.problem.empty()) {
        Complain(outcome.problem);
        return;
    }
    std::string line = "=";
    if (!std::holds_alternative<std::monostate>(outcome.result)) line += " " + Printed(outcome.result);
    for (const Result& inOut : outcome.inOut)
        line += " &" + Printed(inOut);
    print_(line);
}

void Console::Complain(std::string_view why)
{
    hasComplained_ = true;
    print_("? line " + std::to_string(lineNumber_) + ": " + std::string(why));
}

}  // namespace marbex::tools
