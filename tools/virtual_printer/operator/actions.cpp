// What the operator can do with the printer: one function a command.

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "virtual_printer/operator/commands.h"

namespace marbex::virtual_printer {
namespace {

constexpr unsigned kMostWaiting = 1000;                         // faults that wait for their byte
constexpr std::chrono::milliseconds::rep kLongest = 3'600'000;  // an hour

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

// Does one of two things.
template <class Action>
std::string Either(const std::string& argument, const char* yes, const char* no, const Action& action)
{
    if (argument != yes && argument != no) {
        return std::string(yes) + " or " + no + " expected";
    }
    action(argument == yes);
    return {};
}

}  // namespace

const std::vector<Operator::Action> Operator::kActions{
    {"cover", &Operator::Cover},       {"paper", &Operator::PaperIs},
    {"jam", &Operator::Jam},           {"mute", &Operator::Mute},
    {"printing", &Operator::Printing}, {"drawer", &Operator::Drawer},
    {"power", &Operator::Power},       {"drop", &Operator::Drop},
    {"refuse", &Operator::Refuse},     {"slow", &Operator::Slow},
    {"speed", &Operator::Speed},       {"half", &Operator::Half},
    {"say", &Operator::SayToTill},     {"at", &Operator::At},
    {"tear", &Operator::Tear},         {"ticket", &Operator::Ticket},
    {"save", &Operator::Save},
};

std::string Operator::Do(const Words& words)
{
    const auto found =
        std::find_if(kActions.begin(), kActions.end(), [&](const Action& one) { return one.first == words.name; });
    if (found == kActions.end()) {
        return "no such command";
    }
    try {
        return (this->*found->second)(words.argument);
    } catch (const std::system_error& error) {
        return error.what();
    }
}

std::string Operator::Cover(const std::string& argument)
{
    return Either(argument, "open", "close", [this](bool open) { server_->SetCover(open); });
}

std::string Operator::PaperIs(const std::string& argument)
{
    if (argument != "ok" && argument != "low" && argument != "out") {
        return "ok, low or out expected";
    }
    server_->SetPaper(argument == "ok" ? PaperState::kOk : argument == "low" ? PaperState::kLow : PaperState::kOut);
    return {};
}

std::string Operator::Jam(const std::string& argument)
{
    if (!model_->tellsPrinting) {
        return std::string(model_->name) + " has no paper jam";
    }
    return Either(argument, "on", "off", [this](bool on) { server_->SetJam(on); });
}

std::string Operator::Mute(const std::string& argument)
{
    return Either(argument, "on", "off", [this](bool on) { server_->SetMute(on); });
}

std::string Operator::Printing(const std::string& argument)
{
    if (!model_->tellsPrinting) {
        return std::string(model_->name) + " does not tell whether it is printing";
    }
    return Either(argument, "hold", "release", [this](bool hold) { server_->SetPrintingHeld(hold); });
}

std::string Operator::Drawer(const std::string& argument)
{
    if (argument == "open" || argument == "close") {
        recorder_->MoveDrawer(argument == "open");
        return {};
    }
    if (argument != "high" && argument != "low") {
        return "open, close, high or low expected";
    }
    server_->SetDrawerSignal(argument == "high");
    return {};
}

std::string Operator::Power(const std::string& argument)
{
    if (argument == "on" || argument == "off") {
        server_->SetPower(argument == "on");
        return {};
    }
    const auto time = argument.starts_with("cycle ") ? TimeIn(argument.substr(6)) : std::nullopt;
    if (!time) {
        return "on, off or cycle MILLISECONDS expected";
    }
    server_->PowerCycle(*time);
    return {};
}

std::string Operator::Drop(const std::string&)
{
    server_->Drop();
    return {};
}

std::string Operator::Refuse(const std::string& argument)
{
    if (argument == "on" || argument == "off") {
        server_->Refuse(argument == "on");
        return {};
    }
    const auto time = TimeIn(argument);
    if (!time) {
        return "on, off or milliseconds expected";
    }
    server_->RefuseFor(*time);
    return {};
}

std::string Operator::Slow(const std::string& argument)
{
    const auto pace = NumberIn<uint32_t>(argument);
    if (!pace) {
        return "bytes per second expected, 0 for no limit";
    }
    server_->Slow(*pace);
    return {};
}

std::string Operator::Speed(const std::string& argument)
{
    const auto speed = NumberIn<uint32_t>(argument);
    if (!speed) {
        return "millimetres per second expected, 0 for no limit";
    }
    server_->SetSpeed(*speed);
    return {};
}

std::string Operator::Half(const std::string& argument)
{
    const auto count = argument.empty() ? std::optional(1U) : NumberIn<unsigned>(argument);
    if (!count) {
        return "a number of answers expected";
    }
    server_->HalveAnswers(*count);
    return {};
}

std::string Operator::SayToTill(const std::string& argument)
{
    const auto bytes = HexIn(argument);
    if (!bytes) {
        return "bytes expected, in hexadecimal";
    }
    server_->Say(*bytes);
    return {};
}

// Done, and told of again, when so many bytes have been received.
std::string Operator::At(const std::string& argument)
{
    const std::size_t end = argument.find(' ');
    const auto at = NumberIn<uint64_t>(argument.substr(0, end));
    const Words words = Split(end == std::string::npos ? "" : argument.substr(end));
    const bool fault = std::any_of(kActions.begin(), kActions.end(), [&](const Action& one) {
        return one.first == words.name && one.first != "at" && one.first != "save";
    });
    if (!at || !fault) {
        return "a number of bytes and what to do then expected";
    }
    if (waiting_ >= kMostWaiting) {
        return "too much waits to be done already";
    }
    try {
        ++waiting_;
        server_->At(*at, [this, at = *at, words] {
            --waiting_;
            Report(words, Do(words), at);
        });
    } catch (const std::out_of_range& error) {
        --waiting_;
        return error.what();
    }
    return {};
}

std::string Operator::Ticket(const std::string& argument)
{
    if (argument != "take") {
        return "take expected";
    }
    recorder_->TakeTicket();
    return {};
}

std::string Operator::Tear(const std::string&)
{
    server_->With([](VirtualPrinter& printer) { printer.TearOff(); });
    return {};
}

std::string Operator::Save(const std::string& argument)
{
    const std::string file = argument.empty() ? files_.picture : argument;
    server_->TakeWhatHasArrived();
    return file.empty() ? "a file expected" : SaveTo(file);
}

}  // namespace marbex::virtual_printer
