#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "printer/job_payloads.h"

namespace marbex::printer {

// The rows of a bitmap as they come out of the printer: its rotation applied, black and white (a gray below 127 is
// black), eight dots a byte, the leftmost in the top bit, the last byte filled up with white. Does not own the bitmap.
class BitRows {
public:
    explicit BitRows(const BitmapDataStruct& bitmap);

    uint32_t Count() const { return count_; }            // 0 for a rotation that is none
    uint32_t DotsPerRow() const { return dotsPerRow_; }  // as Count
    std::size_t RowBytes() const { return rowBytes_; }

    // RowBytes() bytes, valid until the next call. Made for going from the first row to the last.
    std::span<const uint8_t> Row(uint32_t row);

private:
    void PackRow(uint32_t row);
    void PackTurnedStrip(uint32_t firstRow);

    const BitmapDataStruct& bitmap_;
    uint32_t count_ = 0;
    uint32_t dotsPerRow_ = 0;
    std::size_t rowBytes_ = 0;
    bool turned_ = false;      // on its side
    uint32_t stripStart_ = 0;  // the first row in rows_
    bool filled_ = false;
    std::vector<uint8_t> rows_;  // one row, or a strip of eight when it is turned
};

}  // namespace marbex::printer
