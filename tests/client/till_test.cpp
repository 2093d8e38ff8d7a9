#include <gtest/gtest.h>
#include <marbex/till.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "device/process_state.h"
#include "temp_registry.h"
#include "virtual_printer/server.h"

namespace marbex {

void PrintTo(Result result, std::ostream* out)
{
    *out << Name(result);
}

namespace {

using std::chrono::seconds;
using virtual_printer::Cut;

constexpr auto kSoon = seconds(10);

class Till : public testing::Test {
protected:
    explicit Till(const char* model = "TALIS ETHERNET") : paper(model)
    {
        char port[16];
        std::snprintf(port, sizeof port, "%08x", static_cast<unsigned>(paper.Port()));
        registry.Write(
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"65001\"\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till1]\n"
            "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModel\"=\"" +
            std::string(model) +
            "\"\n\"IPAddress\"=\"127.0.0.1\"\n\"PortType\"=dword:00000001\n\"TimeoutTX\"=dword:000001f4\n"
            "\"TimeoutRX\"=dword:000003e8\n\"Port\"=dword:" +
            port + "\n");
    }
    void Lose()
    {
        paper.Refuse(true);
        paper.Drop();
    }
    void Find() { paper.Refuse(false); }
    bool Printed(const std::string& line)
    {
        return paper.WaitFor([&](const auto& printer) {
            const auto lines = printer.Lines();
            return std::find(lines.begin(), lines.end(), line) != lines.end();
        });
    }

    tests::TempRegistry registry;
    virtual_printer::TcpPrinterServer paper;
    Printer printer;
};

TEST_F(Till, AnswersWithOneEnum)
{
    EXPECT_EQ(printer.Print("x"), Result::kClosed);
    EXPECT_EQ(printer.SetAsync(true), Result::kClosed);
    EXPECT_EQ(printer.Close(), Result::kClosed);
    EXPECT_EQ(CashDrawer(printer).Start(), Result::kIllegal) << "no printer is open";
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    EXPECT_EQ(printer.Start("Till1"), Result::kIllegal);
    EXPECT_EQ(printer.Print({"one\0two", 7}), Result::kIllegal);
    EXPECT_EQ(printer.PrintPicture("/no/such/file.png"), Result::kNoExist);
    EXPECT_EQ(printer.Print(BarCode{Symbology::kEan13, "4006381333930"}), Result::kIllegal) << "wrong check digit";
    EXPECT_EQ(LineDisplay(printer).Start(), Result::kIllegal) << "this model has none";
    EXPECT_FALSE(printer.IsOutputPending());

    Lose();
    EXPECT_EQ(printer.Print("x\n"), Result::kNoHardware);
    EXPECT_FALSE(printer.IsOutputPending()) << "the call has told";
    (void)printer.Close();
    EXPECT_EQ(printer.GetState(), State::kClosed);

    for (const auto result : {Result::kSuccess, Result::kNoHardware, Result::kCoverOpen, Result::kPaperEmpty}) {
        EXPECT_STRNE(Name(result), Name(Result{77}));
        EXPECT_STRNE(Advice(result), Advice(Result{77}));
    }
}

// Answers that paper is out, as a printer does that stops taking data.
class EmptyDevice : public device::POSPrinterDevice {
    int32_t OpenService(const std::string&, const std::string&, IDispatch*) override { return 0; }
    int32_t PrintNormal(int32_t, const std::string&) override { return opos::OPOS_E_EXTENDED; }
    int32_t GetPropertyNumber(int32_t property) override
    {
        return property == opos::PIDX_ResultCodeExtended ? opos::OPOS_EPTR_REC_EMPTY : 0;
    }
};

TEST_F(Till, TakesTheExtendedResultForTheResult)
{
    device::ReplaceDeviceFactory([](std::string_view) { return std::make_shared<EmptyDevice>(); });
    EXPECT_EQ(printer.Open("Till1"), Result::kSuccess);
    EXPECT_EQ(printer.Print("x\n"), Result::kPaperEmpty);
    (void)printer.Close();
    device::ReplaceDeviceFactory({});
}

TEST_F(Till, FollowsWhatIsQueuedToItsEnd)
{
    std::vector<Result> errors;
    std::vector<Status> status;
    auto answer = ErrorAnswer::kRetry;
    printer.onStatus = [&](Status now) { status.push_back(now); };
    printer.onError = [&](Result error) {
        errors.push_back(error);
        if (answer == ErrorAnswer::kRetry) Find();
        return answer;
    };
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    ASSERT_EQ(printer.SetAsync(true), Result::kSuccess);
    Lose();
    EXPECT_EQ(printer.Print("queued\n"), Result::kSuccess);
    EXPECT_EQ(printer.Cut(), Result::kSuccess);
    EXPECT_TRUE(printer.IsOutputPending());
    EXPECT_TRUE(printer.WaitForOutput(kSoon));
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[0], Result::kNoHardware);
    EXPECT_TRUE(Printed("queued"));
    EXPECT_EQ(status, std::vector{Status::kIdle}) << "was enabled";

    answer = ErrorAnswer::kClear;
    Lose();
    EXPECT_EQ(printer.Print("dropped\n"), Result::kSuccess);
    EXPECT_TRUE(printer.WaitForOutput(kSoon)) << "dropped output is pending no more";

    printer.onError = nullptr;
    EXPECT_EQ(printer.Print("held up\n"), Result::kSuccess);
    EXPECT_FALSE(printer.WaitForOutput(std::chrono::milliseconds(100)));
    EXPECT_EQ(printer.ClearOutput(), Result::kSuccess);
    EXPECT_FALSE(printer.IsOutputPending());
}

TEST_F(Till, LetsOutWhatHandlersThrow)
{
    printer.onStatus = [](Status) { throw std::runtime_error("of the handler"); };
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    EXPECT_THROW(RunMessagesUntil([] { return false; }, kSoon), std::runtime_error);
    EXPECT_EQ(printer.Print("goes on\n"), Result::kSuccess);

    printer.onError = [](Result) -> ErrorAnswer { throw std::runtime_error("of the handler"); };
    Lose();
    EXPECT_THROW((void)printer.Print("x\n"), std::runtime_error);
    EXPECT_FALSE(printer.IsOutputPending()) << "what cannot be asked about is dropped";
}

TEST_F(Till, MayBeClosedByItsOwnHandler)
{
    printer.onOutputComplete = [this](int32_t) { (void)printer.Close(); };
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    EXPECT_EQ(printer.Print("last\n"), Result::kSuccess);
    EXPECT_TRUE(RunMessagesUntil([this] { return !printer.IsOpen(); }, kSoon));
    EXPECT_TRUE(Printed("last"));
}

TEST_F(Till, SendsBytesAndTextAsTheyAre)
{
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    EXPECT_EQ(printer.Print("\xE2\x82\xAC \xC3\xA9 \xFF\xC3 \xED\xA0\x80\n"), Result::kSuccess);
    EXPECT_EQ(printer.SendBytes(std::string(127, '\x0A') + "\x80\x0A\x1B@"), Result::kSuccess);
    EXPECT_TRUE(Printed("\u20AC \u00E9 ?? ???"));
    EXPECT_TRUE(Printed("\u00C7")) << "0x80 of code page 437";
    EXPECT_EQ(detail::ToUtf8(detail::ToUtf16("\xF0\x9F\xA7\xBE")), "\xF0\x9F\xA7\xBE");
}

class Counter : public Till {
protected:
    Counter() : Till("NESTO") {}
};

TEST_F(Counter, HasADrawerAndADisplay)
{
    ASSERT_EQ(printer.Start("Till1"), Result::kSuccess);
    CashDrawer drawer(printer);
    LineDisplay display(printer);
    ASSERT_EQ(drawer.Start(), Result::kSuccess);
    ASSERT_EQ(display.Start(), Result::kSuccess);
    EXPECT_EQ(drawer.SetPulse(std::chrono::milliseconds(200), std::chrono::milliseconds(49)), Result::kIllegal);
    EXPECT_EQ(drawer.OpenDrawer(), Result::kSuccess);
    EXPECT_EQ(display.Rows() * display.Columns(), 40);
    EXPECT_EQ(display.ShowAt(1, 0, "Total 1,50"), Result::kSuccess);
    EXPECT_TRUE(
        paper.WaitFor([](const auto& all) { return !all.template All<virtual_printer::DrawerPulse>().empty(); }));
    EXPECT_EQ(paper.All<virtual_printer::DrawerPulse>()[0].onMs, 200);
    EXPECT_EQ(drawer.Enable(false), Result::kSuccess);
    EXPECT_EQ(drawer.OpenDrawer(), Result::kDisabled);
    EXPECT_FALSE(printer.WaitForOutput(kSoon) && printer.IsOutputPending());
    EXPECT_EQ(printer.Enable(false), Result::kSuccess);
    EXPECT_EQ(display.Clear(), Result::kIllegal) << "its printer is not enabled";
}

}  // namespace
}  // namespace marbex
