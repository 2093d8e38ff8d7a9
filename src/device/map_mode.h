#pragma once

#include <cstdint>

#include "device/model_description.h"

namespace marbex::device {

// The receipt metrics of a map mode.
struct ReceiptMetrics {
    int32_t RecLineHeight;
    int32_t RecLineSpacing;
    int32_t RecLineWidth;
};

bool IsMapMode(int32_t mapMode);

// Of a known mode; only the width differs between models, and in dots it does not.
ReceiptMetrics MetricsOf(int32_t mapMode, const LineWidths& widths);

// value in units of the map mode, as printer dots (8 a millimetre, 204 an inch), truncated toward zero; 0 for an
// unknown mode. The result saturates at the limits of 32 bits.
int32_t DotsOf(int32_t value, int32_t mapMode);

}  // namespace marbex::device
