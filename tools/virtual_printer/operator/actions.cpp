// What the operator can do with the printer: one function a command, which says what is wrong with its argument or how
// it is done.

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "virtual_printer/operator/commands.h"

namespace marbex::virtual_printer {
namespace {

constexpr unsigned kMostWaiting = 1000;                         // faults that wait for their time
constexpr std::chrono::milliseconds::rep kLongest = 3'600'000;  // an hour
constexpr std::chrono::milliseconds kUsualCycle{2000};

template <class T>
std::optional<T> NumberIn(const std::string& text, T most = std::numeric_limits<T>::max())
{
    T number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return whole && number <= most ? std::optional(number) : std::nullopt;
}

std::optional<std::chrono::milliseconds> TimeIn(const std::string& text)
{
    const auto number = NumberIn<std::chrono::milliseconds::rep>(text, kLongest);
    return number && *number >= 0 ? std::optional(std::chrono::milliseconds(*number)) : std::nullopt;
}

std::optional<Bytes> HexIn(const std::string& text)
{
    Bytes bytes;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(' ', at)) != std::string::npos) {
        unsigned value = 0;
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const auto parsed = std::from_chars(text.data() + at, text.data() + end, value, 16);
        if (parsed.ec != std::errc() || parsed.ptr != text.data() + end || value > 0xFF) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<uint8_t>(value));
        at = end;
    }
    return bytes.empty() ? std::nullopt : std::optional(bytes);
}

using Understood = Operator::Understood;

Understood Wrong(std::string problem)
{
    return {std::move(problem), {}};
}

// What cannot go wrong any more.
Understood Right(std::function<void()> deed)
{
    return {{}, [deed = std::move(deed)] {
                deed();
                return std::string();
            }};
}

// One of two things.
template <class Deed>
Understood Either(const std::string& argument, const char* yes, const char* no, Deed deed)
{
    if (argument != yes && argument != no) {
        return Wrong(std::string(yes) + " or " + no + " expected");
    }
    return Right([deed, is = argument == yes] { deed(is); });
}

// A number.
template <class T, class Deed>
Understood Amount(const std::optional<T>& number, const char* expected, Deed deed)
{
    if (!number) {
        return Wrong(std::string(expected) + " expected");
    }
    return Right([deed, number = *number] { deed(number); });
}

}  // namespace

const std::vector<Operator::Action> Operator::kActions{
    {"cover", &Operator::Cover},   {"paper", &Operator::PaperIs},     {"jam", &Operator::Jam},
    {"mute", &Operator::Mute},     {"garbage", &Operator::Garbage},   {"printing", &Operator::Printing},
    {"drawer", &Operator::Drawer}, {"power", &Operator::Power},       {"drop", &Operator::Drop},
    {"refuse", &Operator::Refuse}, {"slow", &Operator::Slow},         {"speed", &Operator::Speed},
    {"half", &Operator::Half},     {"status", &Operator::HalfStatus}, {"say", &Operator::SayToTill},
    {"tear", &Operator::Tear},     {"ticket", &Operator::Ticket},     {"save", &Operator::Save},
};

Understood Operator::Understand(const std::string& line)
{
    const Words words = Split(line);
    if (words.name == "at" || words.name == "after") {
        return Later(line);
    }
    const auto found =
        std::find_if(kActions.begin(), kActions.end(), [&](const Action& one) { return one.first == words.name; });
    return found == kActions.end() ? Wrong("no such command") : (this->*found->second)(words.argument);
}

std::string Operator::Do(const Understood& understood)
{
    if (!understood.problem.empty()) {
        return understood.problem;
    }
    try {
        return understood.deed();
    } catch (const std::system_error& error) {
        return error.what();
    }
}

Understood Operator::Cover(const std::string& argument)
{
    return Either(argument, "open", "close", [this](bool open) { server_->SetCover(open); });
}

Understood Operator::PaperIs(const std::string& argument)
{
    if (argument != "ok" && argument != "low" && argument != "out") {
        return Wrong("ok, low or out expected");
    }
    const PaperState state = argument == "ok"    ? PaperState::kOk
                             : argument == "low" ? PaperState::kLow
                                                 : PaperState::kOut;
    return Right([this, state] { server_->SetPaper(state); });
}

Understood Operator::Jam(const std::string& argument)
{
    if (!model_->tellsPrinting) {
        return Wrong(std::string(model_->name) + " has no paper jam");
    }
    return Either(argument, "on", "off", [this](bool on) { server_->SetJam(on); });
}

Understood Operator::Mute(const std::string& argument)
{
    return Either(argument, "on", "off", [this](bool on) { server_->SetMute(on); });
}

Understood Operator::Garbage(const std::string& argument)
{
    return Either(argument, "on", "off", [this](bool on) { server_->SetGarbage(on); });
}

Understood Operator::Printing(const std::string& argument)
{
    if (!model_->tellsPrinting) {
        return Wrong(std::string(model_->name) + " does not tell whether it is printing");
    }
    return Either(argument, "hold", "release", [this](bool hold) { server_->SetPrintingHeld(hold); });
}

Understood Operator::Drawer(const std::string& argument)
{
    if (argument == "open" || argument == "close") {
        return Right([this, open = argument == "open"] { recorder_->MoveDrawer(open); });
    }
    if (argument != "high" && argument != "low") {
        return Wrong("open, close, high or low expected");
    }
    return Right([this, high = argument == "high"] { server_->SetDrawerSignal(high); });
}

Understood Operator::Power(const std::string& argument)
{
    if (argument == "on" || argument == "off") {
        return Right([this, on = argument == "on"] { server_->SetPower(on); });
    }
    const auto time = argument == "cycle"              ? std::optional(kUsualCycle)
                      : argument.starts_with("cycle ") ? TimeIn(argument.substr(6))
                                                       : std::nullopt;
    return Amount(time, "on, off or cycle MILLISECONDS", [this](auto off) { server_->PowerCycle(off); });
}

Understood Operator::Drop(const std::string& argument)
{
    return argument.empty() ? Right([this] { server_->Drop(); }) : Wrong("nothing more expected");
}

Understood Operator::Refuse(const std::string& argument)
{
    if (argument == "on" || argument == "off") {
        return Right([this, on = argument == "on"] { server_->Refuse(on); });
    }
    return Amount(TimeIn(argument), "on, off or milliseconds", [this](auto time) { server_->RefuseFor(time); });
}

Understood Operator::Slow(const std::string& argument)
{
    return Amount(NumberIn<uint32_t>(argument), "bytes per second, 0 for no limit,",
                  [this](uint32_t pace) { server_->Slow(pace); });
}

Understood Operator::Speed(const std::string& argument)
{
    return Amount(NumberIn<uint32_t>(argument), "millimetres per second, 0 for no limit,",
                  [this](uint32_t speed) { server_->SetSpeed(speed); });
}

Understood Operator::Half(const std::string& argument)
{
    const auto count = argument.empty() ? std::optional(1U) : NumberIn<unsigned>(argument);
    return Amount(count, "a number of answers", [this](unsigned answers) { server_->HalveAnswers(answers); });
}

Understood Operator::HalfStatus(const std::string& argument)
{
    return argument == "half" || argument.starts_with("half ") ? Half(Split(argument).argument)
                                                               : Wrong("half, or nothing, expected");
}

Understood Operator::SayToTill(const std::string& argument)
{
    return Amount(HexIn(argument), "bytes, in hexadecimal,", [this](const Bytes& bytes) { server_->Say(bytes); });
}

// Done, and told of again, when its time has come.
Understood Operator::Later(const std::string& line)
{
    const auto occasion = ParseOccasion(line);
    if (!occasion) {
        return Wrong("when and what expected, such as at 900 drop, after 3 lines: paper out, at cut 2: cover open");
    }
    const std::string name = Split(occasion->command).name;
    if (name == "at" || name == "after" || name == "save") {
        return Wrong(name + " cannot wait for its time");
    }
    Understood then = Understand(occasion->command);
    if (!then.problem.empty()) {
        return then;
    }
    return {{}, [this, occasion = *occasion] {
                return Await(occasion, [this, command = occasion.command] {
                    Report(command, Do(Understand(command)), Received());
                });
            }};
}

std::string Operator::Await(const Occasion& occasion, std::function<void()> action)
{
    if (waiting_ >= kMostWaiting) {
        return "too much waits to be done already";
    }
    const auto counted = [this, action = std::move(action)] {
        --waiting_;
        action();
    };
    try {
        ++waiting_;
        occasion.further ? server_->AtFurther(occasion.what, occasion.count, counted)
                         : server_->At(occasion.what, occasion.count, counted);
    } catch (const std::out_of_range& error) {
        --waiting_;
        return error.what();
    }
    return {};
}

Understood Operator::Ticket(const std::string& argument)
{
    return argument == "take" ? Right([this] { recorder_->TakeTicket(); }) : Wrong("take expected");
}

Understood Operator::Tear(const std::string& argument)
{
    if (!argument.empty()) {
        return Wrong("nothing more expected");
    }
    return Right([this] { server_->With([](VirtualPrinter& printer) { printer.TearOff(); }); });
}

Understood Operator::Save(const std::string& argument)
{
    const std::string file = argument.empty() ? files_.picture : argument;
    if (file.empty()) {
        return Wrong("a file expected");
    }
    return {{}, [this, file] {
                server_->TakeWhatHasArrived();
                return SaveTo(file);
            }};
}

}  // namespace marbex::virtual_printer
