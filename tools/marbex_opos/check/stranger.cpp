#include "marbex_opos/check/stranger.h"

#include <algorithm>
#include <cstdio>

namespace marbex::tools {

namespace {

struct Beginning {
    std::string_view bytes;
    std::string_view who;
};

constexpr Beginning kBeginnings[] = {
    {"HTTP/", "a web server"},        {"<", "a web server"},        {"SSH-", "an SSH server"},
    {"220", "an FTP or mail server"}, {"\x15\x03", "a TLS server"}, {"\xFF\xFD", "a Telnet server"},
    {"\xFF\xFB", "a Telnet server"},
};

}  // namespace

std::string DescribeStranger(std::string_view bytes)
{
    constexpr std::size_t kMost = 12;
    const std::string_view line = bytes.substr(0, std::min(bytes.find_first_of("\r\n"), bytes.size()));
    for (const Beginning& one : kBeginnings) {
        if (!bytes.starts_with(one.bytes)) continue;
        const bool isText =
            std::ranges::all_of(line, [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F; });
        return std::string(one.who) + " answers" + (isText ? " (" + std::string(line.substr(0, 60)) + ")" : "");
    }
    std::string shown;
    for (const char c : bytes.substr(0, kMost)) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%s%02X", shown.empty() ? "" : " ", static_cast<unsigned char>(c));
        shown += hex;
    }
    return "something answers, and not as one of these printers: " + shown + (bytes.size() > kMost ? " ..." : "");
}

}  // namespace marbex::tools
