// Checking data and drawing its bars, beside the same work by libzint.

#include <benchmark/benchmark.h>
#include <zint.h>

#include <string>

#include "printer/barcode_engine.h"

namespace {

using marbex::printer::BarcodeEngine;
using marbex::printer::Symbology;

void Encode(benchmark::State& state, Symbology symbology, const std::string& data)
{
    BarcodeEngine engine;
    for (auto _ : state) {
        if (!engine.Encode(data, symbology, 2)) state.SkipWithError("refused");
        benchmark::DoNotOptimize(engine.Bars().data());
    }
}

void Zint(benchmark::State& state, int symbology, const std::string& data)
{
    zint_symbol* const symbol = ZBarcode_Create();
    for (auto _ : state) {
        ZBarcode_Clear(symbol);
        symbol->symbology = symbology;
        const auto* const bytes = reinterpret_cast<const unsigned char*>(data.data());
        if (ZBarcode_Encode(symbol, bytes, static_cast<int>(data.size())) >= ZINT_ERROR) state.SkipWithError("refused");
        benchmark::DoNotOptimize(symbol->encoded_data);
    }
    ZBarcode_Delete(symbol);
}

BENCHMARK_CAPTURE(Encode, ean13, Symbology::kEan13, "400638133393");
BENCHMARK_CAPTURE(Zint, ean13, BARCODE_EANX, "400638133393");
BENCHMARK_CAPTURE(Encode, code128, Symbology::kCode128, "{BOrder 2024-06{C11223344");
BENCHMARK_CAPTURE(Zint, code128, BARCODE_CODE128, "Order 2024-0611223344");
BENCHMARK_CAPTURE(Encode, code39, Symbology::kCode39, "ORDER-2024-06");
BENCHMARK_CAPTURE(Zint, code39, BARCODE_CODE39, "ORDER-2024-06");
BENCHMARK_CAPTURE(Encode, code93, Symbology::kCode93, "Order 2024-06");
BENCHMARK_CAPTURE(Zint, code93, BARCODE_CODE93, "Order 2024-06");
BENCHMARK_CAPTURE(Encode, itf, Symbology::kItf, "12345678901231");
BENCHMARK_CAPTURE(Zint, itf, BARCODE_C25INTER, "12345678901231");
BENCHMARK_CAPTURE(Encode, codabar, Symbology::kCodabar, "A1234567890B");
BENCHMARK_CAPTURE(Zint, codabar, BARCODE_CODABAR, "A1234567890B");

}  // namespace
