#include "marbex_opos/device_store.h"

#include <gtest/gtest.h>

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
    EXPECT_STREQ(view->profile.PrinterName, "Till printer");
    EXPECT_EQ(std::count(view->isSet.begin(), view->isSet.end(), true), 4)
        << "the rest are defaults, not copies of them";

    DeviceChanges back = Changes({"PrinterModel=TALIS"});
    back.toDefault.push_back(support::FindProfileField("PrinterName"));
    ASSERT_EQ(store_.Change("till1", back), "");
    EXPECT_TRUE(HasCompanion("CashDrawer", "Till1"));
    EXPECT_FALSE(HasCompanion("LineDisplay", "Till1")) << "this model has no display";
    EXPECT_STREQ(store_.View("Till1")->profile.PrinterName, "");

    ASSERT_EQ(store_.Remove("Till1"), "");
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
    EXPECT_EQ(Add("Till1", {}), "there is a device Till1 already");
    EXPECT_EQ(Add("a\\b", {}), "the name is too long or holds a backslash");
    EXPECT_EQ(Add("Till2", {"PrinterModel=TALLIS"}), "PrinterModel: no such printer model");
    EXPECT_EQ(Add("Till2", {"PrinterModel=NESTO", "PortType=serial"}), "PortType: NESTO has only: ethernet, usb");
    EXPECT_EQ(store_.Change("Till1", Changes({"PrinterModel=VELA PC", "PortType=usb"})),
              "PortType: VELA PC has only: serial");
    EXPECT_EQ(store_.Change("Till1", Changes({"Com=300"})), "Com: not from 1 to 256");
    EXPECT_EQ(store_.Change("Till1", Changes({"IPAddress=10.0.0"})), "IPAddress: not an address such as 192.168.0.1");
    EXPECT_EQ(store_.Change("Till1", Changes({"Fonts=0,99"})), "Fonts: no character set 99");
    EXPECT_EQ(store_.Change("Till9", {}), "no device Till9");
    EXPECT_EQ(store_.Remove("Till9"), "no device Till9");
    EXPECT_EQ(registry_.Contents(), before);

    std::string problem;
    EXPECT_FALSE(ParseAssignment("Sped=9600", problem));
    EXPECT_EQ(problem, "no field Sped (marbex-opos devices fields)");
}

TEST_F(DeviceStoreTest, LeavesOtherMakersEntriesAlone)
{
    registry_.Write(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\CashDrawer\\Till1]\n@=\"Other.Drawer\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Theirs]\n@=\"Other.Printer\"\n");
    EXPECT_TRUE(store_.Names().empty());
    EXPECT_EQ(Add("Theirs", {}), "there is a device Theirs already");
    ASSERT_EQ(Add("Till1", {"PrinterModel=ORVEN"}), "");
    ASSERT_EQ(store_.Remove("Till1"), "");
    EXPECT_TRUE(HasCompanion("CashDrawer", "Till1"));
}

}  // namespace
}  // namespace marbex::tools
