#pragma once

// The binary payloads of print jobs. A job record owns its payload; the encoder only reads it, so that a job can be
// executed again.

#include <cstdint>
#include <memory>

namespace marbex::printer {

struct BarcodeDataStruct {
    uint8_t data[100];     // not terminated
    uint32_t dataLength;   // used bytes of data
    uint32_t widthDots;    // width of the drawn bar row
    int32_t symbology;     // PTR_BCS_...
    int32_t height;        // dots
    int32_t moduleWidth;   // 1, 2 or 3 dots
    int32_t alignment;     // -1 left, -2 centre, -3 right, else dots from the left edge
    int32_t textPosition;  // -11 none, -12 above, -13 below
    uint8_t bars[500];     // eight dots a byte; zero past the used width
    uint8_t reserved[100];
};
static_assert(sizeof(BarcodeDataStruct) == 728);

struct BitmapDataStruct {
    uint32_t width;                     // dots
    uint32_t height;                    // dots
    int32_t alignment;                  // as for barcodes
    int32_t rotation;                   // PTR_RP_...
    std::unique_ptr<uint8_t[]> pixels;  // width x height, row by row from the top left, gray
};
// The length by which a bitmap payload is passed and kept, whatever the size of a pointer.
inline constexpr uint32_t kBitmapDataLength = 20;

struct DirectIODataStruct {
    uint32_t count;     // 1 to 128
    uint8_t data[128];  // the first count are sent
};
static_assert(sizeof(DirectIODataStruct) == 132);

}  // namespace marbex::printer
