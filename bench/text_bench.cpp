// What the conversion of one character costs; print data asks for each character above 127 on its own.

#include <benchmark/benchmark.h>

#include "platform/text.h"

namespace {

using marbex::platform::ToCodePage;

void Convert(benchmark::State& state, char16_t character)
{
    const auto page = static_cast<uint32_t>(state.range(0));
    std::string bytes;
    for (auto _ : state) {
        bytes.clear();
        benchmark::DoNotOptimize(ToCodePage(page, {&character, 1}, bytes));
    }
}

// Must stay under 100 ns.
BENCHMARK_CAPTURE(Convert, held, u'\u00E9')->Arg(850)->Arg(1252)->Arg(54936)->Arg(65001);
BENCHMARK_CAPTURE(Convert, notHeld, u'\uE000')->Arg(850)->Arg(1252)->Arg(949);

void Widen(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(marbex::platform::WidenAnsi("Caf\xE9 cr\xE8me, 2 x 1.80"));
}
BENCHMARK(Widen);

}  // namespace
