#include "marbex_opos/devices/transfer.h"

#include <gtest/gtest.h>

#include <variant>

#include "marbex_opos/devices/device_store.h"
#include "temp_registry.h"

namespace marbex::tools {
namespace {

constexpr const char* kPrinters = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter";
constexpr const char* kDrawers = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\CashDrawer";

std::string OurPrinter(const std::string& name, const std::string& values)
{
    return kPrinters + ("\\" + name) + "]\n@=\"Service.MarbexOposPrnDriver\"\n" + values + "\n";
}

platform::RegDocument Read(const std::string& text)
{
    auto parsed = platform::ParseRegFile("Windows Registry Editor Version 5.00\n\n" + text);
    EXPECT_TRUE(std::holds_alternative<platform::RegDocument>(parsed));
    return std::get<platform::RegDocument>(std::move(parsed));
}

// "POSPrinter Till1 new: PrinterModel=TALIS; Speed gone" and so on, a line a key.
std::string Told(const ImportPlan& plan)
{
    std::string told;
    for (const KeyChange& change : plan.changes) {
        told += change.what + (change.isNew ? " new:" : ":");
        for (const ValueChange& value : change.values) {
            if (!value.name.empty()) told += " " + value.name + (value.then ? "=" + ShownValue(*value.then) : " gone");
        }
        told += "\n";
    }
    for (const std::string& sentence : plan.leftAlone)
        told += sentence + "\n";
    return told;
}

TEST(Transfer, BringsTheDevicesOfOneTillToAnother)
{
    const std::string theirs = OurPrinter("Küche", "\"Fonts\"=hex:02,00,13\n\"PrinterModel\"=\"NESTO\"") + kPrinters +
                               "]\n\"Back\"=\"Küche\"\n\"Else\"=\"Other\"\n" + kPrinters +
                               "\\Other]\n@=\"Some.Service\"\n" + kDrawers +
                               "\\Küche]\n@=\"Service.MarbexOposCashDrawerDriver\"\n";
    std::string file;
    {
        const tests::TempRegistry registry(theirs);
        const platform::RegDocument document = ExportedDevices(platform::SystemRegistry(), {});
        EXPECT_EQ(document.encoding, platform::RegEncoding::kUtf16) << "what the registry editor reads beyond ASCII";
        file = platform::WriteRegFile(document);
    }
    const tests::TempRegistry registry(OurPrinter("Till1", "\"Speed\"=dword:00002580"));
    platform::Registry& here = platform::SystemRegistry();
    const auto document = std::get<platform::RegDocument>(platform::ParseRegFile(file));
    const ImportPlan plan = PlanImport(here, document);
    EXPECT_EQ(Told(plan),
              "POSPrinter Küche new: Fonts=0,19 PrinterModel=\"NESTO\"\n"
              "POSPrinter names: Back=\"Küche\"\n"
              "CashDrawer Küche new:\n")
        << "nothing of the other service object";
    ASSERT_TRUE(Apply(plan, here));
    EXPECT_TRUE(DeviceStore().View("Till1") && DeviceStore().View("Küche")) << "what was there stays";
    EXPECT_EQ(Told(PlanImport(here, document)), "") << "once is enough";
}

TEST(Transfer, MakesADeviceWhatTheFileSaysAndTouchesNobodyElses)
{
    const tests::TempRegistry registry(
        OurPrinter("Till1", "\"Speed\"=dword:00002580\n\"IPAddress\"=\"10.0.0.1\"\n\"Port\"=dword:0000238c") +
        kDrawers + "\\Till1]\n@=\"Some.Service\"\n");
    platform::Registry& here = platform::SystemRegistry();
    // As 64-bit Windows keeps it for programs of 32 bits.
    std::string file = OurPrinter("TILL1", "\"IPADDRESS\"=\"10.0.0.2\"\n\"Port\"=dword:0000238c") + kDrawers +
                       "\\Till1]\n@=\"Service.MarbexOposCashDrawerDriver\"\n";
    for (std::size_t at = 0; (at = file.find("SOFTWARE\\OLE", at)) != std::string::npos; at += 20)
        file.insert(at + 9, "WOW6432Node\\");
    const ImportPlan plan = PlanImport(here, Read(file));
    EXPECT_EQ(Told(plan),
              "POSPrinter TILL1: IPADDRESS=\"10.0.0.2\" Speed gone\n"
              "the CashDrawer entry Till1 belongs to Some.Service and is left alone\n");
    ASSERT_TRUE(Apply(plan, here));
    const std::string contents = registry.Contents();
    EXPECT_NE(contents.find("10.0.0.2"), std::string::npos);
    EXPECT_EQ(contents.find("Speed"), std::string::npos);
    EXPECT_NE(contents.find("Some.Service"), std::string::npos);
}

}  // namespace
}  // namespace marbex::tools
