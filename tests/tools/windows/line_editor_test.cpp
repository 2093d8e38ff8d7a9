#include "marbex_opos/windows/line_editor.h"

#include <gtest/gtest.h>

namespace marbex::tools {
namespace {

TEST(LineEditor, EditsWhereTheCursorStands)
{
    LineEditor line;
    line.Insert(u"POSPrinter.Pri(1)");
    for (int step = 0; step < 3; ++step)
        line.Left();
    line.ReplaceBeforeCursor(3, u"PrintNormal");
    EXPECT_EQ(line.Text(), u"POSPrinter.PrintNormal(1)");
    EXPECT_EQ(line.BeforeCursor(), u"POSPrinter.PrintNormal");
    line.EraseAt();
    line.EraseToEnd();
    line.EraseBefore();
    EXPECT_EQ(line.Text(), u"POSPrinter.PrintNorma");
    line.ToStart();
    line.EraseBefore();
    line.Left();
    EXPECT_EQ(line.Cursor(), 0U);
    line.Right();
    line.EraseAt();
    EXPECT_EQ(line.Text(), u"PSPrinter.PrintNorma");
    line.ToEnd();
    line.Right();
    line.EraseAt();
    EXPECT_EQ(line.Take(), u"PSPrinter.PrintNorma");
    EXPECT_EQ(line.Text(), u"");
}

TEST(LineEditor, MovesByCharactersAndWords)
{
    LineEditor line;
    line.Insert(u"wait \U0001F600 10");
    line.WordLeft();
    line.Left();
    line.EraseBefore();
    EXPECT_EQ(line.Text(), u"wait  10") << "both halves of the character went";
    line.Insert(u"\U0001F600");
    line.Left();
    line.EraseAt();
    EXPECT_EQ(line.Text(), u"wait  10");
    line.ToStart();
    line.WordRight();
    EXPECT_EQ(line.Cursor(), 6U);
    line.EraseWordBefore();
    EXPECT_EQ(line.Text(), u"10");
}

TEST(LineEditor, RemembersLinesAndTheOneThatWasBeingTyped)
{
    LineEditor line({u"old"});
    for (const char16_t* typed : {u"first", u"second", u"second", u""}) {
        line.Insert(typed);
        line.Take();
    }
    EXPECT_EQ(line.History(), (std::vector<std::u16string>{u"old", u"first", u"second"}));
    line.Insert(u"half");
    line.Earlier();
    line.Earlier();
    EXPECT_EQ(line.Text(), u"first");
    line.Insert(u"!");
    line.Later();
    EXPECT_EQ(line.Text(), u"second");
    line.Later();
    line.Later();
    EXPECT_EQ(line.Text(), u"half");
    for (int times = 0; times < 9; ++times)
        line.Earlier();
    EXPECT_EQ(line.Take(), u"old");
    EXPECT_EQ(line.History().size(), 4U);
}

}  // namespace
}  // namespace marbex::tools
