// The same receipt on every model: what must differ differs, what must not does not.

#include <algorithm>
#include <fstream>
#include <mutex>
#include <set>

#include "common/service_log_capture.h"
#include "common/text_cases.h"
#include "common/wire_text.h"
#include "device/model_description.h"
#include "device/posix/device_bench.h"
#include "opos/line_display.h"
#include "platform/library.h"
#include "printer/scripted_port.h"

namespace marbex::test {
namespace {

using namespace opos;
using namespace virtual_printer;

const std::vector<tests::TextCase> kFamily = tests::TextCasesIn(
#include "device/posix/family.txt"
);

// A bitmap of 8 x 2 dots: black, white and black from the left in the row that stands first, all white in the other.
std::string TwoRowsOfEightDots()
{
    using namespace std::string_literals;
    return "BM\x46\0\0\0\0\0\0\0\x3E\0\0\0\x28\0\0\0\x08\0\0\0\x02\0\0\0\x01\0\x01\0\0\0\0\0\x08\0\0\0"s +
           std::string(16, '\0') + "\0\0\0\0\xFF\xFF\xFF\0"s + "\xFF\0\0\0\x3E\0\0\0"s;
}

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
        // Told on the server's own thread; read when it has come to the end.
        const PrinterServer::Copies copies{{}, [this](std::span<const uint8_t> bytes) { Keep(bytes); }, {}};
        server =
            std::make_unique<PrinterServer>(GetParam(), link, PrinterOptions{}, VirtualPrinter::Observer{}, copies);
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

    void Keep(std::span<const uint8_t> bytes)
    {
        const std::lock_guard hold(mutex);
        received.append(bytes.begin(), bytes.end());
    }

    // What has come without the questions for the status, a line feed at the end of a line.
    std::string Sent()
    {
        const std::lock_guard hold(mutex);
        for (const std::string_view question : {"\x10\x04\x14", "\x10\x04\x01", "\x10\x04\x02"}) {
            for (std::size_t at = 0; (at = received.find(question, at)) != std::string::npos;)
                received.erase(at, question.size());
        }
        std::string text;
        for (std::size_t at = 0; at < received.size();) {
            const std::size_t end = std::min(received.find('\n', at), received.size() - 1) + 1;
            text += WireText(std::string_view(received).substr(at, end - at)) + '\n';
            at = end;
        }
        return text;
    }

    static const printer::EncoderTraits& Commands() { return device::FindModel(GetParam())->encoder; }

    static std::string Recovery()
    {
        Trace trace;
        ScriptedPort port(trace);
        ScriptedClock clock;
        printer::CPrinterEncoder encoder(Commands(), clock);
        encoder.AttachPort(&port);
        encoder.RecoverFromError();
        return WireText(trace[0]);
    }

    // The identifiers that are taken for one of the model.
    static std::string Identities()
    {
        std::ostringstream known;
        Trace trace;
        ScriptedPort port(trace);
        ScriptedClock clock;
        printer::CPrinterEncoder encoder(Commands(), clock);
        encoder.AttachPort(&port);
        for (int identity = 0; identity < 0x300; ++identity) {
            const std::string low(1, static_cast<char>(identity));
            port.ForgetAnswers();
            port.Answer("\x1DI\x01", {identity < 0x100 ? low : "\xFF"});
            port.Answer("\x1DI\xFF", {static_cast<char>(identity >> 8) + low});
            if (encoder.CheckPrinter()) known << ' ' << std::hex << identity;
            port.open = true;
        }
        return known.str();
    }

    // Who has written to the log.
    std::set<std::string> Tags() const
    {
        std::set<std::string> tags;
        for (const std::string& line : log.Taken()) {
            const std::string tag = line.substr(0, line.find(']') + 1);
            if (tag.ends_with("POSPrinter]") || tag.starts_with("[CPrintSpooler")) tags.insert(tag);
        }
        return tags;
    }

    std::mutex mutex;
    std::string received;
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
}

// What comes over the cable for everything that a method can do, and what the application is told of the model. A
// picture is eight dots wide; the second time it is turned, and a millimetre wide.
TEST_P(FamilyTest, EveryMethodToTheByte)
{
    std::ostringstream record;
    record << device->GetPropertyString(PIDX_DeviceDescription).value_or("") << '\n';
    for (const int32_t mode : {PTR_MM_TWIPS, PTR_MM_ENGLISH, PTR_MM_METRIC, PTR_MM_DOTS}) {
        device->SetPropertyNumber(PIDXPtr_MapMode, mode);
        record << device->GetPropertyNumber(PIDXPtr_RecLineWidth) << ' ';
    }
    record << device->GetPropertyNumber(PIDXPtr_RecLinesToPaperCut) << '\n';

    const std::string picture = registry.Folder() + "/picture.bmp";
    std::ofstream(picture, std::ios::binary) << TwoRowsOfEightDots();
    device->PrintNormal(PTR_S_RECEIPT, "a\x1B|50Pb\x1B|P\x1B|cAc\x1B|9M\n");
    device->PrintImmediate(PTR_S_RECEIPT, "now\n");
    device->PrintBarCode(PTR_S_RECEIPT, "1234", PTR_BCS_Code39, 60, 2, PTR_BC_CENTER, PTR_BC_TEXT_BELOW);
    EXPECT_EQ(device->PrintBitmap(PTR_S_RECEIPT, picture, PTR_BM_ASIS, PTR_BM_RIGHT), 0);
    EXPECT_EQ(device->RotatePrint(PTR_S_RECEIPT, PTR_RP_BITMAP | PTR_RP_RIGHT90), 0);
    device->SetPropertyNumber(PIDXPtr_MapMode, PTR_MM_METRIC);
    EXPECT_EQ(device->PrintBitmap(PTR_S_RECEIPT, picture, 100, 200), 0);
    EXPECT_EQ(device->PrintBitmap(PTR_S_RECEIPT, picture + "x", PTR_BM_ASIS, PTR_BM_LEFT), OPOS_E_NOEXIST);
    EXPECT_EQ(device->MarkFeed(PTR_MF_TO_NEXT_TOF), 0);
    for (const int32_t percentage : {100, 50, 90}) {
        device->CutPaper(percentage);
        device->PrintNormal(PTR_S_RECEIPT, "after a cut\n");
    }
    ASSERT_EQ(device->PrintImmediate(PTR_S_RECEIPT, "end\n"), 0);
    ASSERT_TRUE(server->WaitFor([](const auto& printer) {
        const auto lines = printer.Lines();
        return !lines.empty() && lines.back() == "end";
    }));
    record << Sent() << Recovery() << "\nknown by" << Identities() << '\n';
    for (const std::string& tag : Tags())
        record << tag << '\n';

    const auto expected = std::ranges::find(kFamily, GetParam(), &tests::TextCase::name);
    ASSERT_NE(expected, kFamily.end());
    std::string lines;
    for (const std::string& line : expected->lines)
        lines += line + '\n';
    EXPECT_EQ(record.str(), lines);
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
