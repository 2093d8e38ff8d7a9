#pragma once

#include <cstdint>
#include <vector>

#include "printer/job_payloads.h"

namespace marbex::printer {

// The gray rows of a bitmap as they come out of the printer, its rotation applied. Does not own the bitmap.
class UprightRows {
public:
    explicit UprightRows(const BitmapDataStruct& bitmap);

    uint32_t Count() const { return count_; }            // 0 for a rotation that is none
    uint32_t DotsPerRow() const { return dotsPerRow_; }  // as Count

    // DotsPerRow() gray bytes, valid until the next call. Made for going from the first row to the last.
    const uint8_t* Row(uint32_t row);

private:
    void FillStrip(uint32_t firstRow);

    const BitmapDataStruct& bitmap_;
    uint32_t count_ = 0;
    uint32_t dotsPerRow_ = 0;
    uint32_t stripStart_ = 0;
    uint32_t stripRows_ = 0;      // filled rows of strip_
    std::vector<uint8_t> strip_;  // some turned rows; not used for an upright bitmap
};

}  // namespace marbex::printer
