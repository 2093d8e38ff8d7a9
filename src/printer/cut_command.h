#pragma once

#include <cstdint>
#include <string_view>

#include "printer/encoder_traits.h"

namespace marbex::printer {

// A cut in one or two writes.
struct CutBytes {
    std::string_view cut;
    std::string_view presenter;  // not empty: sent 500 ms after a cut that was written
};

// What a model sends to cut to a percentage of the paper's width. Views of the traits and of constants.
CutBytes CutCommandFor(const EncoderTraits& traits, int32_t percentage);

}  // namespace marbex::printer
