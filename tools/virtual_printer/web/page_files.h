#pragma once

#include <optional>
#include <string_view>

namespace marbex::virtual_printer {

// The files of the page, which are carried in the program.
struct PageFile {
    std::string_view name;  // "index.html"
    std::string_view type;  // its media type
    std::string_view content;
};
std::optional<PageFile> FindPageFile(std::string_view name);

}  // namespace marbex::virtual_printer
