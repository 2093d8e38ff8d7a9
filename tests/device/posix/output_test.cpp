#include <thread>

#include "common/wait_until.h"
#include "device/posix/device_bench.h"

namespace marbex::test {
namespace {

using namespace opos;
using namespace virtual_printer;

class OutputTest : public DeviceBench {};

TEST_F(OutputTest, AThousandQueuedJobsPrintInOrderWithOneCompletionEach)
{
    Ready();
    Async(true);
    std::vector<std::string> lines;
    for (int i = 1; i <= 1000; ++i) {
        lines.push_back("line " + std::to_string(i));
        ASSERT_EQ(device->PrintNormal(PTR_S_RECEIPT, lines.back()), 0);
        EXPECT_EQ(Number(PIDX_OutputID), i);
    }
    ASSERT_TRUE(Completed(1000));
    std::vector<ControlEvent> completions;
    for (int i = 1; i <= 1000; ++i)
        completions.push_back(Complete(i));
    EXPECT_EQ(control.events, completions);
    EXPECT_TRUE(server.WaitFor([&](const auto& printer) { return printer.Lines() == lines; }));
}

TEST_F(OutputTest, TextKeepsItsStyleAlignmentAndForeignCharacters)
{
    Ready();
    for (const int set : {0, 19, 14, 17})
        device->CharSets.push_back(*support::FindCharacterSet(static_cast<uint8_t>(set)));
    EXPECT_EQ(device->GetPropertyString(PIDXPtr_CharacterSetList), "437,858,737,866,999");
    const std::string text =
        "\x1B|cA\x1B|4CSHOP\x1B|N\nÀ payer 3,50 €\nΣύνολο / Итого\n\x1B|bCTOTAL\x1B|N 🙂\x1B|50P";
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, text), 0);
    ASSERT_TRUE(server.WaitFor([](const auto& printer) { return !printer.template All<Cut>().empty(); }));
    const std::vector<TextLine> lines = server.All<TextLine>();
    EXPECT_EQ(lines[0].text, "SHOP");
    EXPECT_EQ(lines[0].alignment, Alignment::kCentre);
    EXPECT_EQ(lines[0].runs.front().style.scaleX, 2);
    EXPECT_EQ(lines[0].runs.front().style.scaleY, 2);
    EXPECT_EQ(lines[1].text, "À payer 3,50 €");
    EXPECT_EQ(lines[2].text, "Σύνολο / Итого");
    EXPECT_EQ(lines[3].text, "TOTAL ??");
    EXPECT_TRUE(lines[3].runs.front().style.bold);
    EXPECT_TRUE(server.All<Unknown>().empty());
}

TEST_F(OutputTest, ACutFeedsTheLinesToTheCutterFirst)
{
    Ready();
    EXPECT_EQ(device->CutPaper(100), 0);
    EXPECT_EQ(device->CutPaper(50), 0);
    ASSERT_TRUE(server.WaitFor([](const auto& printer) { return printer.template All<Cut>().size() == 2; }));
    EXPECT_EQ(server.All<Cut>(), (std::vector<Cut>{{true}, {false}}));
    EXPECT_EQ(server.All<TextLine>().size(), 8U);
    ASSERT_TRUE(Completed(4));
    EXPECT_EQ(control.events, (std::vector<ControlEvent>{Complete(0), Complete(1), Complete(1), Complete(2)}));
}

TEST_F(OutputTest, ATransactionPrintsAsOneJob)
{
    Ready();
    EXPECT_EQ(device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_TRANSACTION), 0);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "one\n"), 0);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "two\n"), 0);
    EXPECT_EQ(device->PrintImmediate(PTR_S_RECEIPT, "now\n"), 0);
    EXPECT_TRUE(server.WaitFor([](const auto& printer) { return printer.Lines() == std::vector<std::string>{"now"}; }));
    EXPECT_EQ(device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_NORMAL), 0);
    EXPECT_TRUE(server.WaitFor([](const auto& printer) {
        return printer.Lines() == std::vector<std::string>{"now", "one", "two"};
    }));
    ASSERT_TRUE(Completed(1));
    EXPECT_EQ(control.events, std::vector<ControlEvent>{Complete(2)});
    EXPECT_EQ(device->TransactionPrint(PTR_S_RECEIPT, 13), OPOS_E_ILLEGAL);
}

TEST_F(OutputTest, VendorCommandsSendBytesKickTheDrawerAndComeBackAsEvents)
{
    Ready();
    int32_t count = 3;
    std::u16string bytes = {u'A', 0, u'\x0A'};
    EXPECT_EQ(device->DirectIO(0, &count, &bytes), 0);
    count = 129;
    EXPECT_EQ(device->DirectIO(0, &count, &bytes), OPOS_E_ILLEGAL);
    count = 4;
    EXPECT_EQ(device->DirectIO(0, &count, &bytes), OPOS_E_ILLEGAL) << "more than the text holds";
    EXPECT_EQ(device->DirectIO(0, nullptr, nullptr), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->DirectIO(7, nullptr, nullptr), 0);
    EXPECT_EQ(device->ReleaseDevice(), 0);
    count = 5;
    std::u16string none;
    EXPECT_EQ(device->DirectIO(1, &count, &none), 0) << "needs an open device only";
    EXPECT_EQ(device->External_CashDrawer_OpenDrawer(100, 300), 0);
    ASSERT_TRUE(server.WaitFor([](const auto& printer) { return printer.template All<DrawerPulse>().size() == 2; }));
    EXPECT_EQ(server.All<DrawerPulse>(), (std::vector<DrawerPulse>{{0x30, 98, 98, true}, {0x30, 100, 300, true}}));
    ASSERT_TRUE(RunUntil([this] { return !control.Named("SODirectIO").empty(); }));
    EXPECT_EQ(control.Named("SODirectIO").back(), (ControlEvent{"SODirectIO", {1, 5}, u""}));
}

TEST_F(OutputTest, NothingIsLostOfALargeTextAndMarkersPrintAsZeroBytes)
{
    Ready();
    std::string text;
    for (int i = 0; i < 25000; ++i)
        text += "This is line number " + std::to_string(100000 + i) + " of many\n";
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, text), 0);
    EXPECT_TRUE(
        server.WaitFor([](const auto& printer) { return printer.Lines().size() == 25000; }, std::chrono::seconds(60)));
    EXPECT_EQ(server.Lines().back(), "This is line number 124999 of many");
    EXPECT_TRUE(server.All<Unknown>().empty());
}

TEST_F(OutputTest, IdleIsReportedOnceWhenAskedFor)
{
    Ready();
    Async(true);
    device->SetPropertyNumber(PIDXPtr_FlagWhenIdle, 1);
    EXPECT_EQ(Number(PIDXPtr_FlagWhenIdle), 1);
    device->PrintNormal(PTR_S_RECEIPT, "x");
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 2; }));
    EXPECT_EQ(control.events, (std::vector<ControlEvent>{Complete(1), Status(PTR_SUE_IDLE)}));
    EXPECT_EQ(Number(PIDXPtr_FlagWhenIdle), 0);
}

TEST_F(OutputTest, ASecondThreadIsToldBusyAndNeverBlocked)
{
    Ready();
    server.SetCover(true);  // the printer stops taking data
    std::thread printing([this] {
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, std::string(1 << 20, 'x')), OPOS_E_NOHARDWARE)
            << "the status query is stuck behind the text";
    });
    WaitUntil([this] { return device->State.load() == OPOS_S_BUSY; });
    EXPECT_EQ(device->PrintImmediate(PTR_S_RECEIPT, "x"), OPOS_E_BUSY);
    EXPECT_TRUE(RunUntil([this] { return device->State.load() == OPOS_S_IDLE; }));
    printing.join();
    EXPECT_EQ(Number(PIDX_ResultCodeExtended), 0) << "reading a property clears the result of the call before";
}

}  // namespace
}  // namespace marbex::test
