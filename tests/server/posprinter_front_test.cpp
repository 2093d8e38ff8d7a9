#include "server/posprinter_front.h"

#include <gtest/gtest.h>

#include "front_fixture.h"

namespace marbex::tests {
namespace {

using Calls = FakeDevice::Calls;
using device::TheProcess;

class Front : public FrontTest {};

constexpr const char* kKickAfterCut = "\"Settings\"=dword:00000001\n";

TEST_F(Front, WithoutADeviceAnswers106OrNothing)
{
    EXPECT_EQ(client->Number(u"ClaimDevice", {1000}), 106);
    EXPECT_EQ(client->Number(u"CloseService"), 106);
    EXPECT_EQ(client->Number(u"Close"), 106);
    EXPECT_EQ(client->Number(u"CutPaper", {90}), 106);
    EXPECT_EQ(client->Number(u"GetPropertyNumber", {1}), 106);
    EXPECT_EQ(client->Number(u"CompareFirmwareVersion", {u"f", 0}), 106);
    const Outcome text = client->Call(u"GetPropertyString", {1});
    EXPECT_EQ(text.type, VT_BSTR);
    EXPECT_FALSE(text.isNull);
    EXPECT_TRUE(text.text.empty());
    EXPECT_EQ(client->Call(u"SetPropertyNumber", {1, 2}).result, S_OK);
    EXPECT_EQ(client->Call(u"SetPropertyString", {1, u"x"}).result, S_OK);
    EXPECT_EQ(Log(), "");

    EXPECT_EQ(client->Number(u"DirectIO_NET", {3, 0, u""}), 106);
    EXPECT_EQ(client->Call(u"RetrieveStatistics_NET", {u"kept"}).text, u"kept");
    EXPECT_EQ(Log(),
              "[MarbexOposPrnDriver] DirectIO_NET Begin (3)\n"
              "[MarbexOposPrnDriver] DirectIO_NET End\n"
              "[TalisFiscalPrinter] RetrieveStatistics_NET Begin\n"
              "[TalisFiscalPrinter] RetrieveStatistics_NET End\n");
}

TEST_F(Front, OpensTheModelOfTheProfileWhateverItsCase)
{
    WriteProfile("Till", "\"PrinterModel\"=\"orven\"\n\"Fonts\"=hex:04,03,00,fe,13\n");
    EXPECT_EQ(client->Number(u"OpenService", {u"posPRINTER", u"Till", static_cast<IDispatch*>(nullptr)}), 77);
    EXPECT_EQ(models, std::vector<std::string>{"ORVEN"});
    EXPECT_EQ(calls, Calls{"OpenService(posPRINTER,Till,none)"}) << "as the caller wrote it";
    EXPECT_STREQ(support::PrinterModels()[TheProcess().CurrentModelIndex].Name, "ORVEN");
    ASSERT_EQ(device->CharSets.size(), 3U) << "number 254 is in no table";
    EXPECT_EQ(device->CharSets[0].SetNumber, 3);
    EXPECT_EQ(device->CharSets[1].SetNumber, 0);
    EXPECT_EQ(device->CharSets[2].SetNumber, 19);
    EXPECT_EQ(Log(), "");
}

TEST_F(Front, HasEveryModelOfTheTableAtItsIndex)
{
    const auto table = support::PrinterModels();
    for (std::size_t index = 0; index < table.size(); ++index) {
        WriteProfile("Till", "\"PrinterModel\"=\"" + std::string(table[index].Name) + "\"\n");
        EXPECT_EQ(Open(), 77);
        EXPECT_EQ(models.back(), table[index].Name);
        EXPECT_EQ(TheProcess().CurrentModelIndex, index) << table[index].Name;
    }
}

TEST_F(Front, AnUnknownDeviceHasTheDefaultProfile)
{
    Open(u"Nobody");
    EXPECT_EQ(models, std::vector<std::string>{"TALIS"});
    std::string sets;
    for (const auto& set : device->CharSets)
        sets += std::to_string(set.SetNumber) + " ";
    EXPECT_EQ(sets, "0 2 3 4 5 19 ");
}

TEST_F(Front, FindsADeviceWhoseNameIsNotAscii)
{
    WriteProfile(
        "K\xC3\xBC"
        "che",
        "\"PrinterModel\"=\"PELTO\"\n");
    Open(u"K\u00FCche");
    EXPECT_EQ(models, std::vector<std::string>{"PELTO"});
    EXPECT_EQ(calls, Calls{"OpenService(POSPrinter,K\xFC"
                           "che,none)"});
}

TEST_F(Front, AnotherDeviceClassChangesNothing)
{
    Open();
    calls.clear();
    EXPECT_EQ(client->Number(u"OpenService", {u"LineDisplay", u"Till", static_cast<IDispatch*>(nullptr)}), 106);
    EXPECT_EQ(client->Number(u"OpenService_NET", {u"", u"Till", u"f"}), 106);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 77);
}

TEST_F(Front, AMisspeltModelLeavesNoDevice)
{
    Open();
    calls.clear();
    WriteProfile("Till", "\"PrinterModel\"=\"TALIS \"\n");
    EXPECT_EQ(Open(), 106);
    EXPECT_EQ(models.back(), "TALIS ");
    EXPECT_EQ(calls, (Calls{"CloseService()", "~device1"})) << "the former one is gone";
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 106);
}

TEST_F(Front, NoMemoryForADeviceLeavesNone)
{
    onCreate = [](FakeDevice&) { throw std::bad_alloc(); };
    EXPECT_EQ(Open(), 106);
    EXPECT_EQ(TheProcess().CurrentDevice(), nullptr);
}

TEST_F(Front, OpeningTwiceReplacesTheDevice)
{
    Open();
    Open();
    EXPECT_EQ(calls, (Calls{"OpenService(POSPrinter,Till,none)", "CloseService()", "~device1",
                            "OpenService(POSPrinter,Till,none)"}));
    calls.clear();
    EXPECT_EQ(client->Number(u"OpenService_NET", {u"POSPrinter", u"Till", u"C:\\events"}), 77);
    EXPECT_EQ(calls, (Calls{"CloseService()", "~device2", "OpenService_NET(POSPrinter,Till,C:\\events)"}));
}

TEST_F(Front, AFailedOpenKeepsTheDeviceAndItsCharacterSets)
{
    onCreate = [](FakeDevice& made) { made.result = 107; };
    EXPECT_EQ(Open(), 107);
    EXPECT_EQ(device->CharSets.size(), 6U);
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 107);
}

TEST_F(Front, ClosingFreesTheCharacterSetsAndKeepsTheDevice)
{
    for (const char16_t* close : {u"CloseService", u"Close"}) {
        Open();
        EXPECT_FALSE(device->CharSets.empty());
        EXPECT_EQ(client->Number(close), 77);
        EXPECT_TRUE(device->CharSets.empty());
        EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 77);
    }
    calls.clear();
    client->Call(u"CloseService");
    client->Drop();
    EXPECT_EQ(calls, (Calls{"CloseService()", "ControlObjectGone()", "~device2"}))
        << "closed already, not closed again";
}

TEST_F(Front, KicksTheDrawerAfterACutWhereTheModelHasOne)
{
    WriteProfile("Till", kKickAfterCut);
    Open();
    EXPECT_EQ(Log(), "[OpenService] Settings: SETTINGS_OPENCDTCUT Enabled\n");
    calls.clear();
    capturedLog.clear();
    device->result = 113;
    EXPECT_EQ(client->Number(u"CutPaper", {90}), 113) << "of the cut, and the kick comes all the same";
    EXPECT_EQ(calls, (Calls{"CutPaper(90)", "Kick(100,100)"}));
    EXPECT_EQ(Log(), "[CutPaper] OpenDrawer Start\n[CutPaper] OpenDrawer End\n");
}

TEST_F(Front, SaysSoAfterACutWhereTheModelHasNone)
{
    WriteProfile("Till", std::string("\"PrinterModel\"=\"ORVEN\"\n") + kKickAfterCut);
    Open();
    calls.clear();
    capturedLog.clear();
    EXPECT_EQ(client->Number(u"CutPaper", {90}), 77);
    EXPECT_EQ(calls, Calls{"CutPaper(90)"});
    EXPECT_EQ(Log(), "[CutPaper] Printer do not support Cash Drawer\n");
}

TEST_F(Front, NetVariantsWorkOnCopies)
{
    Open();
    calls.clear();
    device->newData = 9;
    device->newString = u"changed";
    device->text = "filled";
    LONG data = 4;
    BSTR string = platform::NewBstr(std::u16string_view(u"\u0080\0", 2));
    EXPECT_EQ(client->Number(u"DirectIO_NET", {5, &data, &string}), 77);
    EXPECT_EQ(data, 4);
    EXPECT_EQ(SysStringLen(string), 2U);
    SysFreeString(string);
    EXPECT_EQ(client->Call(u"RetrieveStatistics_NET", {u"all"}).text, u"filled");
    EXPECT_EQ(calls, (Calls{"DirectIO(5,4,2 units)", "RetrieveStatistics(all)"}));
}

TEST_F(Front, TwoFrontsShareOneCurrentDevice)
{
    Open();
    const uint32_t index = TheProcess().CurrentModelIndex = 5;
    auto second = std::make_unique<Client>();
    EXPECT_EQ(TheProcess().CurrentModelIndex, index) << "only the first front starts from nothing";
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 77);
    EXPECT_EQ(second->Number(u"ClaimDevice", {1}), 106) << "it has made no device";

    calls.clear();
    EXPECT_EQ(second->Number(u"OpenService", {u"POSPrinter", u"Till", static_cast<IDispatch*>(nullptr)}), 77);
    EXPECT_EQ(calls, (Calls{"CloseService()", "~device1", "OpenService(POSPrinter,Till,none)"}));
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 106) << "its device is not the current one any more";

    calls.clear();
    client->Drop();
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(second->Number(u"ClaimDevice", {1}), 77) << "the other's device lives on";
    second.reset();
    EXPECT_EQ(calls, (Calls{"ClaimDevice(1)", "ControlObjectGone()", "CloseService()", "~device2"}));
    EXPECT_EQ(TheProcess().CurrentDevice(), nullptr);
}

TEST_F(Front, OpeningIsRefusedWhileAnOperationWaits)
{
    Open();
    calls.clear();
    device->waits = true;
    device->onCall = [&](const std::string& operation) {
        if (operation != "PrintNormal") return;
        EXPECT_EQ(Open(), 113);
    };
    EXPECT_EQ(client->Number(u"PrintNormal", {2, u"x"}), 77);
    EXPECT_EQ(calls, Calls{"PrintNormal(2,x)"});
    device->waits = false;
    EXPECT_EQ(Open(), 77);
}

TEST_F(Front, OpeningAnotherServiceIsRefusedWhileTheReleasedOneStillWaits)
{
    Open();
    device->waits = true;
    device->onCall = [&](const std::string& operation) {
        if (operation != "PrintNormal") return;
        client->Drop();
        calls.clear();
        Client second;
        EXPECT_EQ(second.Number(u"OpenService", {u"POSPrinter", u"Till", static_cast<IDispatch*>(nullptr)}), 113);
        EXPECT_EQ(calls, Calls{}) << "no device is made";
        device->waits = false;
        EXPECT_EQ(second.Number(u"OpenService", {u"POSPrinter", u"Till", static_cast<IDispatch*>(nullptr)}), 77);
    };
    EXPECT_EQ(client->Number(u"PrintNormal", {2, u"x"}), 77);
}

TEST_F(Front, MayBeOpenedAgainFromInsideAnEvent)
{
    Open();
    calls.clear();
    device->onCall = [&](const std::string& operation) {
        if (operation != "PrintNormal") return;
        EXPECT_EQ(Open(), 77);
        calls.emplace_back("handler ends");
    };
    EXPECT_EQ(client->Number(u"PrintNormal", {2, u"x"}), 77);
    EXPECT_EQ(calls, (Calls{"PrintNormal(2,x)", "CloseService()", "OpenService(POSPrinter,Till,none)", "handler ends",
                            "~device1"}))
        << "the former device is closed at once and freed when its call has returned";
}

TEST_F(Front, ACloseThatThrowsStaysInsideTheRelease)
{
    Open();
    device->onCall = [](const std::string& operation) {
        if (operation == "CloseService") throw std::bad_alloc();
    };
    client->Drop();
    EXPECT_NE(Log().find("Closing FAILED"), std::string::npos);
    TheProcess().SetCurrentDevice(nullptr);
}

TEST_F(Front, MayBeReleasedFromInsideAnEvent)
{
    Open();
    calls.clear();
    device->onCall = [&](const std::string& operation) {
        if (operation != "CutPaper") return;
        client->Drop();
        EXPECT_EQ(TheProcess().CurrentDevice(), nullptr);
        EXPECT_EQ(DllCanUnloadNow(), S_FALSE) << "the call is still in the server";
        calls.emplace_back("handler ends");
    };
    VARIANT percentage{};
    percentage.vt = VT_I4;
    DISPPARAMS parameters{&percentage, nullptr, 1, 0};
    VARIANT result;
    IDispatch* const object = client->Object();
    EXPECT_EQ(object->Invoke(11, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(result.lVal, 77);
    EXPECT_EQ(calls, (Calls{"CutPaper(0)", "ControlObjectGone()", "CloseService()", "handler ends", "~device1"}));
}

}  // namespace
}  // namespace marbex::tests
