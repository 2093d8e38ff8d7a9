#include "support/device_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/profile_fields.h"
#include "temp_registry.h"

namespace marbex::support {
namespace {

using tests::TempRegistry;

constexpr const char* kKey = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter";

std::string Device(const std::string& name, const std::string& values = "", const char* progId = kPrinterProgId)
{
    return std::string(kKey) + "\\" + name + "]\n@=\"" + progId + "\"\n" + values + "\n";
}

std::string ServiceKey(const std::string& values)
{
    return std::string(kKey) + "]\n" + values + "\n";
}

std::string Shown(const DeviceProfileStruct& profile)
{
    std::string all = std::string(profile.DeviceName) + "|";
    for (const ProfileField& field : ProfileFields())
        all += ShowField(field, profile) + "|";
    return all;
}

std::string Repeated(const std::string& text, int times)
{
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

constexpr const char* kDefaults = "TALIS||0|1|9600|8N1|1|C:|0|0|0|192.168.0.1|9100||5000|5000|0|0|0,2,3,4,5,19|";

TEST(DeviceRegistry, ListsAndSelectsOnlyItsOwn)
{
    const TempRegistry file(Device("Till1") + Device("Other", "", "Vendor.Printer") +
                            Device("Till2", "", "SERVICE.marbexOPOSprnDRIVER") + std::string(kKey) + "\\Bare]\n");
    CDeviceRegistry registry;
    std::string name;
    EXPECT_TRUE(registry.GetDeviceName(0, name) && name == "Till1");
    EXPECT_TRUE(registry.GetDeviceName(1, name) && name == "Till2");
    EXPECT_FALSE(registry.GetDeviceName(2, name));
    EXPECT_TRUE(registry.ServiceKeyExists());
    EXPECT_TRUE(registry.SelectDevice("TILL1"));
    EXPECT_FALSE(registry.SelectDevice("Other"));
    DeviceProfileStruct profile;
    EXPECT_TRUE(registry.ReadProfile(profile));
    EXPECT_STREQ(profile.DeviceName, "TILL1") << "a failed selection leaves the earlier one";
}

TEST(DeviceRegistry, UnknownDeviceAndMissingKeyGiveDefaults)
{
    {
        const TempRegistry file(Device("Till1", "\"PrinterModel\"=\"CORVO\"\n") + ServiceKey("\"Empty\"=\"\"\n"));
        CDeviceRegistry registry;
        EXPECT_FALSE(registry.SelectDevice("Nobody"));
        DeviceProfileStruct profile;
        std::memset(&profile, 0x55, sizeof profile);
        EXPECT_TRUE(registry.ReadProfile(profile));
        EXPECT_EQ(Shown(profile), std::string("|") + kDefaults);
        EXPECT_FALSE(registry.WriteProfile(profile));
        EXPECT_FALSE(registry.CreateDeviceKey());
    }
    const TempRegistry file("");
    CDeviceRegistry registry;
    DeviceProfileStruct profile;
    EXPECT_FALSE(registry.ServiceKeyExists());
    EXPECT_FALSE(registry.ReadProfile(profile));
    std::memset(&profile, 0x55, sizeof profile);
    registry.SetDefaults(profile);
    EXPECT_EQ(Shown(profile), std::string("|") + kDefaults);
}

TEST(DeviceRegistry, LogicalNameBecomesTheDeviceName)
{
    const TempRegistry file(ServiceKey("\"Receipt\"=\"TILL1\"\n\"Kitchen\"=\"Till2\"\n\"Number\"=dword:1\n") +
                            Device("Till1", "\"PrinterModel\"=\"BRISA-HD\"\n") + Device("Till2") + Device("Till3"));
    CDeviceRegistry registry;
    DeviceProfileStruct profile;
    ASSERT_TRUE(registry.SelectDevice("Till1") && registry.ReadProfile(profile));
    EXPECT_EQ(Shown(profile), "Receipt|BRISA-HD" + std::string(kDefaults).substr(5));
    ASSERT_TRUE(registry.SelectDevice("Till3") && registry.ReadProfile(profile));
    EXPECT_STREQ(profile.DeviceName, "Till3");
}

TEST(DeviceRegistry, ValuesThatDoNotFitTakeTheirDefaults)
{
    const std::string fits19(19, '1');
    const TempRegistry file(
        Device("Big", "\"PrinterModel\"=\"" + std::string(128, 'M') + "\"\n\"IPAddress\"=\"" + std::string(20, '1') +
                          "\"\n\"LogPath\"=\"" + std::string(260, 'p') +
                          "\"\n\"Port\"=hex(b):01,00,00,00,00,00,00,00\n" + "\"Speed\"=\"19200\"\n\"Format\"=hex:" +
                          Repeated("38,", 20) + "38\n\"Fonts\"=hex:" + Repeated("01,", 260) +
                          "01\n\"PrinterName\"=hex:" + Repeated("e9,", 129) + "e9\n") +
        Device("Edge", "\"PrinterModel\"=\"" + std::string(127, 'M') + "\"\n\"IPAddress\"=\"" + fits19 +
                           "\"\n\"Port\"=hex:39,30\n\"Speed\"=hex:00,c2,01,00\n\"Settings\"=hex(5):01\n\"Format\"=hex("
                           "1):37,00,45,00,31,00\n"
                           "\"Fonts\"=hex:ff,00,13\n"));
    CDeviceRegistry registry;
    DeviceProfileStruct profile;
    ASSERT_TRUE(registry.SelectDevice("Big") && registry.ReadProfile(profile));
    EXPECT_EQ(Shown(profile), std::string("Big|") + kDefaults);

    ASSERT_TRUE(registry.SelectDevice("Edge") && registry.ReadProfile(profile));
    EXPECT_EQ(std::strlen(profile.PrinterModel), 127u);
    EXPECT_EQ(profile.IPAddress, fits19);
    EXPECT_EQ(profile.Port, 12345u);
    EXPECT_EQ(profile.Speed, 115200u);
    EXPECT_EQ(profile.Settings, 1u);
    EXPECT_STREQ(profile.Format, "7E1") << "text stored without its terminator";
    EXPECT_EQ(profile.Fonts[0], 2) << "the count is lowered to the sets that are there";
    EXPECT_EQ(profile.Fonts[2], 19);
}

// As by a program that reads the values without asking for their types.
TEST(DeviceRegistry, TheTypeOfAValueDoesNotMatter)
{
    const TempRegistry file(Device("Till1",
                                   "\"Com\"=\"1\"\n\"Speed\"=\"\"\n\"Port\"=\"\xC3\xA9\xE2\x82\xAC!\"\n"
                                   "\"Handshake\"=hex(7):32,00,00,00,00,00\n\"Settings\"=hex(2):33,00,34,00\n"
                                   "\"PrinterModel\"=hex:43,4f,52,56,4f\n\"Format\"=dword:00314537\n"
                                   "\"IPAddress\"=hex(7):31,00,00,00,32,00,00,00,00,00\n"
                                   "\"PrinterName\"=hex(b):e9,80,00,41,41,41,41,41\n\"Fonts\"=\"\x02\x01\"\n"));
    CDeviceRegistry registry;
    DeviceProfileStruct profile;
    ASSERT_TRUE(registry.SelectDevice("Till1") && registry.ReadProfile(profile));
    EXPECT_EQ(profile.Com, 0x31u);
    EXPECT_EQ(profile.Speed, 0u) << "nothing but the terminator";
    EXPECT_EQ(profile.Port, 0x0021'80E9u);
    EXPECT_EQ(profile.Handshake, 0x32u);
    EXPECT_EQ(profile.Settings, 0x3433u);
    EXPECT_STREQ(profile.PrinterModel, "CORVO");
    EXPECT_STREQ(profile.Format, "7E1");
    EXPECT_STREQ(profile.IPAddress, "1");
    EXPECT_STREQ(profile.PrinterName, "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(profile.Fonts[0], 2);
    EXPECT_EQ(profile.Fonts[1], 1);
    EXPECT_EQ(profile.Fonts[2], 0);
}

TEST(DeviceRegistry, ProfileRoundTrip)
{
    const TempRegistry file(Device("Till1"));
    CDeviceRegistry registry;
    ASSERT_TRUE(registry.SelectDevice("Till1"));
    DeviceProfileStruct written;
    registry.SetDefaults(written);
    const char* values[][2] = {{"printermodel", "ORVENETH"},
                               {"PrinterSubModel", "CHINA-GB18030"},
                               {"PortType", "2"},
                               {"Com", "12"},
                               {"Speed", "0x1C200"},
                               {"Format", "7o1"},
                               {"Handshake", "2"},
                               {"LogPath", "D:\\\xC3\x9C \"x\""},
                               {"LogEnabled", "3"},
                               {"LogLevel", "1"},
                               {"LogLimit", "10"},
                               {"IPAddress", "10.0.0.255"},
                               {"Port", "65535"},
                               {"PrinterName", "\xE2\x82\xAC"},
                               {"TimeoutRX", "4294967295"},
                               {"TimeoutTX", "0"},
                               {"Settings", "1"},
                               {"Fonts", "240, 0,0x13"}};
    for (const auto& [name, value] : values) {
        const ProfileField* field = FindProfileField(name);
        ASSERT_NE(field, nullptr) << name;
        EXPECT_EQ(AssignField(*field, value, written), "") << name;
    }
    CopyText(written.DeviceName, "Logical");
    ASSERT_TRUE(registry.WriteProfile(written)) << platform::SystemRegistry().LastProblem();

    CDeviceRegistry again;
    DeviceProfileStruct read;
    std::memset(&read, 0x55, sizeof read);
    ASSERT_TRUE(again.SelectDevice("Till1") && again.ReadProfile(read));
    EXPECT_EQ(std::memcmp(&read, &written, sizeof read), 0) << Shown(read) << "\n" << Shown(written);

    // Another logical name takes the place of the first.
    CopyText(written.DeviceName, "Renamed");
    ASSERT_TRUE(registry.WriteProfile(written));
    EXPECT_FALSE(platform::SystemRegistry().Value(kServiceKey, "Logical"));
    EXPECT_EQ(platform::SystemRegistry().Value(kServiceKey, "Renamed")->data, "Till1");
}

TEST(DeviceRegistry, NewDevicesAndDeletedOnes)
{
    const TempRegistry file(Device("Marbex POS Printer") + Device("MARBEX POS PRINTER(2)", "\"Com\"=dword:4\n") +
                            ServiceKey("\"First\"=\"Marbex POS Printer\"\n\"Second\"=\"marbex pos printer(2)\"\n"
                                       "\"Also second\"=\"Marbex POS Printer(2)\"\n\"Third\"=\"Vendor\"\n"));
    CDeviceRegistry registry;
    std::string name;
    ASSERT_TRUE(registry.CreateNewDevice(name));
    EXPECT_EQ(name, "Marbex POS Printer(3)");
    ASSERT_TRUE(registry.CreateNewDevice(name));
    EXPECT_EQ(name, "Marbex POS Printer(4)") << "the third one is known although nothing was enumerated since";
    DeviceProfileStruct profile;
    registry.SetDefaults(profile);
    EXPECT_EQ(profile.DeviceName, name) << "a new device is the selected one";
    EXPECT_TRUE(registry.WriteProfile(profile));

    ASSERT_TRUE(registry.SelectDevice("Marbex POS Printer"));
    EXPECT_TRUE(registry.DeleteDevice("Marbex POS Printer(2)"));
    EXPECT_FALSE(registry.DeleteDevice("Marbex POS Printer(2)"));
    EXPECT_FALSE(registry.DeleteDevice("Vendor"));
    std::vector<std::string> left;
    const auto values = platform::SystemRegistry().Values(kServiceKey);
    ASSERT_TRUE(values);
    for (const auto& value : *values)
        left.push_back(value.name);
    std::ranges::sort(left);  // a hive has its own order
    EXPECT_EQ(left, (std::vector<std::string>{"First", "Marbex POS Printer(4)", "Third"}));
    EXPECT_FALSE(registry.CreateDeviceKey()) << "nothing is selected after a deletion";

    CDeviceRegistry fresh;
    EXPECT_FALSE(fresh.DeviceExists("Marbex POS Printer(2)"));
    EXPECT_TRUE(fresh.DeviceExists("marbex pos printer(3)"));
}

TEST(DeviceRegistry, AnotherServiceKey)
{
    const TempRegistry file(
        "[HKEY_LOCAL_MACHINE\\Elsewhere\\Till9]\n@=\"Service.MarbexOposPrnDriver\"\n\"Com\"=dword:9\n");
    CDeviceRegistry registry;
    EXPECT_FALSE(registry.ServiceKeyExists());
    registry.SetServiceKey("Elsewhere");
    DeviceProfileStruct profile;
    ASSERT_TRUE(registry.SelectDevice("till9") && registry.ReadProfile(profile));
    EXPECT_EQ(profile.Com, 9u);
}

TEST(ProfileFields, RefuseWhatCannotBeRight)
{
    DeviceProfileStruct profile{};
    for (const ProfileField& field : ProfileFields())
        SetFieldDefault(field, profile);
    const std::string before = Shown(profile);
    const char* wrong[][2] = {{"PrinterModel", "TALIS "},
                              {"PrinterModel", "TALI"},
                              {"PrinterSubModel", "russian"},
                              {"PortType", "3"},
                              {"PortType", "-1"},
                              {"PortType", ""},
                              {"Com", "0"},
                              {"Com", "257"},
                              {"Speed", "9601"},
                              {"Format", "9N1"},
                              {"IPAddress", "10.0.0"},
                              {"IPAddress", "10.0.0.256"},
                              {"IPAddress", "10.0.0.1.1"},
                              {"IPAddress", "till"},
                              {"IPAddress", "1..2.3"},
                              {"Port", "65536"},
                              {"TimeoutRX", "5s"},
                              {"TimeoutTX", "4294967296"},
                              {"Fonts", "0,6"},
                              {"Fonts", "0,,2"},
                              {"Fonts", "256"}};
    for (const auto& [name, value] : wrong) {
        EXPECT_NE(AssignField(*FindProfileField(name), value, profile), "") << name << " " << value;
    }
    EXPECT_NE(AssignField(*FindProfileField("LogPath"), std::string(260, 'x'), profile), "");
    EXPECT_EQ(Shown(profile), before);
    EXPECT_EQ(FindProfileField("DeviceName"), nullptr);
    // Every default is a value a person could have written.
    for (const ProfileField& field : ProfileFields())
        EXPECT_EQ(AssignField(field, field.defaultText, profile), "");
    EXPECT_EQ(Shown(profile), before);
}

TEST(ProfileFields, TextIsCutBetweenCharacters)
{
    char field[5];
    CopyText(field, "abc\xC3\xA9");
    EXPECT_STREQ(field, "abc");
    CopyText(field, "ab\xC3\xA9");
    EXPECT_STREQ(field, "ab\xC3\xA9");
}

}  // namespace
}  // namespace marbex::support
