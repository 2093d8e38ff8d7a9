#include "companion_fixture.h"
#include "companions/cash_drawer_driver.h"

namespace marbex::tests {
namespace {

class CashDrawer : public CompanionTest {
protected:
    void SetUp() override
    {
        UsePrinter("TALIS");
        drawer.OpenService("", "", nullptr);
        drawer.ClaimDevice(0);
        drawer.SetPropertyNumber(3, 1);
        log.Forget();
    }

    int32_t Command(int32_t command, int32_t data) { return drawer.DirectIO(command, &data, nullptr); }
    Lines Logged() const { return CompanionTest::Logged("MarbexOposCashDrawerDriver"); }

    companions::MarbexOposCashDrawerDriver drawer;
};

TEST_F(CashDrawer, PulseTimesAreStoredWithinTheirLimitsOnly)
{
    EXPECT_EQ(Command(257, 50), 0);
    EXPECT_EQ(Command(258, 510), 0);
    for (const int32_t outside : {49, 511, 0, -100, 0x7FFFFFFF}) {
        EXPECT_EQ(Command(257, outside), 106) << outside;
        EXPECT_EQ(Command(258, outside), 106) << outside;
    }
    EXPECT_EQ(drawer.DirectIO(257, nullptr, nullptr), 106);
    drawer.OpenDrawer();
    EXPECT_EQ(Command(257, 510), 0);
    EXPECT_EQ(Command(258, 50), 0);
    drawer.OpenDrawer();
    EXPECT_EQ(calls, (FakeDevice::Calls{"Kick(50,510)", "Kick(510,50)"}));
}

TEST_F(CashDrawer, DirectIoTellsWhatBecameOfTheValue)
{
    Command(257, 60);
    EXPECT_EQ(Logged(), (Lines{"T DirectIO Begin (257)", "T DirectIO CMD_CASHDRAWER_TIMEON value 60",
                               "T SetErrorCode Begin (0, 0)", "T SetErrorCode ** OK **", "T SetErrorCode End",
                               "T DirectIO CMD_CASHDRAWER_TIMEON value Sets", "T DirectIO End"}));
    Command(258, 20);
    EXPECT_EQ(Logged(), (Lines{"T DirectIO Begin (258)", "T DirectIO CMD_CASHDRAWER_TIMEOFF value 20",
                               "T SetErrorCode Begin (106, 0)", "T SetErrorCode ** ERROR **", "T SetErrorCode End",
                               "T DirectIO CMD_CASHDRAWER_TIMEOFF value NOT Sets", "T DirectIO End"}));
    Command(258, 70);
    EXPECT_EQ(Command(3, 1), 106);
    EXPECT_EQ(Command(0, 100), 106) << "the result code that is left";
    Command(257, 100);
    EXPECT_EQ(Command(0, 20), 0);
    log.Forget();
    drawer.CloseService();
    log.Forget();
    EXPECT_EQ(Command(257, 20), 0);
    EXPECT_EQ(Logged(), (Lines{"T DirectIO Begin (257)", "T DirectIO End"})) << "a closed drawer takes no command";
}

TEST_F(CashDrawer, HasNoSensor)
{
    for (const int32_t index : {1001, 1501, 1502})
        EXPECT_EQ(drawer.GetPropertyNumber(index), 0) << index;
    EXPECT_EQ(calls, FakeDevice::Calls{});

    log.Forget();
    EXPECT_EQ(drawer.WaitForDrawerClose(1, 2, 3, 4), 106);
    EXPECT_EQ(Logged(), (Lines{"T WaitForDrawerClose Begin", "T VerifyMayUseAfter Begin (7)", "T VerifyMayUseAfter End",
                               "T WaitForDrawerClose Not Supported"}));
    drawer.SetPropertyNumber(3, 0);
    EXPECT_EQ(drawer.WaitForDrawerClose(1, 2, 3, 4), 105);
}

TEST_F(CashDrawer, WritesNeverReachThePrinter)
{
    drawer.SetPropertyNumber(4, 1);
    drawer.SetPropertyString(1000002, "x");
    EXPECT_EQ(Logged(), (Lines{"T SetPropertyNumber Begin", "T SetPropertyNumber End", "T SetPropertyString Begin",
                               "T SetPropertyString End"}));
    EXPECT_EQ(drawer.ClearInput(), 106);
    EXPECT_EQ(drawer.ClearOutput(), 106);
    EXPECT_EQ(Logged(), (Lines{"T ClearInput Begin", "T ClearInput End", "T ClearOutput Begin", "T ClearOutput End"}));
    EXPECT_EQ(calls, FakeDevice::Calls{}) << "clearing would drop the printer's receipts";
}

}  // namespace
}  // namespace marbex::tests
