#include "marbex_opos/console/console.h"

#include <algorithm>
#include <sstream>

#include "marbex_opos/console/help.h"
#include "marbex_opos/session/device_names.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

// What names the number that a method returns.
NameSets NamesOfCall(const CallMethod& call)
{
    if (call.method->name != "GetPropertyNumber") return NamesOfMethod(call.method->name);
    const auto* index = std::get_if<int32_t>(&call.arguments.front());
    for (const Property& property : PropertiesOf(call.object)) {
        if (index != nullptr && property.index == *index) return NamesOfProperty(call.object, property.name);
    }
    return {};
}

// The arguments of a call. Where it opens a device the control object's part is done: what stands in the place of a
// logical name is the device it leads to.
std::vector<Value> WithDeviceName(const CallMethod& call)
{
    std::vector<Value> arguments = call.arguments;
    if (!call.method->name.starts_with("OpenService") || arguments.size() < 2) return arguments;
    const auto* className = std::get_if<std::u16string>(&arguments[0]);
    const auto* name = std::get_if<std::u16string>(&arguments[1]);
    if (className == nullptr || name == nullptr) return arguments;
    const std::string device = platform::Utf8FromUtf16(*name);
    const std::string resolved =
        ResolvedDeviceName(platform::SystemRegistry(), platform::Utf8FromUtf16(*className), device);
    if (resolved != device) arguments[1] = platform::Utf16FromUtf8(resolved);
    return arguments;
}

// "102 (OPOS_E_CLAIMED), expected 0 or 106 (OPOS_E_ILLEGAL)"
std::string Unexpected(const Result& result, const NameSets& names, const Allowed& allowed)
{
    const std::string got = Printed(result, names);
    std::string text = (got.empty() ? "no result" : got) + ", expected ";
    for (std::size_t at = 0; at < allowed.size(); ++at)
        text += (at == 0 ? "" : " or ") + Printed(allowed[at], names);
    return text;
}

}  // namespace

Console::Console(std::string serverPath, ConsoleSwitches switches, std::function<void(std::string_view)> print)
    : print_(std::move(print)),
      session_(std::move(serverPath), [this](const Event& event) { OnEvent(event); }),
      switches_(switches)
{
}

void Console::Execute(std::string_view line)
{
    ++lineNumber_;
    const auto parsed = ParseStatement(line);
    const auto* statement = std::get_if<Statement>(&parsed);
    const bool isNothing = statement != nullptr && std::holds_alternative<Nothing>(*statement);
    if (switches_.echo && !isNothing) print_("> " + std::string(line));
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
    Report(object->Call(*call.method, WithDeviceName(call), session_.ControlObjectOf(call.object)), NamesOfCall(call),
           call.allowed);
}

void Console::Run(const ReadProperty& read)
{
    ServiceObject* object = Need(read.object);
    if (object == nullptr) return;
    const char* getter = read.property.IsText() ? "GetPropertyString" : "GetPropertyNumber";
    Report(object->Call(getter, {read.property.index}), NamesOfProperty(read.object, read.property.name), read.allowed);
}

void Console::Run(const WriteProperty& write)
{
    ServiceObject* object = Need(write.object);
    if (object == nullptr) return;
    CallOutcome outcome = object->Call(write.property.IsText() ? "SetPropertyString" : "SetPropertyNumber",
                                       {write.property.index, write.value});
    outcome.result = {};
    Report(outcome);
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
    if (came || !expect.isRequired) return;
    const std::string_view event = expect.event ? EventName(*expect.event) : "event";
    Complain("no " + std::string(event) + " within " + std::to_string(expect.milliseconds) + " ms");
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

void Console::Run(const Help& help)
{
    std::istringstream lines(HelpText(help));
    for (std::string line; std::getline(lines, line);)
        print_(line);
}

void Console::OnEvent(const Event& event)
{
    arrived_.push_back(event.kind);
    print_("! " + Described(event, switches_.names));
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

void Console::Report(const CallOutcome& outcome, const NameSets& names, const Allowed& allowed)
{
    if (!outcome.problem.empty()) {
        Complain(outcome.problem);
        return;
    }
    std::string line = "=";
    if (!std::holds_alternative<std::monostate>(outcome.result)) {
        line += " " + Printed(outcome.result, switches_.names ? names : NameSets());
    }
    for (const Result& inOut : outcome.inOut)
        line += " &" + Printed(inOut);
    print_(line);
    if (allowed.empty() || std::ranges::find(allowed, outcome.result) != allowed.end()) return;
    Complain(Unexpected(outcome.result, names, allowed));
}

void Console::Complain(std::string_view why)
{
    hasComplained_ = true;
    print_("? line " + std::to_string(lineNumber_) + ": " + std::string(why));
}

}  // namespace marbex::tools
