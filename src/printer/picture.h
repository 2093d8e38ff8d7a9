#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/picture.h"

namespace marbex::printer {

// The picture loader: one picture file, decoded. What goes wrong is told on the debugger's output, as a caption and a
// text; nothing is ever shown on a screen.
class CPicture {
public:
    // False when the file cannot be read or is no picture; the picture loaded before is released either way.
    bool Load(const std::string& fileName);

    uint32_t Width() const { return picture_ ? picture_->Width() : 0; }    // pixels
    uint32_t Height() const { return picture_ ? picture_->Height() : 0; }  // pixels

    // Draws rows firstRow to firstRow + rows - 1 of the picture stretched to width x height into pixels, 0x00RRGGBB.
    // False, with the pixels as they were, when it cannot be drawn or none is loaded.
    bool Render(uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows, std::span<uint32_t> pixels) const;

private:
    std::unique_ptr<platform::Picture> picture_;
};

}  // namespace marbex::printer
