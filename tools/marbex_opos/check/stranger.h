#pragma once

#include <string>
#include <string_view>

namespace marbex::tools {

// What something that is none of the printers has sent, for a person: "a web server answers (HTTP/1.1 400 Bad
// Request)", else its first bytes as text and in hexadecimal.
std::string DescribeStranger(std::string_view bytes);

}  // namespace marbex::tools
