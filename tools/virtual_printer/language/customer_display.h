#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/happenings.h"

namespace marbex::virtual_printer {

// The line display: rows of 20 characters and a cursor. Text past the end of a row goes on in the next one, past the
// last in the first.
class CustomerDisplay {
public:
    static constexpr int kColumns = 20;

    CustomerDisplay(int rows, std::string_view charset);

    bool Present() const { return !cells_.empty(); }
    void Clear();
    bool MoveTo(int row, int column);  // from 0; false outside
    char32_t Put(uint8_t byte);        // the character it stands for
    bool Changed() const { return changed_; }
    DisplayContent Tell();  // and forgets the change

private:
    std::vector<std::vector<char32_t>> cells_;
    std::string charset_;
    int row_ = 0;
    int column_ = 0;
    bool changed_ = false;
};

}  // namespace marbex::virtual_printer
