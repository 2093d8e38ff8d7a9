// How fast print data is converted, in bytes of the application's text, and receipts of forty lines a second.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "device/print_data_converter.h"
#include "opos/printer.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace {

using marbex::device::ConverterTraits;
using marbex::device::PrintDataConverter;
namespace platform = marbex::platform;
namespace support = marbex::support;

class CodePageRegistry : public platform::Registry {
public:
    explicit CodePageRegistry(int64_t codePage) : codePage_(std::to_string(codePage)) {}

    bool KeyExists(std::string_view) const override { return true; }
    std::optional<std::vector<std::string>> Subkeys(std::string_view) const override { return std::nullopt; }
    std::optional<std::vector<platform::RegistryValue>> Values(std::string_view) const override { return std::nullopt; }
    std::optional<platform::RegistryValue> Value(std::string_view, std::string_view name) const override
    {
        return platform::RegistryValue{std::string(name), platform::RegistryType::kSz, codePage_};
    }
    bool CreateKey(std::string_view) override { return false; }
    bool SetValue(std::string_view, const platform::RegistryValue&) override { return false; }
    bool DeleteValue(std::string_view, std::string_view) override { return false; }
    bool DeleteKey(std::string_view) override { return false; }
    std::string LastProblem() const override { return {}; }

private:
    std::string codePage_;
};

std::vector<support::CharSetStruct> StandardSets()
{
    std::vector<support::CharSetStruct> sets;
    for (const uint8_t number : std::initializer_list<uint8_t>{0, 2, 3, 4, 5, 19})
        sets.push_back(*support::FindCharacterSet(number));
    return sets;
}

void Convert(benchmark::State& state, const std::string& text, const std::vector<support::CharSetStruct>& sets)
{
    platform::LoadAnsiCodePage(CodePageRegistry(state.range(0)));
    static constexpr ConverterTraits kTraits{"TALIS2POSPrinter", marbex::device::kCutAfterFourFeeds, false};
    PrintDataConverter converter(kTraits);
    for (auto iteration : state) {
        std::string out;  // as the device does: a string a call
        converter.DoValidateDataW(opos::PTR_S_RECEIPT, text, sets, "", out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * static_cast<int64_t>(state.iterations()));
    state.counters["texts"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

std::string Ascii()
{
    std::string text;
    while (text.size() < 100'000)
        text += "1 x Filter coffee, large              2.40\r\n";
    return text;
}

void AsciiText(benchmark::State& state)
{
    Convert(state, Ascii(), StandardSets());
}
BENCHMARK(AsciiText)->Arg(1252)->Arg(65001);

// Every fourth character comes from a table: e acute, and now and then a euro, which needs another set.
void AccentedText(benchmark::State& state)
{
    const bool utf8 = state.range(0) == 65001;
    std::string text;
    for (int i = 0; text.size() < 100'000; ++i) {
        text += "caf";
        if (i % 50 == 49) {
            text += utf8 ? "\xE2\x82\xAC" : "\x80";
        } else {
            text += utf8 ? "\xC3\xA9" : "\xE9";
        }
    }
    Convert(state, text, StandardSets());
}
BENCHMARK(AccentedText)->Arg(1252)->Arg(65001);

// The same with a set that has no table of its own: Cyrillic of WPC1251.
void PlatformTableText(benchmark::State& state)
{
    std::string text;
    while (text.size() < 100'000)
        text +=
            "abc\xD0\x96"
            "def\xD1\x8F";
    Convert(state, text, {*support::FindCharacterSet(0), *support::FindCharacterSet(46)});
}
BENCHMARK(PlatformTableText)->Arg(65001);

// Forty lines of about 42 characters with the sequences and accents that receipts have.
void Receipt(benchmark::State& state)
{
    const bool utf8 = state.range(0) == 65001;
    const std::string accent = utf8 ? "\xC3\xA9" : "\xE9";
    std::string text = "\x1B|cA\x1B|4CCaf" + accent + " Central\x1B|N\r\n";
    for (int i = 0; i < 37; ++i) {
        text += i % 5 == 0 ? "2 x Caf" + accent + " cr" + accent + "me, grand              4.80\r\n"
                           : "1 x Filter coffee, large              2.40\r\n";
    }
    text += "\x1B|rA\x1B|bCTotal                            104.40\x1B|N\r\n\x1B|100P\r\n";
    Convert(state, text, StandardSets());
}
BENCHMARK(Receipt)->Arg(1252)->Arg(65001);

// A sequence before every word.
void SequenceText(benchmark::State& state)
{
    std::string text;
    while (text.size() < 100'000)
        text += "\x1B|bCTotal\x1B|2uC 104.40\x1B|N\n";
    Convert(state, text, StandardSets());
}
BENCHMARK(SequenceText)->Arg(1252);

}  // namespace
