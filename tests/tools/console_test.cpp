#include "marbex_opos/console/console.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "marbex_opos/session/registered_server.h"

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
    const std::function<void(std::string_view)> print_ = [this](std::string_view line) { lines_.emplace_back(line); };
    Console console_{FAKE_SERVER_PATH, {}, print_};
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
    EXPECT_TRUE(console_.HasEnded());
    EXPECT_EQ(console_.ExitStatus(), 2);
}

TEST_F(ConsoleTest, IsATestOfResultsAndEvents)
{
    EXPECT_EQ(Run({R"(POSPrinter.OpenService("POSPrinter", "Till1") == 0)", "POSPrinter.CutPaper(100) == 0 or 99"}),
              (Lines{"= 0", "! ErrorEvent POSPrinter 114 201 1 99", "= 99"}));
    EXPECT_EQ(console_.ExitStatus(), 0);
    EXPECT_EQ(Run({"POSPrinter.ResultCode == 0 or OPOS_E_BUSY", "POSPrinter.DeviceName == \"a\"",
                   "POSPrinter.DeviceName == null", "POSPrinter.SetPropertyNumber(1, 2) == 0",
                   "POSPrinter.GetPropertyNumber(9) == OPOS_S_IDLE", "require OutputCompleteEvent 1", "require any 0"}),
              (Lines{"= 6", "? line 3: 6, expected 0 or 113 (OPOS_E_BUSY)", "= null", "? line 4: null, expected \"a\"",
                     "= null", "=", "? line 6: no result, expected 0", "= 9", "? line 7: 9, expected 2 (OPOS_S_IDLE)",
                     "= 1", "? line 8: no OutputCompleteEvent within 1 ms", "= 0"}));
    EXPECT_EQ(console_.ExitStatus(), 2);
    EXPECT_FALSE(console_.HasEnded());
}

TEST_F(ConsoleTest, NamesNumbersByWhatTheyAreTheResultOf)
{
    Console named(FAKE_SERVER_PATH, {.names = true}, print_);
    named.Execute(R"(POSPrinter.OpenService("POSPrinter", "Till1"))");
    named.Execute("answer clear");
    named.Execute("POSPrinter.CutPaper(100)");
    named.Execute(R"(POSPrinter.PrintNormal(11, "a"))");
    named.Execute(R"(POSPrinter.PrintNormal(102, "a"))");
    named.Execute("wait 0");
    named.Execute("POSPrinter.GetPropertyNumber(9)");
    named.Execute(R"(POSPrinter.DirectIO(101, 102, ""))");
    EXPECT_EQ(lines_,
              (Lines{"= 0", "=", "! ErrorEvent POSPrinter 114 (OPOS_E_EXTENDED) 201 (OPOS_EPTR_COVER_OPEN) 1 12",
                     "= 12", "= 0", "= 0", "! StatusUpdateEvent POSPrinter 11 (PTR_SUE_COVER_OPEN)",
                     "! StatusUpdateEvent POSPrinter 102", "=", "= 9", R"(= 0 &103 &"\x1B\"\\é\x85")"}));
}

TEST_F(ConsoleTest, HelpsWithWhatCanBeCalled)
{
    EXPECT_EQ(Run({"help POSPrinter.OpenService", "help POSPrinter.State", "help CashDrawer.CheckHealthText"}),
              (Lines{"OpenService(string DeviceClass, string DeviceName)",
                     "State  number: OPOS_S_CLOSED, OPOS_S_IDLE, OPOS_S_BUSY, OPOS_S_ERROR", "CheckHealthText  text"}));
    const Lines all = Run({"help POSPrinter"});
    EXPECT_NE(std::ranges::find(all, "CutPaper(long Percentage)"), all.end());
    EXPECT_NE(std::ranges::find(all, "AsyncMode  number"), all.end());
    EXPECT_GT(Run({"help"}).size(), 10U);
    EXPECT_EQ(console_.ExitStatus(), 0);
}

TEST_F(ConsoleTest, EndsAtTheFirstComplaintWhenToldTo)
{
    Console strict("/nowhere/server.so", {.echo = true, .stop = true}, print_);
    strict.Execute("wait 0");
    EXPECT_FALSE(strict.HasEnded());
    strict.Execute("POSPrinter.State");
    EXPECT_TRUE(strict.HasEnded());
    ASSERT_EQ(lines_.size(), 4U);
    EXPECT_EQ(lines_[2], "> POSPrinter.State");
    EXPECT_TRUE(lines_[3].starts_with("? line 2: POSPrinter cannot be created: /nowhere/server.so: ")) << lines_[3];
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
