#pragma once

#include <optional>
#include <span>

#include "virtual_printer/happenings.h"
#include "virtual_printer/paper/paper.h"

namespace marbex::virtual_printer {

// A raster image while it comes in, row by row.
class Raster {
public:
    static constexpr std::size_t kMostRowsKept = 65536;        // in the report; the paper gets them all
    static constexpr std::size_t kMostBytesKept = 8UL << 20U;  // of those rows

    explicit Raster(Paper& paper) : paper_(paper) {}

    bool Open() const { return open_; }
    void SetRows(int rows);
    void SetX(int x);
    bool SetMode(int mode);  // 0 plain, 2 run-coded; false for others
    // Puts a row on the paper. False when its coding is damaged; what could be read of it is printed.
    bool Row(std::span<const uint8_t> data);
    // Ends the image and tells about it. properly: by its own end command.
    RasterImage Finish(bool properly);

private:
    bool Unpack(std::span<const uint8_t> data, Bytes& row) const;
    void Print(const Bytes& row);

    Paper& paper_;
    bool open_ = false;
    int mode_ = 0;
    std::size_t bytesKept_ = 0;
    RasterImage image_;
};

}  // namespace marbex::virtual_printer
