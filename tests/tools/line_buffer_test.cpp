#include "marbex_opos/console/line_buffer.h"

#include <gtest/gtest.h>

#include <vector>

namespace marbex::tools {
namespace {

using Lines = std::vector<std::string>;

// The lines of a text that comes in two pieces.
Lines LinesOf(std::string_view text, std::size_t split)
{
    LineBuffer buffer;
    Lines lines;
    const auto take = [&] {
        while (const auto line = buffer.TakeLine())
            lines.push_back(*line);
    };
    buffer.Append(text.substr(0, split));
    take();
    buffer.Append(text.substr(split));
    take();
    if (const auto rest = buffer.TakeRest()) lines.push_back(*rest);
    return lines;
}

TEST(LineBuffer, GivesTheSameLinesHoweverTheBytesCome)
{
    const std::string text = "\xEF\xBB\xBFone\r\n\n\r\ntwo\rhalf\n\xEF\xBB\xBFkept\r\nrest\r";
    for (std::size_t split = 0; split <= text.size(); ++split) {
        EXPECT_EQ(LinesOf(text, split), (Lines{"one", "", "", "two\rhalf", "\xEF\xBB\xBFkept", "rest"})) << split;
    }
    EXPECT_EQ(LinesOf("", 0), Lines());
    EXPECT_EQ(LinesOf("last\n", 0), Lines{"last"});
}

}  // namespace
}  // namespace marbex::tools
