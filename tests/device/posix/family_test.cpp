// The same receipt on every model: what must differ differs, what must not does not.

#include <fstream>

#include "common/service_log_capture.h"
#include "device/model_description.h"
#include "device/posix/device_bench.h"
#include "opos/line_display.h"
#include "platform/library.h"

namespace marbex::test {
namespace {

using namespace opos;
using namespace virtual_printer;

class FamilyTest : public testing::TestWithParam<const char*> {
protected:
    // ARGO PC TURBO needs its two serial lines; the others are reached over TCP, whatever their connectors.
    bool OnSerial() const { return std::string_view(GetParam()) == "ARGO PC TURBO"; }

    void SetUp() override
    {
        LinkOptions link;
        if (OnSerial()) {
            link.kind = LinkOptions::Kind::kSerial;
            link.displaySerial = true;
        }
        server = std::make_unique<PrinterServer>(GetParam(), link);
        std::ostringstream lines;
        lines << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n"
              << "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModel\"=\"" << GetParam() << "\"\n"
              << "\"LogEnabled\"=dword:1\n\"LogLevel\"=dword:2\n\"TimeoutRX\"=dword:3e8\n\"TimeoutTX\"=dword:3e8\n";
        if (OnSerial()) {
            lines << "\"PortType\"=dword:0\n"
                  << "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" << server->SerialPath()
                  << "\"=\"COM1\"\n\"" << server->DisplayPath() << "\"=\"COM5\"\n";
        } else {
            lines << "\"PortType\"=dword:1\n\"IPAddress\"=\"127.0.0.1\"\n\"Port\"=dword:" << std::hex << server->Port()
                  << "\n";
        }
        registry.Write(lines.str());
        device = device::CreateModelDevice(GetParam());
        ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
        ASSERT_EQ(device->ClaimDevice(0), 0);
        device->SetPropertyNumber(PIDX_DeviceEnabled, 1);
    }

    void TearDown() override
    {
        if (device) device->CloseService();
    }

    ServiceLogCapture log;
    tests::TempRegistry registry;
    std::unique_ptr<PrinterServer> server;
    ControlObjectDouble control;
    std::shared_ptr<device::POSPrinterDevice> device;
};

TEST_P(FamilyTest, OneReceipt)
{
    ASSERT_EQ(device->PrintNormal(PTR_S_RECEIPT, "\x1B|cA\x1B|bCSHOP\x1B|N\nBread      2.50\n"), 0);
    ASSERT_EQ(
        device->PrintBarCode(PTR_S_RECEIPT, "4006381333931", PTR_BCS_EAN13, 60, 2, PTR_BC_LEFT, PTR_BC_TEXT_BELOW), 0);
    ASSERT_EQ(device->CutPaper(100), 0);
    ASSERT_EQ(device->PrintNormal(PTR_S_RECEIPT, "next\n"), 0);
    ASSERT_TRUE(server->WaitFor([](const auto& printer) {
        const auto lines = printer.Lines();
        return !lines.empty() && lines.back() == "next";
    }));

    const std::vector<TextLine> lines = server->All<TextLine>();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0].text, "SHOP");
    EXPECT_TRUE(lines[0].runs.front().style.bold);
    EXPECT_EQ(lines[0].alignment, Alignment::kCentre);
    EXPECT_EQ(lines[1].text, "Bread      2.50");
    const std::vector<Barcode> codes = server->All<Barcode>();
    ASSERT_EQ(codes.size(), 1U);
    EXPECT_TRUE(codes[0].printed) << codes[0].problem;
    EXPECT_EQ(codes[0].data, "4006381333931");
    EXPECT_TRUE(server->All<Unknown>().empty()) << server->All<Unknown>().front().why;

    const std::string_view model = GetParam();
    const device::ModelDescription& description = *device::FindModel(model);
    const auto feeds = static_cast<std::size_t>(description.recLinesToPaperCut) + (model == "NESTO" ? 2U : 0U);
    EXPECT_EQ(lines.size(), 3U + feeds);
    EXPECT_EQ(server->All<Cut>().size(), model == "NESTO" ? 0U : 1U);
    const bool presents = !description.encoder.presenter.empty();
    EXPECT_EQ(server->All<PresenterMove>().size(),
              (presents ? 1U : 0U) + (description.encoder.afterCutSequence ? 1U : 0U));
    EXPECT_EQ(server->All<StartUp>().size(), model == "OSTRA" ? 1U : 0U);
    EXPECT_TRUE(log.Has(std::string("[") + description.tag + "] PrintNormal End"));
    EXPECT_TRUE(log.Has(std::string("[") + description.spooler.tag + "] --- PrintNormal End"));
}

TEST_P(FamilyTest, DrawerAndDisplay)
{
    const device::ModelDescription& description = *device::FindModel(GetParam());
    // Held, so that its record outlives the driver's use of it.
    const auto chip = platform::DynamicLibrary::Load("LpcSio.dll");
    ASSERT_TRUE(chip);
    const int32_t kicked = device->External_CashDrawer_OpenDrawer(100, 100);
    EXPECT_EQ(kicked, 0);
    if (description.drawer == device::DrawerKick::kSuperIo) {
        EXPECT_STREQ(reinterpret_cast<const char* (*)()>(chip->Symbol("RecordedAccesses"))(),
                     "r0.27=FF w0.27=F3 r0.2C=FF w0.2C=FF r6.F1=FF w6.F1=F7 r6.F0=FF w6.F0=FB r6.F3=FF w6.F3=FB "
                     "r6.F1=F7 w6.F1=FF r6.F1=FF w6.F1=F7 ");
        EXPECT_TRUE(log.Has(std::string("[") + description.tag + "] Finish open Cash Drawer..."));
    } else {
        EXPECT_TRUE(server->WaitFor([](const auto& printer) { return !printer.template All<DrawerPulse>().empty(); }));
    }
    const int32_t shown = device->External_LineDisplay_DisplayText("Total 2.50", DISP_DT_NORMAL);
    const auto columns = [this] { return device->GetPropertyNumber(PIDXDisp_Columns); };
    if (description.display == nullptr) {
        EXPECT_EQ(shown, OPOS_E_ILLEGAL);
        EXPECT_EQ(columns(), 0);
        return;
    }
    EXPECT_EQ(shown, 0);
    EXPECT_EQ(columns(), 20);
    EXPECT_TRUE(server->WaitFor([](const auto& printer) {
        const auto contents = printer.template All<DisplayContent>();
        return !contents.empty() && contents.back().rows.front().starts_with("Total 2.50");
    }));
    EXPECT_EQ(device->External_LineDisplay_DisplayTextAt(0, 0, "x", DISP_DT_BLINK), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->External_LineDisplay_DisplayText(std::string(129, 'x'), DISP_DT_NORMAL), OPOS_E_ILLEGAL);
    EXPECT_EQ(device->External_LineDisplay_ClearText(), 0);
    EXPECT_TRUE(server->WaitFor([](const auto& printer) {
        return printer.template All<DisplayContent>().back().rows.front() == std::string(20, ' ');
    }));
    device->SetPropertyNumber(PIDXDisp_CharacterSet, 1250);
    EXPECT_EQ(device->GetPropertyNumber(PIDX_ResultCode), OPOS_E_ILLEGAL);
    device->SetPropertyNumber(PIDXDisp_CharacterSet, DISP_CS_ANSI);
    EXPECT_EQ(device->GetPropertyNumber(PIDXDisp_CharacterSet), DISP_CS_ANSI);
    device->GetPropertyNumber(PIDXDisp_CursorRow);
    EXPECT_EQ(device->GetPropertyNumber(PIDX_ResultCode), OPOS_E_ILLEGAL);
    EXPECT_TRUE(server->All<Unknown>().empty());
}

INSTANTIATE_TEST_SUITE_P(Models, FamilyTest,
                         testing::Values("TALIS", "TALIS ETHERNET", "ORVEN", "ORVENETH", "BRISA", "BRISA-HD", "PELTO",
                                         "SELVA", "GALEN", "LUMEN", "OSTRA", "FERRO", "NESTO", "VELA PC", "DORIN",
                                         "AMBRA", "ARGO PC TURBO", "CORVO"),
                         [](const auto& model) {
                             std::string name = model.param;
                             std::erase_if(name, [](char c) { return c == ' ' || c == '-'; });
                             return name;
                         });

}  // namespace
}  // namespace marbex::test
