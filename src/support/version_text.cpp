#include "support/version_text.h"

#include <algorithm>

namespace marbex::support {

namespace {

constexpr int32_t kOposRelease = 1014000;      // 1.14
constexpr int32_t kLargestBuild = 99'999'999;  // keeps absurd version strings from overflowing

}  // namespace

int32_t ServiceObjectVersionOf(std::string_view fileVersion)
{
    int32_t build = 0;
    for (const char c : fileVersion) {
        if (c >= '0' && c <= '9') build = std::min(build * 10 + (c - '0'), kLargestBuild);
    }
    if (build > 999) build /= 10;
    return kOposRelease + build;
}

std::string ServiceObjectDescriptionOf(std::string_view prefix, std::string_view fileVersion)
{
    std::string description(prefix);
    int commas = 0;
    for (const char c : fileVersion) {
        if (c == ',' && ++commas == 3) break;
        if (c != ' ') description += c == ',' ? '.' : c;
    }
    return description;
}

}  // namespace marbex::support
