// What the printer makes of text: lines, styles, places, character tables.

#include <gtest/gtest.h>

#include "bytes.h"

namespace marbex::virtual_printer {
namespace {

using Strings = std::vector<std::string>;

TEST(Text, PrintsALineAtItsLineFeed)
{
    VirtualPrinter printer("talis");
    printer.Feed("AB\r");
    EXPECT_TRUE(printer.Lines().empty());
    EXPECT_EQ(printer.UnfinishedLine(), "AB");
    printer.Feed("C\n\nD\n");
    EXPECT_EQ(printer.Lines(), (Strings{"ABC", "", "D"}));
    EXPECT_TRUE(printer.All<Unknown>().empty());
    EXPECT_EQ(printer.GetPaper().Rows(), 3U * 32);
}

TEST(Text, KeepsTheStylesOfPrintModesAndScales)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(
        "\x1B!\xF8"
        "all\x1B!\x02plain\x1D!\x21wide\n");
    const auto lines = printer.All<TextLine>();
    ASSERT_EQ(lines.size(), 1U);
    const std::vector<TextRun> expected{
        {"all", {true, true, true, 2, 2}}, {"plain", {}}, {"wide", {false, false, false, 3, 2}}};
    EXPECT_EQ(lines[0].runs, expected);
}

TEST(Text, ScalesStayWhenThePrintModeIsReset)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(Joined({"\x1D!\x32\x1B!\x30", Z("a\x1B!\0b\n\x1B@c\n")}));
    const auto lines = printer.All<TextLine>();
    ASSERT_EQ(lines.size(), 2U);
    ASSERT_EQ(lines[0].runs.size(), 1U);  // both characters are 4 x 3
    EXPECT_EQ(lines[0].runs[0].style, (Style{false, false, false, 4, 3}));
    EXPECT_EQ(lines[1].runs[0].style, Style{});
}

TEST(Text, AlignsByTheAlignmentAtTheFirstCharacter)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(
        Joined({"\x1B"
                "a\x01"
                "1234\x1B"
                "a\x02"
                "56\nright\n\x1D"
                "L",
                Z("\x20\0"), "edge\n"}));
    const auto lines = printer.All<TextLine>();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].x, (608 - 6 * 12) / 2);
    EXPECT_EQ(lines[1].x, 608 - 5 * 12);
    EXPECT_EQ(lines[2].x, 608 - 4 * 12);
    printer.Feed(
        Z("\x1B"
          "a\0left\n"));
    EXPECT_EQ(printer.All<TextLine>().back().x, 32);
}

TEST(Text, WrapsWhatThePaperIsTooNarrowFor)
{
    VirtualPrinter printer("NESTO");  // 384 dots, 32 columns
    printer.Feed(std::string(40, 'x') + "\n");
    const auto lines = printer.All<TextLine>();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, std::string(32, 'x'));
    EXPECT_TRUE(lines[0].wrapped);
    EXPECT_EQ(lines[1].text, std::string(8, 'x'));
    EXPECT_FALSE(lines[1].wrapped);
}

TEST(Text, DrawsWhatItPrints)
{
    VirtualPrinter printer("TALIS");
    printer.Feed("\x1B!\x80 \n\x1B$\x64");
    printer.Feed(Z("\0_\n"));
    const Paper& paper = printer.GetPaper();
    // An underlined blank is a bar of one cell at the foot of the line, and nothing else.
    for (int x = 0; x < 608; ++x) {
        EXPECT_EQ(paper.Dot(0, x, 23), x < 12) << x;
        EXPECT_FALSE(paper.Dot(0, x, 10)) << x;
    }
    int black = 0;
    for (std::size_t row = 32; row < 64; ++row) {
        for (int x = 0; x < 608; ++x) {
            if (paper.Dot(0, x, row)) {
                EXPECT_TRUE(x >= 100 && x < 112) << x;
                ++black;
            }
        }
    }
    EXPECT_GT(black, 20);
}

struct TableCase {
    int table;
    const char* bytes;
    const char* text;  // by the published code page
};

TEST(Text, HoldsTheCharacterTables)
{
    constexpr TableCase kCases[] = {
        {0, "\x82\xE1\x9B", "éß¢"},  {1, "\xA1\xB1\xDF", "｡ｱﾟ"},  {2, "\x82\xD0\xE4", "éðõ"},
        {3, "\x84\x94", "ãõ"},       {4, "\x84\xA8", "ÂÎ"},       {5, "\x9B\x9D", "øØ"},
        {13, "\x8D\x9F\xA7", "ışğ"}, {14, "\x80\x97\xAF", "ΑΩψ"}, {17, "\x86\xA0\xF0", "ЖаЁ"},
        {18, "\x9D\xA5\xE4", "Łąń"}, {19, "\xD5\x82", "€é"},      {20, "\xA1\xDF", "ก฿"},
        {34, "\xA0\xA1", "аА"},      {36, "\x80\x9A", "את"},      {37, "\xC1", "ﺀ"},
        {45, "\x80\xE9\x9F", "€éŸ"}, {46, "\xC6\xE6\xA8", "ЖжЁ"}, {47, "\xC1\xF9", "Αω"},
        {48, "\xF0\xFD\xDE", "ğıŞ"}, {49, "\xE0\xFA", "את"},      {50, "\xC7\xED", "اي"},
        {51, "\xC0\xFE", "Ąž"},      {52, "\xD5\xFE", "Ơ₫"},
    };
    for (const TableCase& row : kCases) {
        VirtualPrinter printer("TALIS");
        printer.Feed(Joined({Z("\x1C%\0\x1Bt"), std::string(1, static_cast<char>(row.table)), row.bytes, "\n"}));
        EXPECT_EQ(printer.Lines(), Strings{row.text}) << "table " << row.table;
        EXPECT_TRUE(printer.All<Unknown>().empty()) << "table " << row.table;
    }
}

TEST(Text, HoldsTheDoubleByteTables)
{
    VirtualPrinter printer("TALIS");
    // GB18030 in two and in four bytes, Korean, and back to table 0, which was selected in between.
    printer.Feed(
        "\x1C%\x01"
        "a\xC4\xE3\xBA\xC3\x81\x30\x84\x36\n\x1C%\x02\xC7\xD1\x1Bt");
    printer.Feed(Z("\0\xB1\xDB\x1C%\0\x82\n"));
    EXPECT_EQ(printer.Lines(), (Strings{"a你好¥", "한글é"}));
    EXPECT_TRUE(printer.All<Unknown>().empty());
}

TEST(Text, ReportsWhatItDoesNotUnderstand)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(Joined({"a\x1BlA", "\x1B\n", "\x01", "\x1DZ", "\x1Bt\x63", "\x1C%\x01\xC4\n", "\x10\x04\x03"}));
    std::vector<Bytes> unknown;
    for (const Unknown& one : printer.All<Unknown>()) {
        unknown.push_back(one.bytes);
    }
    EXPECT_EQ(unknown,
              (std::vector<Bytes>{
                  {0x1B, 'l'}, {0x1B}, {0x01}, {0x1D, 'Z'}, {0x1B, 't', 0x63}, {0xC4}, {0x10}, {0x04}, {0x03}}));
    EXPECT_EQ(printer.Lines(), (Strings{"aA", ""}));
}

TEST(Text, CancelThrowsTheUnfinishedLineAway)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(
        "lost\x18kept\nlost\x10\x05\x02"
        "also kept\n");
    EXPECT_EQ(printer.Lines(), (Strings{"kept", "also kept"}));
    EXPECT_EQ(printer.All<Cancelled>(), (std::vector<Cancelled>{{false, 4}, {true, 4}}));
}

}  // namespace
}  // namespace marbex::virtual_printer
