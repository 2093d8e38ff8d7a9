#include "marbex_opos/nearest.h"

#include <algorithm>
#include <cctype>

namespace marbex::tools {

namespace {

char Lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// How many letters have to be changed, added, dropped or exchanged with their neighbour (optimal string alignment).
std::size_t Distance(std::string_view one, std::string_view other)
{
    std::vector<std::vector<std::size_t>> steps(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const bool same = Lower(one[i - 1]) == Lower(other[j - 1]);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + (same ? 0U : 1U)});
            const bool isExchanged =
                i > 1 && j > 1 && Lower(one[i - 1]) == Lower(other[j - 2]) && Lower(one[i - 2]) == Lower(other[j - 1]);
            if (isExchanged) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps[one.size()][other.size()];
}

}  // namespace

std::optional<std::string> Nearest(std::string_view typed, const std::vector<std::string_view>& names)
{
    std::optional<std::string> nearest;
    std::size_t least = std::max<std::size_t>(1, typed.size() / 3) + 1;
    for (const std::string_view name : names) {
        const std::size_t distance = Distance(typed, name);
        if (distance >= least) continue;
        least = distance;
        nearest = std::string(name);
    }
    return nearest;
}

std::string Joined(const std::vector<std::string>& names)
{
    std::string joined;
    for (const std::string& name : names)
        joined += (joined.empty() ? "" : ", ") + name;
    return joined;
}

}  // namespace marbex::tools
