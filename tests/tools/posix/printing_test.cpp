// From the statement of an application to the paper and back to its events: the console, the server library and a
// printer made of software.

#include <gtest/gtest.h>

#include "tools/posix/printer_and_till.h"

namespace marbex::tools {
namespace {

using virtual_printer::Cut;
using virtual_printer::DrawerPulse;
using virtual_printer::PaperState;
using virtual_printer::Unknown;
using virtual_printer::VirtualPrinter;

constexpr const char* kPrint = "POSPrinter.PrintNormal(PTR_S_RECEIPT, ";

std::string Print(const std::string& text)
{
    return kPrint + ("\"" + text + "\")");
}

TEST(Printing, FromOpenToClose)
{
    PrinterAndTill shop;
    EXPECT_EQ(shop.till.Run({"POSPrinter.State", "POSPrinter.ClaimDevice(0)"}), (Lines{"= 106", "= 106"}))
        << "before the first open there is no device";
    shop.till.OpenClaimEnable();
    EXPECT_EQ(shop.till.Answer(Print("\\e|bCTotal\\e|N 12,50 €\\n")), "= 0");
    EXPECT_EQ(shop.till.Answer("POSPrinter.CutPaper(PTR_CP_FULLCUT)"), "= 0");
    EXPECT_EQ(shop.till.Answer("POSPrinter.PrintNormal(PTR_S_SLIP, \"x\")"), "= 106");
    EXPECT_EQ(shop.till.Answer("POSPrinter.DeviceDescription"), "= \"Marbex OPOS POSPrinter (TALIS ETHERNET)\"");
    EXPECT_EQ(shop.till.Answer("POSPrinter.CheckHealth(OPOS_CH_INTERNAL)"), "= 0");
    EXPECT_EQ(shop.till.Answer("POSPrinter.ReleaseDevice()"), "= 0");
    EXPECT_EQ(shop.till.Answer("POSPrinter.CloseService()"), "= 0");
    EXPECT_EQ(shop.till.Answer("POSPrinter.State"), "= 1");

    EXPECT_EQ(shop.Happened<Cut>(1), std::vector{Cut{true}});
    EXPECT_EQ(shop.printer.Lines().front(), "Total 12,50 €");
    EXPECT_TRUE(shop.printer.All<Unknown>().empty());
    EXPECT_NE(shop.till.Registry().ContentsBelow("drive_c/SOLogFile1.txt").find("OpenService Begin"),
              std::string::npos);
}

TEST(Printing, OpensTheDrawerThroughThePrinter)
{
    PrinterAndTill shop;
    EXPECT_EQ(shop.till.Answer("CashDrawer.OpenDrawer()"), "= 106") << "no printer is open";
    shop.till.OpenClaimEnable();
    EXPECT_EQ(
        shop.till.Run({"CashDrawer.OpenService(\"CashDrawer\", \"Till1\")", "CashDrawer.OpenDrawer()",
                       "CashDrawer.ClaimDevice(0)", "CashDrawer.OpenDrawer()", "CashDrawer.DeviceEnabled = true",
                       "CashDrawer.DirectIO(257, 200, \"\")", "CashDrawer.OpenDrawer()", "CashDrawer.DrawerOpened"}),
        (Lines{"= 0", "= 103", "= 0", "= 105", "=", "= 0 &200 &\"\"", "= 0", "= 0"}));
    const std::vector<DrawerPulse> pulses = shop.Happened<DrawerPulse>(1);
    ASSERT_EQ(pulses.size(), 1U);
    EXPECT_EQ(pulses[0].onMs, 200);
    for (const char* call : {"ClearText()", "SetDescriptor(1, 0)", "SetDescriptor()"})
        EXPECT_EQ(shop.till.Answer(std::string("LineDisplay.") + call), "= 106") << "this model has no display";
}

TEST(Printing, TellsOfTheCoverAndThePaper)
{
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    shop.printer.SetCover(true);
    EXPECT_EQ(shop.till.EventsOf({"expect StatusUpdateEvent 20000"}), Lines{"StatusUpdateEvent POSPrinter 11"});
    EXPECT_EQ(shop.till.Answer("POSPrinter.CoverOpen"), "= 1");
    shop.printer.SetCover(false);
    EXPECT_EQ(shop.till.EventsOf({"expect StatusUpdateEvent 20000"}), Lines{"StatusUpdateEvent POSPrinter 12"});
    shop.printer.SetPaper(PaperState::kOut);
    EXPECT_EQ(shop.till.EventsOf({"expect StatusUpdateEvent 20000"}), Lines{"StatusUpdateEvent POSPrinter 24"});
}

TEST(Printing, RetriesUntilThePrinterIsBack)
{
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    shop.till.Run({"answer retry", "POSPrinter.AsyncMode = true"});
    shop.Lose();
    EXPECT_EQ(shop.till.Run({Print("kept\\n"), Print("too\\n")}), (Lines{"= 0", "= 0"}));
    EXPECT_EQ(shop.till.EventsOf({"expect ErrorEvent 20000", "expect ErrorEvent 20000"}),
              (Lines{"ErrorEvent POSPrinter 107 0 1 11", "ErrorEvent POSPrinter 107 0 1 11"}));
    shop.Find();
    EXPECT_EQ(shop.till.Answer("expect OutputCompleteEvent 20000"), "= 0");
    EXPECT_EQ(shop.till.Answer("expect OutputCompleteEvent 20000"), "= 0");
    EXPECT_EQ(shop.Printed(2), (Lines{"kept", "too"})) << "each printed once, however often it was tried";
}

TEST(Printing, ClearsTheQueueWhenTold)
{
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    shop.till.Run({"answer clear", "POSPrinter.AsyncMode = true"});
    shop.Lose();
    shop.till.Run({Print("one\\n"), Print("two\\n"), Print("three\\n")});
    EXPECT_EQ(shop.till.EventsOf({"expect ErrorEvent 20000"}), Lines{"ErrorEvent POSPrinter 107 0 1 12"});
    shop.Find();
    // An immediate print waits for the failed job to let go of the printer, whatever becomes of it.
    shop.till.Run({"answer retry", "POSPrinter.PrintImmediate(PTR_S_RECEIPT, \"\")", Print("after\\n")});
    EXPECT_EQ(shop.till.Answer("expect OutputCompleteEvent 20000"), "= 0");
    EXPECT_EQ(shop.Printed(1), Lines{"after"});
}

TEST(Printing, ReportsASynchronousErrorInTheResult)
{
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    shop.Lose();
    EXPECT_EQ(shop.till.Run({Print("lost\\n"), "POSPrinter.ResultCode"}),
              (Lines{"! ErrorEvent POSPrinter 107 0 1 12", "= 107", "= 107"}));
    EXPECT_EQ(shop.till.Run({"POSPrinter.ReleaseDevice()", "POSPrinter.CloseService()"}), (Lines{"= 0", "= 0"}));
}

TEST(Printing, AThousandJobsInOrder)
{
    constexpr int kJobs = 1000;
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    shop.till.Run({"POSPrinter.AsyncMode = true"});
    Lines statements;
    Lines expected;
    for (int job = 1; job <= kJobs; ++job) {
        statements.push_back(Print("line " + std::to_string(job) + "\\n"));
        expected.push_back("line " + std::to_string(job));
    }
    for (const std::string& line : shop.till.Run(statements))
        ASSERT_TRUE(line == "= 0" || line.starts_with("! ")) << line;

    Lines events;
    while (events.size() < kJobs) {
        const Lines more = shop.till.EventsOf({"expect OutputCompleteEvent 20000"});
        ASSERT_FALSE(more.empty() && shop.till.Answer("expect any 0") == "= 1") << events.size() << " events came";
        events.insert(events.end(), more.begin(), more.end());
    }
    for (int job = 1; job <= kJobs; ++job) {
        ASSERT_EQ(events[static_cast<std::size_t>(job - 1)], "OutputCompleteEvent POSPrinter " + std::to_string(job));
    }
    EXPECT_EQ(shop.Printed(kJobs), expected);
}

TEST(Printing, AMegabyteOfTextArrivesWhole)
{
    constexpr std::size_t kLines = 32768;
    PrinterAndTill shop("TALIS ETHERNET", 30000);
    shop.till.OpenClaimEnable();
    std::string text;
    for (std::size_t line = 0; line < kLines; ++line)
        text += "A line of thirty-two characters\\n";
    EXPECT_EQ(shop.till.Answer(Print(text)), "= 0");
    EXPECT_TRUE(shop.printer.WaitFor([](const VirtualPrinter& printer) { return printer.Lines().size() == kLines; },
                                     std::chrono::seconds(60)));
    EXPECT_EQ(shop.printer.Lines().back(), "A line of thirty-two characters");
    EXPECT_TRUE(shop.printer.All<Unknown>().empty());
}

TEST(Printing, TheTextThatStandsForAZeroByteIsOne)
{
    PrinterAndTill shop;
    shop.till.OpenClaimEnable();
    // The zero completes a command that the application spells out: ESC a 0.
    EXPECT_EQ(shop.till.Answer(Print("\\e|cA\\eaMaRkEr00NuLlleft\\n")), "= 0");
    const auto lines = shop.Happened<virtual_printer::TextLine>(1);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "left");
    EXPECT_EQ(lines[0].alignment, virtual_printer::Alignment::kLeft);
}

}  // namespace
}  // namespace marbex::tools
