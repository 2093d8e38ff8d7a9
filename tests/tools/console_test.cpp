#include "marbex_opos/console.h"

#include <gtest/gtest.h>

#include "marbex_opos/registered_server.h"

namespace marbex::tools {
namespace {

class ConsoleTest : public ::testing::Test {
protected:
    // The lines that the statements printed.
    std::vector<std::string> Run(const std::vector<std::string>& statements)
    {
        lines_.clear();
        for (const std::string& statement : statements)
            console_.Execute(statement);
        return lines_;
    }

    std::vector<std::string> lines_;
    Console console_{FAKE_SERVER_PATH, false, [this](std::string_view line) { lines_.emplace_back(line); }};
};

using Lines = std::vector<std::string>;

TEST_F(ConsoleTest, PassesArgumentsAsTheyAreDeclaredAndPrintsWhatComesBack)
{
    EXPECT_EQ(Run({R"(POSPrinter.OpenService("POSPrinter", "Till1"))", R"(POSPrinter.DirectIO(7, 0x10, "A\n"))"}),
              (Lines{"= 0", R"(= 0 &17 &"A\n\x1B\"\\é\x85")"}));
    EXPECT_EQ(Run({"POSPrinter.CheckHealthText"}), Lines{R"(= "DirectIO 7 &16 &A\n")"});
    EXPECT_EQ(Run({"POSPrinter.DeviceName", "POSPrinter.RecLineChars", "POSPrinter.AsyncMode = true"}),
              (Lines{"= null", "= 8016", "="}));
    EXPECT_EQ(Run({R"(POSPrinter.SetPropertyNumber(1, 2))"}), Lines{"="});
    EXPECT_EQ(console_.ExitStatus(), 0);
}

TEST_F(ConsoleTest, DeliversEventsWhenMessagesRunAndGivesEachToOneExpect)
{
    Run({R"(POSPrinter.OpenService("POSPrinter", "Till1"))"});
    EXPECT_EQ(Run({R"(POSPrinter.PrintNormal(11, "a"))", R"(POSPrinter.PrintNormal(12, "b"))"}), (Lines{"= 0", "= 0"}));
    EXPECT_EQ(Run({"wait 0"}), (Lines{"! StatusUpdateEvent POSPrinter 11", "! StatusUpdateEvent POSPrinter 12", "="}));
    EXPECT_EQ(Run({"expect OutputCompleteEvent 1", "expect StatusUpdateEvent 0", "expect any 0", "expect any 1"}),
              (Lines{"= 1", "= 0", "= 0", "= 1"}));
    EXPECT_EQ(Run({R"(POSPrinter.DirectIO(1, 3, "ABC"))", "expect DirectIOEvent 10000"}),
              (Lines{R"(= 0 &4 &"ABC\x1B\"\\é\x85")", R"(! DirectIOEvent POSPrinter 0 3 "ABC\x1B\"\\é\x85")", "= 0"}));
}

TEST_F(ConsoleTest, AnswersErrorEventsAsTold)
{
    Run({R"(POSPrinter.OpenService("POSPrinter", "Till1"))"});
    EXPECT_EQ(
        Run({"POSPrinter.CutPaper(100)", "answer retry", "POSPrinter.CutPaper(100)", "answer clear",
             "POSPrinter.CutPaper(100)", "answer none", "POSPrinter.CutPaper(100)"}),
        (Lines{"! ErrorEvent POSPrinter 114 201 1 99", "= 99", "=", "! ErrorEvent POSPrinter 114 201 1 11", "= 11", "=",
               "! ErrorEvent POSPrinter 114 201 1 12", "= 12", "=", "! ErrorEvent POSPrinter 114 201 1 99", "= 99"}));
}

TEST_F(ConsoleTest, NumbersTheLinesOfWhatWentWrongAndGoesOn)
{
    EXPECT_EQ(Run({"# a comment", "", "POSPrinter.RotatePrint(2, 1)", "POSPrinter.SetLogo(1, \"x\")",
                   "LineDisplay.ClearText()", "POSPrinter.PrintNormol(1)", "release CashDrawer",
                   "CashDrawer.OpenDrawer()", "quit"}),
              (Lines{"? line 3: RotatePrint: an argument has the wrong type (0x80020005)",
                     "? line 4: SetLogo: the server does not know the name (0x80020006)",
                     "? line 5: LineDisplay cannot be created: the server does not offer the class (0x80040111)",
                     "? line 6: no method PrintNormol", "=", "= 0"}));
    EXPECT_TRUE(console_.HasQuit());
    EXPECT_EQ(console_.ExitStatus(), 2);
}

TEST(Console, SaysWhyThereIsNoServer)
{
    std::vector<std::string> lines;
    const auto print = [&lines](std::string_view line) { lines.emplace_back(line); };
    Console missing("/nowhere/server.so", true, print);
    missing.Execute("POSPrinter.State");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "> POSPrinter.State");
    EXPECT_EQ(lines[1].rfind("? line 1: POSPrinter cannot be created: /nowhere/server.so: ", 0), 0U) << lines[1];
}

TEST(RegisteredServer, ReadsClassIdentifiers)
{
    EXPECT_EQ(ParseClassId("{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}"), kObjectClasses[0].classId);
    for (const char* wrong : {"", "{}", "B637B615-C43B-40B8-B9D8-B6E29E80AA6D", "{B637B615-C43B-40B8-B9D8-B6E29E80AA6D",
                              "{B637B615-C43B-40B8-B9D8-B6E29E80AA6DF}", "{B637B615-C43B-40B8-B9D8B-6E29E80AA6D}",
                              "{G637B615-C43B-40B8-B9D8-B6E29E80AA6D}"}) {
        EXPECT_FALSE(ParseClassId(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace marbex::tools
