#include "device/map_mode.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "opos/printer.h"

namespace marbex::device {

namespace {

constexpr double kDotsPerInch = 204.0;
// Single-precision constants in double arithmetic: the last bit decides what truncates.
constexpr float kInchesPerTwip = std::bit_cast<float>(0x3A360B61U);     // 1/1440
constexpr float kInchesPerEnglish = std::bit_cast<float>(0x3A83126FU);  // 0.001

int32_t Truncated(double dots)
{
    constexpr double kLow = std::numeric_limits<int32_t>::min();
    constexpr double kHigh = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(dots, kLow, kHigh));
}

}  // namespace

bool IsMapMode(int32_t mapMode)
{
    return mapMode >= opos::PTR_MM_DOTS && mapMode <= opos::PTR_MM_METRIC;
}

ReceiptMetrics MetricsOf(int32_t mapMode, const LineWidths& widths)
{
    switch (mapMode) {
        case opos::PTR_MM_TWIPS:
            return {170, 255, widths.twips};
        case opos::PTR_MM_ENGLISH:
            return {118, 177, widths.english};
        case opos::PTR_MM_METRIC:
            return {300, 450, widths.metric};
        default:
            return {24, 32, 420};
    }
}

int32_t DotsOf(int32_t value, int32_t mapMode)
{
    switch (mapMode) {
        case opos::PTR_MM_DOTS:
            return value;
        case opos::PTR_MM_TWIPS:
            return Truncated(value * kDotsPerInch * static_cast<double>(kInchesPerTwip));
        case opos::PTR_MM_ENGLISH:
            return Truncated(value * kDotsPerInch * static_cast<double>(kInchesPerEnglish));
        case opos::PTR_MM_METRIC:
            return static_cast<int32_t>(static_cast<int64_t>(value) * 8 / 100);
        default:
            return 0;
    }
}

}  // namespace marbex::device
