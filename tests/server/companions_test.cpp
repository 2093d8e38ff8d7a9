// The two companions as a control object uses them: by class, by name, beside the printer they hang on.

#include <gtest/gtest.h>

#include "front_fixture.h"
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

    struct Row {
        const char16_t* name;
        std::vector<Arg> arguments;
        bool refused = false;  // with 106
    };

    // Every method of the table in the order of the identifiers that clients may have stored; the log tells which one
    // an identifier reaches.
    static void ExpectMethods(const Client& companion, const std::string& tag, std::span<const Row> rows)
    {
        DISPID id = 0;
        for (const Row& row : rows) {
            const std::string name(row.name, row.name + std::char_traits<char16_t>::length(row.name));
            EXPECT_EQ(companion.IdOf(row.name), ++id) << name;
            capturedLog.clear();
            const Outcome outcome = companion.Invoke(id, row.arguments);
            EXPECT_EQ(outcome.result, S_OK) << name;
            EXPECT_EQ(outcome.number == 106, row.refused) << name;
            EXPECT_TRUE(Log().starts_with("[" + tag + "] " + name + " Begin")) << Log();

            std::vector<Arg> tooMany = row.arguments;
            tooMany.emplace_back(0);
            EXPECT_EQ(companion.Invoke(id, tooMany).result, DISP_E_BADPARAMCOUNT) << name;
        }
        EXPECT_EQ(companion.Invoke(id + 1, {}).result, DISP_E_MEMBERNOTFOUND);
    }
};

TEST_F(Companions, CashDrawerMethodsHaveTheirNumbers)
{
    OpenPrinter("TALIS");
    const Client drawer(Client::Made(kDrawerClass));
    LONG data = 100;
    BSTR string = nullptr;
    const Row rows[] = {
        {u"OpenService", {u"CashDrawer", u"Till", static_cast<IDispatch*>(nullptr)}},
        {u"CloseService", {}},
        {u"ClaimDevice", {1000}},
        {u"COFreezeEvents", {1}, true},
        {u"CompareFirmwareVersion", {u"f", 1}, true},
        {u"UpdateFirmware", {u"f"}, true},
        {u"DirectIO", {1, &data, &string}},
        {u"CheckHealth", {1}, true},
        {u"ReleaseDevice", {}},
        {u"GetPropertyNumber", {1001}},
        {u"GetPropertyString", {1000002}},
        {u"SetPropertyString", {1000002, u"x"}},
        {u"SetPropertyNumber", {3, 1}},
        {u"OpenDrawer", {}},
        {u"WaitForDrawerClose", {1, 2, 3, 4}},
        {u"ResetStatistics", {u"s"}, true},
        {u"RetrieveStatistics", {&string}, true},
        {u"UpdateStatistics", {u"s"}, true},
        {u"ClearInput", {}, true},
        {u"ClearOutput", {}, true},
    };
    ASSERT_EQ(std::size(rows), 20U);
    ExpectMethods(drawer, "MarbexOposCashDrawerDriver", rows);
    SysFreeString(string);
}

TEST_F(Companions, LineDisplayMethodsHaveTheirNumbers)
{
    OpenPrinter("NESTO");
    const Client display(Client::Made(kDisplayClass));
    LONG data = 100;
    BSTR string = nullptr;
    const Row rows[] = {
        {u"OpenService", {u"LineDisplay", u"Till", static_cast<IDispatch*>(nullptr)}},
        {u"CloseService", {}},
        {u"ClaimDevice", {1000}},
        {u"COFreezeEvents", {1}, true},
        {u"ReleaseDevice", {}},
        {u"CheckHealth", {1}, true},
        {u"DirectIO", {0, &data, &string}},
        {u"ClearDescriptors", {}, true},
        {u"SetDescriptor", {1, 2}, true},
        {u"ClearText", {}},
        {u"CreateWindow", {1, 2, 3, 4, 5, 6}, true},
        {u"DestroyWindow", {}, true},
        {u"RefreshWindow", {0}, true},
        {u"DisplayText", {u"AB", 0}},
        {u"DisplayTextAt", {1, 5, u"AB", 0}},
        {u"ScrollText", {3, 1}, true},
        {u"CompareFirmwareVersion", {u"f", 1}, true},
        {u"UpdateFirmware", {u"f"}, true},
        {u"ResetStatistics", {u"s"}, true},
        {u"RetrieveStatistics", {&string}, true},
        {u"UpdateStatistics", {u"s"}, true},
        {u"DefineGlyph", {65, u"glyph"}, true},
        {u"ReadCharacterAtCursor", {0}, true},
        {u"DisplayBitmap", {u"a.bmp", -11, -1, -1}, true},
        {u"SetBitmap", {1, u"a.bmp", -11, -1, -1}, true},
        {u"GetPropertyNumber", {5002}},
        {u"GetPropertyString", {1000002}},
        {u"SetPropertyString", {1000002, u"x"}},
        {u"SetPropertyNumber", {3, 1}},
    };
    ASSERT_EQ(std::size(rows), 29U);
    ExpectMethods(display, "MarbexOposLineDisplayDriver", rows);
    // The standard's control objects pass both arguments; none will do as well.
    EXPECT_EQ(display.Number(u"SetDescriptor"), 106);
    EXPECT_EQ(display.Call(u"SetDescriptor", {1}).result, DISP_E_BADPARAMCOUNT);
    SysFreeString(string);
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
