#pragma once

// Bytes on their way to becoming lines. A carriage return before a line end, and the mark that some editors put before
// UTF-8, belong to no line.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace marbex::tools {

class LineBuffer {
public:
    void Append(std::string_view bytes);

    // The next line that has come whole, without its end; none when more bytes are needed.
    std::optional<std::string> TakeLine();

    // After the last byte: what stands behind the last line end is a line too; none when there is nothing.
    std::optional<std::string> TakeRest();

private:
    std::string pending_;
    std::size_t searched_ = 0;  // bytes of pending_ known to hold no line end
    bool isFirst_ = true;
};

}  // namespace marbex::tools
