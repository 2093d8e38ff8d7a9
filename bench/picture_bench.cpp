// A picture on its way to the paper: stretched, turned into dots.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "comm/printer_port.h"
#include "platform/picture_scaling.h"
#include "printer/floyd_steinberg.h"
#include "printer/printer_link.h"
#include "printer/raster_language.h"

namespace {

enum Kind { kPhoto, kLogo, kGray };

// A photograph has soft areas and some noise; a logo has flat areas in few colours.
std::vector<uint32_t> MakePicture(uint32_t width, uint32_t height, int kind)
{
    std::minstd_rand random(5);
    std::vector<uint32_t> pixels;
    pixels.reserve(std::size_t{width} * height);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            if (kind == kLogo) {
                const uint32_t ring = (x * x / 64 + y * y / 64) / 2048;
                pixels.push_back(ring % 3 == 0 ? 0xC02030 : ring % 3 == 1 ? 0xFFFFFF : 0x102040);
                continue;
            }
            const auto channel = [&](double phase) {
                const double wave = std::sin(x * 0.013 + phase) * std::cos(y * 0.017 - phase);
                return static_cast<uint32_t>(120 + 100 * wave) + static_cast<uint32_t>(random() % 16);
            };
            const uint32_t red = channel(0.3);
            pixels.push_back(kind == kGray ? red * 0x010101 : red << 16 | channel(1.1) << 8 | channel(2.0));
        }
    }
    return pixels;
}

// Gray and error diffusion of a full receipt's width.
void Dither(benchmark::State& state)
{
    constexpr uint32_t kWidth = 608;
    constexpr uint32_t kHeight = 800;
    const std::vector<uint32_t> pixels = MakePicture(kWidth, kHeight, static_cast<int>(state.range(0)));
    std::vector<uint8_t> dots(pixels.size());
    for (auto _ : state) {
        marbex::printer::DitherToRaster(pixels, dots, kWidth, kHeight);
        benchmark::DoNotOptimize(dots.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pixels.size()));
}
BENCHMARK(Dither)->ArgName("kind")->Arg(kPhoto)->Arg(kLogo)->Arg(kGray)->Unit(benchmark::kMillisecond);

// A port that takes everything at once.
class OpenPort : public marbex::comm::CPrinterPort {
public:
    bool IsOpen() const override { return true; }
    int32_t Write(const uint8_t* buffer, std::size_t length) override
    {
        benchmark::DoNotOptimize(buffer);
        bytes += length;
        return 0;
    }

    std::size_t bytes = 0;
};

// From colours to the bytes on the wire.
void ColorsToWire(benchmark::State& state)
{
    constexpr uint32_t kWidth = 608;
    constexpr uint32_t kHeight = 800;
    const std::vector<uint32_t> pixels = MakePicture(kWidth, kHeight, static_cast<int>(state.range(0)));
    OpenPort port;
    const marbex::printer::PrinterLink link(&port);
    for (auto _ : state) {
        marbex::printer::BitmapDataStruct bitmap{
            kWidth, kHeight, -1, static_cast<int32_t>(state.range(1)),
            std::make_unique_for_overwrite<uint8_t[]>(std::size_t{kWidth} * kHeight)};
        marbex::printer::DitherToRaster(pixels, {bitmap.pixels.get(), pixels.size()}, kWidth, kHeight);
        if (marbex::printer::PrintRaster(bitmap, kWidth, link) != 0) state.SkipWithError("not printed");
    }
    state.counters["wire_bytes"] = static_cast<double>(port.bytes) / static_cast<double>(state.iterations());
}
BENCHMARK(ColorsToWire)
    ->ArgNames({"kind", "rotation"})
    ->Args({kPhoto, 1})
    ->Args({kLogo, 1})
    ->Args({kPhoto, 257})
    ->Unit(benchmark::kMillisecond);

// From a camera's size, and from a small logo.
void Stretch(benchmark::State& state)
{
    const auto width = static_cast<uint32_t>(state.range(0));
    const auto height = static_cast<uint32_t>(state.range(1));
    const std::vector<uint32_t> pixels = MakePicture(width, height, kPhoto);
    const uint32_t newHeight = 608 * height / width;
    std::vector<uint32_t> target(std::size_t{608} * newHeight);
    for (auto _ : state) {
        marbex::platform::StretchRows({pixels.data(), width, height}, 608, newHeight, 0, newHeight, target);
        benchmark::DoNotOptimize(target.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pixels.size()));
}
BENCHMARK(Stretch)->Args({3000, 4000})->Args({800, 1000})->Args({304, 400})->Unit(benchmark::kMillisecond);

}  // namespace
