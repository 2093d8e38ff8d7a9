
#include "companion_fixture.h"
#include "companions/line_display_driver.h"

namespace marbex::tests {
namespace {

class LineDisplay : public CompanionTest {
protected:
    void SetUp() override
    {
        UsePrinter("NESTO");
        display.OpenService("", "", nullptr);
        display.ClaimDevice(0);
        display.SetPropertyNumber(3, 1);
        log.Forget();
    }

    Lines Logged() const { return CompanionTest::Logged("MarbexOposLineDisplayDriver"); }

    companions::MarbexOposLineDisplayDriver display;
};

TEST_F(LineDisplay, TextReachesThePrinterUnchanged)
{
    const std::string text("\x80 caf\xE9\n", 7);
    EXPECT_EQ(display.DisplayText(text, 3), 77);
    EXPECT_EQ(Logged(), (Lines{"T DisplayText Begin", "T VerifyMayUseAfter Begin (7)", "T VerifyMayUseAfter End",
                               "T DisplayText End"}));
    printer->result = 106;
    EXPECT_EQ(display.DisplayTextAt(-1, 300, text, 0), 106);
    EXPECT_EQ(Logged(), (Lines{"T DisplayTextAt Begin", "T VerifyMayUseAfter Begin (7)", "T VerifyMayUseAfter End",
                               "T DisplayTextAt End"}));
    EXPECT_EQ(calls, (FakeDevice::Calls{"DisplayText(" + text + ",3)", "DisplayTextAt(-1,300," + text + ",0)"}));
}

TEST_F(LineDisplay, NothingIsShownWhileItIsDisabled)
{
    display.SetPropertyNumber(3, 0);
    EXPECT_EQ(display.DisplayText("AB", 0), 105);
    EXPECT_EQ(display.DisplayTextAt(1, 5, "AB", 0), 105);
    EXPECT_EQ(display.ClearText(), 105);
    display.CloseService();
    EXPECT_EQ(display.DisplayText("AB", 0), 101);
    EXPECT_EQ(calls, FakeDevice::Calls{});
}

TEST_F(LineDisplay, WritesReachThePrinterButForItsOwnEnabling)
{
    display.SetPropertyNumber(5001, 437);
    display.SetPropertyString(1000002, "x");
    display.SetPropertyNumber(3, 1);
    EXPECT_EQ(calls, (FakeDevice::Calls{"SetPropertyNumber(5001,437)", "SetPropertyString(1000002,x)"}));
    EXPECT_EQ(Logged(), (Lines{"T SetPropertyNumber Begin", "T SetPropertyNumber End", "T SetPropertyString Begin",
                               "T SetPropertyString End", "T SetPropertyNumber Begin", "T SetPropertyNumber End"}));
}

TEST_F(LineDisplay, HasNoCommands)
{
    int32_t data = 100;
    EXPECT_EQ(display.DirectIO(0, &data, nullptr), 101) << "as constructed";
    EXPECT_EQ(Logged(), (Lines{"T DirectIO Begin (0)", "T DirectIO End"}));
    EXPECT_EQ(display.DirectIO(257, &data, nullptr), 106);
    EXPECT_EQ(Logged(), (Lines{"T DirectIO Begin (257)", "T SetErrorCode Begin (106, 0)", "T SetErrorCode ** ERROR **",
                               "T SetErrorCode End", "T DirectIO End"}));
    EXPECT_EQ(calls, FakeDevice::Calls{});
}

}  // namespace
}  // namespace marbex::tests
