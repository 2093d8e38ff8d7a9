// The two companions as a control object uses them: by class, by name, beside the printer they hang on.

#include <gtest/gtest.h>

#include "front_fixture.h"
#include "method_calls.h"
#include "support/printer_tables.h"

namespace marbex::tests {
namespace {

class Companions : public FrontTest {
protected:
    // Opens a printer of the model, claimed and enabled.
    void OpenPrinter(const std::string& model)
    {
        WriteProfile("Till", "\"PrinterModel\"=\"" + model + "\"");
        Open();
        device->Claimed = 1;
        device->DeviceEnabled = 1;
        calls.clear();
        capturedLog.clear();
    }

    // Opens a companion, claims and enables it.
    static void Enable(const Client& companion)
    {
        EXPECT_EQ(companion.Number(u"OpenService", {u"", u"", static_cast<IDispatch*>(nullptr)}), 0);
        EXPECT_EQ(companion.Number(u"ClaimDevice", {1000}), 0);
        EXPECT_EQ(companion.Call(u"SetPropertyNumber", {3, 1}).type, VT_EMPTY);
    }

    // The log tells which method an identifier reaches.
    static void ExpectMethods(const Client& companion, const std::string& tag, const std::string& methods)
    {
        MethodCalls(methods).Make(companion, [&](const MethodCall& call) {
            capturedLog.clear();
            const Outcome outcome = companion.Invoke(call.id, call.arguments);
            EXPECT_EQ(outcome.result, S_OK);
            EXPECT_EQ(outcome.number == 106, call.outcome == "refused");
            EXPECT_TRUE(Log().starts_with("[" + tag + "] " + call.name + " Begin")) << Log();
        });
    }
};

const std::string kCashDrawerMethods =
#include "server/cash_drawer_methods.txt"
    ;
const std::string kLineDisplayMethods =
#include "server/line_display_methods.txt"
    ;

TEST_F(Companions, CashDrawerMethodsHaveTheirNumbers)
{
    OpenPrinter("TALIS");
    const Client drawer(Client::Made(kDrawerClass));
    ExpectMethods(drawer, "MarbexOposCashDrawerDriver", kCashDrawerMethods);
}

TEST_F(Companions, LineDisplayMethodsHaveTheirNumbers)
{
    OpenPrinter("NESTO");
    const Client display(Client::Made(kDisplayClass));
    ExpectMethods(display, "MarbexOposLineDisplayDriver", kLineDisplayMethods);
    // The standard's control objects pass both arguments; none will do as well.
    EXPECT_EQ(display.Number(u"SetDescriptor"), 106);
    EXPECT_EQ(display.Call(u"SetDescriptor", {1}).result, DISP_E_BADPARAMCOUNT);
}

TEST_F(Companions, FollowThePrinterThatIsOpen)
{
    const Client drawer(Client::Made(kDrawerClass));
    const Client display(Client::Made(kDisplayClass));
    EXPECT_EQ(drawer.Number(u"OpenDrawer"), 106);
    const Outcome nothing = display.Call(u"GetPropertyString", {1000002});
    EXPECT_EQ(nothing.type, VT_BSTR);
    EXPECT_FALSE(nothing.isNull);
    EXPECT_EQ(Log(), "") << "no printer, no line";

    OpenPrinter("VELA PC");
    Enable(drawer);
    Enable(display);
    LONG time = 200;
    EXPECT_EQ(drawer.Number(u"DirectIO", {257, &time, u""}), 0);
    EXPECT_EQ(drawer.Number(u"OpenDrawer"), 77);
    EXPECT_EQ(display.Number(u"DisplayTextAt", {2, 7, u"\u20AC 5", 0}), 77);
    EXPECT_EQ(calls, (FakeDevice::Calls{"Kick(200,100)", "DisplayTextAt(2,7,\x80 5,0)"}));
    EXPECT_EQ(drawer.Call(u"GetPropertyString", {1000004}).text, u"Marbex OPOS CashDrawer SO V1.0.0");
    EXPECT_EQ(display.Number(u"GetPropertyNumber", {8}), 1014100);
    EXPECT_TRUE(display.Call(u"GetPropertyString", {1005001}).isNull) << "as the printer answers";

    OpenPrinter("AMBRA");  // a drawer, no display
    EXPECT_EQ(drawer.Number(u"OpenDrawer"), 77);
    EXPECT_EQ(display.Number(u"ClearText"), 106);
    EXPECT_EQ(calls, (FakeDevice::Calls{"Kick(200,100)"}));

    client->Drop();
    EXPECT_EQ(drawer.Number(u"OpenDrawer"), 106) << "the printer's service is gone";
}

TEST_F(Companions, EachHoldsTheServer)
{
    client.reset();
    for (const CLSID& classId : {kDrawerClass, kDisplayClass}) {
        EXPECT_EQ(DllCanUnloadNow(), S_OK);
        Client companion(Client::Made(classId));
        EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace marbex::tests
