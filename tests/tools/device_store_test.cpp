#include "marbex_opos/devices/device_store.h"

#include <gtest/gtest.h>

#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/process_settings.h"
#include "marbex_opos/session/device_names.h"
#include "temp_registry.h"

namespace marbex::tools {
namespace {

DeviceChanges Changes(const std::vector<std::string>& assignments)
{
    DeviceChanges changes;
    for (const std::string& text : assignments) {
        std::string problem;
        const auto assignment = ParseAssignment(text, problem);
        EXPECT_TRUE(assignment) << problem;
        if (assignment) changes.assignments.push_back(*assignment);
    }
    return changes;
}

class DeviceStoreTest : public ::testing::Test {
protected:
    std::string Add(std::string name, const std::vector<std::string>& assignments)
    {
        return store_.Add(name, Changes(assignments));
    }
    bool HasCompanion(const std::string& className, const std::string& name)
    {
        return platform::SystemRegistry().KeyExists("SOFTWARE\\OLEforRetail\\ServiceOPOS\\" + className + "\\" + name);
    }

    tests::TempRegistry registry_;
    DeviceStore store_;
};

TEST_F(DeviceStoreTest, AddsShowsChangesAndRemoves)
{
    DeviceChanges changes = Changes({"PrinterModel=nesto", "PortType=usb", "PrinterName=Till printer", "Fonts=0,14"});
    changes.logicalName = "Front";
    std::string name = "Till1";
    ASSERT_EQ(store_.Add(name, changes), "");
    EXPECT_TRUE(HasCompanion("CashDrawer", "Till1"));
    EXPECT_TRUE(HasCompanion("LineDisplay", "Till1"));

    std::optional<DeviceView> view = store_.View("TILL1");
    ASSERT_TRUE(view);
    EXPECT_EQ(view->name, "Till1");
    EXPECT_EQ(view->logicalNames, std::vector<std::string>{"Front"});
    EXPECT_EQ(store_.View("front")->name, "Till1") << "the logical name will do";
    for (const ObjectClass& object : kObjectClasses)
        EXPECT_EQ(ResolvedDeviceName(platform::SystemRegistry(), object.name, "Front"), "Till1");
    EXPECT_STREQ(view->profile.PrinterName, "Till printer");
    EXPECT_EQ(std::count(view->isSet.begin(), view->isSet.end(), true), 4)
        << "the rest are defaults, not copies of them";

    DeviceChanges back = Changes({"PrinterModel=TALIS"});
    back.toDefault.push_back("PrinterName");
    ASSERT_EQ(store_.Change("till1", back), "");
    EXPECT_TRUE(HasCompanion("CashDrawer", "Till1"));
    EXPECT_FALSE(HasCompanion("LineDisplay", "Till1")) << "this model has no display";
    EXPECT_STREQ(store_.View("Till1")->profile.PrinterName, "");

    ASSERT_EQ(store_.Change("Front", Changes({"PrinterModel=VELA PC", "PortType=0"})), "");
    EXPECT_EQ(ResolvedDeviceName(platform::SystemRegistry(), "LineDisplay", "Front"), "Till1")
        << "a new display's, too";

    ASSERT_EQ(store_.Remove("Front"), "");
    EXPECT_TRUE(store_.Names().empty());
    EXPECT_FALSE(HasCompanion("CashDrawer", "Till1"));
    EXPECT_EQ(registry_.Contents().find("Front"), std::string::npos) << "the logical name went too";
}

TEST_F(DeviceStoreTest, FindsANameAndAPortForANewDevice)
{
    std::string first;
    std::string second;
    ASSERT_EQ(store_.Add(first, Changes({"PrinterModel=TALIS ETHERNET"})), "");
    ASSERT_EQ(store_.Add(second, {}), "");
    EXPECT_EQ(first, "Marbex POS Printer");
    EXPECT_EQ(second, "Marbex POS Printer(2)");
    EXPECT_EQ(store_.View(first)->profile.PortType, support::kPortEthernet) << "the only port of the model";
}

TEST_F(DeviceStoreTest, RefusesWhatCannotWorkAndLeavesTheRegistryAlone)
{
    ASSERT_EQ(Add("Till1", {}), "");
    const std::string before = registry_.Contents();
    EXPECT_EQ(Add("Till1", {}), "there is a device Till1 already; marbex-opos devices set changes it");
    EXPECT_EQ(Add("a\\b", {}), "the name is too long or holds a backslash");
    EXPECT_EQ(Add("Till2", {"PrinterModel=NESTO", "PortType=serial"}), "PortType: NESTO has only: ethernet, usb");
    EXPECT_EQ(store_.Change("Till9", {}), "there is no device Till9 in " + RegistryPlace() + "; there are: Till1");
    EXPECT_EQ(store_.Remove("Till9"), store_.NoDevice("Till9"));
    const char* const refused[][2] = {
        {"PrinterModel=TALLIS",
         "PrinterModel: not one of TALIS, TALIS ETHERNET, ORVEN, ORVENETH, BRISA, BRISA-HD, PELTO, SELVA, GALEN, "
         "LUMEN, "
         "OSTRA, FERRO, NESTO, VELA PC, DORIN, AMBRA, ARGO PC TURBO, CORVO"},
        {"PrinterSubModel=GREECE",
         "PrinterSubModel: not empty nor, in capitals, one of RUSSIAN, TURKISH, ESTEEUROPE, ISRAELI, GREEK, "
         "CHINA-GB2312, "
         "CHINA-GB18030"},
        {"PortType=bluetooth", "PortType: not 0 (serial), 1 (ethernet) or 2 (usb)"},
        {"Com=300", "Com: not from 1 to 256"},
        {"Com=one", "Com: not from 1 to 256"},
        {"TimeoutRX=5s", "TimeoutRX: not a number from 0 to 4294967295"},
        {"IPAddress=10.0.0", "IPAddress: not an address such as 192.168.0.1"},
        {"Fonts=0,99",
         "Fonts: no character set 99; there are 0, 1, 2, 3, 4, 5, 13, 14, 17, 18, 19, 20, 34, 36, 37, 45, 46, 47, 48, "
         "49, "
         "50, 51, 52, 240, 241"},
    };
    for (const auto& [assignment, why] : refused) {
        const std::string problem = store_.Change("Till1", Changes({assignment}));
        EXPECT_TRUE(problem.starts_with(why)) << assignment << ": " << problem;
    }
    DeviceChanges unknown;
    unknown.toDefault = {"Sped"};
    EXPECT_EQ(store_.Change("Till1", unknown), "no field Sped: did you mean Speed? (marbex-opos devices fields)");
    EXPECT_EQ(registry_.Contents(), before);

    std::string problem;
    EXPECT_FALSE(ParseAssignment("Sped=9600", problem));
    EXPECT_EQ(problem, "no field Sped: did you mean Speed? (marbex-opos devices fields)");
    EXPECT_FALSE(ParseAssignment("Colour=red", problem));
    EXPECT_EQ(problem, "no field Colour (marbex-opos devices fields)");
}

TEST_F(DeviceStoreTest, GivesANameToOneDeviceOnly)
{
    DeviceChanges front;
    front.logicalName = "Front";
    std::string name = "Till1";
    ASSERT_EQ(store_.Add(name, front), "");
    ASSERT_EQ(Add("Till2", {}), "");
    const std::string before = registry_.Contents();
    EXPECT_EQ(store_.Change("Till2", front), "the name Front stands for the receipt printer Till1 already");
    EXPECT_EQ(store_.Change("Till1", front), "") << "it is its own";
    EXPECT_EQ(Add("front", {}), "the name front stands for the receipt printer Till1 already");
    front.logicalName = "Till1";
    EXPECT_EQ(store_.Change("Till2", front), "the name Till1 is that of another receipt printer");
    EXPECT_EQ(store_.Change("Till1", front), "the device is called Till1 already");
    EXPECT_EQ(registry_.Contents(), before);
}

// What an installer or a person has left in a profile: each oddity is told, with the command that mends it.
TEST_F(DeviceStoreTest, FindsWhatTheDriverWouldPassOver)
{
    registry_.Write(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till 1]\n"
        "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModle\"=\"TALIS ETHERNET\"\n\"Vendor\"=dword:7\n"
        "\"PortType\"=\"1\"\n\"Com\"=dword:0\n\"Speed\"=dword:2581\n\"Fonts\"=hex:02,00,63\n"
        "\"Format\"=\"8N1 and a tail that is too long\"\n\"LogEnabled\"=dword:3\n");
    const struct {
        const char* value;
        bool isWrong;
        const char* what;
        const char* remedy;
    } expected[] = {
        {"PortType", true, "is REG_SZ, not REG_DWORD; it is read as 49",
         "marbex-opos devices set \"Till 1\" PortType=1"},
        {"Format", true, "does not fit its field; the default 8N1 is used",
         "marbex-opos devices set \"Till 1\" --default Format"},
        {"Fonts", false,
         "is no character set 99; there are 0, 1, 2, 3, 4, 5, 13, 14, 17, 18, 19, 20, 34, 36, 37, 45, 46, 47, 48, 49, "
         "50, "
         "51, 52, 240, 241",
         "marbex-opos devices set \"Till 1\" --default Fonts"},
        {"PrinterModle", true, "is unknown: did you mean PrinterModel?",
         "marbex-opos devices set \"Till 1\" \"PrinterModel=TALIS ETHERNET\" --default PrinterModle"},
        {"Vendor", false, "is unknown and has no effect", "marbex-opos devices set \"Till 1\" --default Vendor"},
    };
    std::vector<ProfileFinding> found = CheckProfile(platform::SystemRegistry(), "Till 1");
    ASSERT_EQ(found.size(), std::size(expected));
    for (std::size_t at = 0; at < found.size(); ++at) {
        EXPECT_EQ(found[at].value, expected[at].value);
        EXPECT_EQ(found[at].isWrong, expected[at].isWrong) << found[at].value;
        EXPECT_EQ(found[at].what, expected[at].what);
        EXPECT_EQ(found[at].remedy, expected[at].remedy);
    }

    // The commands do what they promise, although much else is wrong with the profile.
    DeviceChanges mend = Changes({"PrinterModel=TALIS", "PortType=serial"});
    mend.toDefault = {"PrinterModle", "Vendor", "Format"};
    ASSERT_EQ(store_.Change("Till 1", mend), "");
    found = CheckProfile(platform::SystemRegistry(), "Till 1");
    ASSERT_EQ(found.size(), 3U) << "the port is serial: its settings count";
    EXPECT_EQ(found[0].what, "is not from 1 to 256");
    EXPECT_EQ(found[1].what, "is not one of 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200");
    ASSERT_EQ(store_.Change("Till 1", Changes({"PrinterModel=TALIS ETHERNET", "PortType=ethernet", "TimeoutTX=0"})),
              "");
    found = CheckProfile(platform::SystemRegistry(), "Till 1");
    EXPECT_EQ(found.back().what, "must not be 0 on ethernet: opening gives 111");
    platform::SystemRegistry().SetValue(support::kServiceKey + std::string("\\Till 1"),
                                        {"PortType", platform::RegistryType::kDword, std::string("\2\0\0\0", 4)});
    found = CheckProfile(platform::SystemRegistry(), "Till 1");
    EXPECT_EQ(found[found.size() - 2].what, "TALIS ETHERNET has only: ethernet");
    EXPECT_EQ(store_.Change("Till 1", Changes({"LogEnabled=1"})), "") << "what is not touched is not checked";
}

TEST_F(DeviceStoreTest, LeavesOtherMakersEntriesAlone)
{
    std::string entries;
    for (const char* entry :
         {"CashDrawer]\n\"Drawer\"=\"Till1\"\n", "CashDrawer\\Till1]\n@=\"Other.Drawer\"\n\"Pin\"=dword:5\n",
          "LineDisplay\\Till1]\n", "POSPrinter]\n\"Kitchen\"=\"Theirs\"\n",
          "POSPrinter\\Theirs]\n@=\"Other.Printer\"\n", "POSPrinter\\Marbex POS Printer]\n@=\"Other.Printer\"\n"}) {
        entries += (entries.empty() ? "" : "\n");
        entries += std::string("[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\") + entry;
    }
    registry_.Write(entries);
    const std::string before = registry_.Contents();
    EXPECT_TRUE(store_.Names().empty());
    EXPECT_EQ(Add("Theirs", {}), "the name Theirs is that of another receipt printer, a device of another maker");
    DeviceChanges kitchen;
    kitchen.logicalName = "Kitchen";
    std::string name = "Till1";
    EXPECT_EQ(store_.Add(name, kitchen),
              "the name Kitchen stands for the receipt printer Theirs already, a device of another maker");
    EXPECT_EQ(registry_.Contents(), before);

    const std::vector<std::string> leftAlone{
        "the CashDrawer entry Till1 belongs to Other.Drawer and was left alone",
        "the LineDisplay entry Till1 belongs to nobody we know and was left alone"};
    ASSERT_EQ(Add("Till1", {"PrinterModel=NESTO"}), "");
    EXPECT_EQ(store_.LeftAlone(), leftAlone);
    ASSERT_EQ(store_.Change("Till1", Changes({"Port=9101"})), "");
    EXPECT_EQ(store_.LeftAlone(), leftAlone);
    ASSERT_EQ(store_.Remove("Till1"), "");
    EXPECT_EQ(store_.LeftAlone(), leftAlone);

    ASSERT_EQ(Add("Till1", {"PrinterModel=ORVEN"}), "");
    EXPECT_TRUE(store_.LeftAlone().empty()) << "this model has neither";
    ASSERT_EQ(store_.Remove("Till1"), "");
    name.clear();
    ASSERT_EQ(store_.Add(name, {}), "");
    EXPECT_EQ(name, "Marbex POS Printer(2)");
    ASSERT_EQ(store_.Remove(name), "");
    EXPECT_EQ(registry_.Contents(), before);
}

}  // namespace
}  // namespace marbex::tools
