#include "marbex_opos/printing/test_page.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <random>

#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"
#include "support/printer_tables.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

constexpr int32_t kCharacterDots = 12;  // wide
// One step of grey a column, black to white, in a frame.
constexpr int kPictureWidth = 256;
constexpr int kPictureHeight = 48;

struct BarcodeSample {
    const char16_t* name;
    int32_t symbology;
    const char16_t* data;
};

constexpr auto kBarcodes = std::to_array<BarcodeSample>({
    {u"UPC-A", opos::PTR_BCS_UPCA, u"03600029145"},
    {u"UPC-E", opos::PTR_BCS_UPCE, u"01234500006"},
    {u"EAN 8", opos::PTR_BCS_EAN8, u"9638507"},
    {u"EAN 13", opos::PTR_BCS_EAN13, u"4006381333931"},
    {u"ITF", opos::PTR_BCS_ITF, u"1234567890"},
    {u"Codabar", opos::PTR_BCS_Codabar, u"A12345B"},
    {u"Code 39", opos::PTR_BCS_Code39, u"TEST 39"},
    {u"Code 93", opos::PTR_BCS_Code93, u"TEST 93"},
    {u"Code 128", opos::PTR_BCS_Code128, u"{BTest 128"},
});

// "----+----1----+----2"
std::u16string Ruler(int32_t columns)
{
    std::u16string ruler;
    for (int32_t column = 1; column <= columns; ++column)
        ruler += column % 10 == 0 ? static_cast<char16_t>(u'0' + column / 10 % 10) : column % 5 == 0 ? u'+' : u'-';
    return ruler + u"\n";
}

void Append(std::string& bytes, uint32_t number, int count)
{
    for (int at = 0; at < count; ++at)
        bytes += static_cast<char>(number >> 8 * at & 0xFF);
}

// A bitmap file of 24 bits a pixel.
std::string GreyScale()
{
    constexpr uint32_t kHeaders = 14 + 40;
    constexpr uint32_t kBytes = kPictureWidth * kPictureHeight * 3;
    std::string file = "BM";
    Append(file, kHeaders + kBytes, 4);
    Append(file, 0, 4);
    Append(file, kHeaders, 4);
    Append(file, 40, 4);
    Append(file, kPictureWidth, 4);
    Append(file, kPictureHeight, 4);
    Append(file, 1, 2);
    Append(file, 24, 2);
    Append(file, 0, 4);
    Append(file, kBytes, 4);
    for (int at = 0; at < 4; ++at)
        Append(file, 0, 4);
    for (int y = 0; y < kPictureHeight; ++y) {
        for (int x = 0; x < kPictureWidth; ++x) {
            const bool isFrame = x < 2 || y < 2 || x >= kPictureWidth - 2 || y >= kPictureHeight - 2;
            file.append(3, static_cast<char>(isFrame ? 0 : x));
        }
    }
    return file;
}

// A file that goes when this does.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& contents)
        : path_(fs::temp_directory_path() / ("marbex-opos-" + std::to_string(std::random_device()()) + ".bmp"))
    {
        std::ofstream(path_, std::ios::binary) << contents;
    }
    ~TemporaryFile()
    {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::u16string Path() const { return path_.u16string(); }

private:
    fs::path path_;
};

class TestPage {
public:
    TestPage(PrinterSession& printer, const std::string& device)
        : printer_(printer), device_(platform::Utf16FromUtf8(device)), dots_(printer.PaperDots())
    {
    }

    std::string Print()
    {
        if (!PrintHead()) return "its head";
        if (!PrintStyles()) return "the sizes";
        for (std::size_t at = 1; at <= printer_.Profile().Fonts[0]; ++at) {
            const support::CharSetStruct* table = support::FindCharacterSet(printer_.Profile().Fonts[at]);
            if (table != nullptr && !PrintTable(*table)) return std::string(table->DisplayName);
        }
        for (const BarcodeSample& barcode : kBarcodes) {
            if (!PrintBarcode(barcode)) return platform::Utf8FromUtf16(barcode.name);
        }
        if (!PrintPicture()) return "the picture";
        return Did("CutPaper", {opos::PTR_CP_FULLCUT}) ? "" : "the cut";
    }

private:
    bool Did(std::string_view method, std::initializer_list<Value> arguments)
    {
        return printer_.Call(method, arguments) == opos::OPOS_SUCCESS;
    }
    bool Line(const std::u16string& text) { return printer_.PrintNormal(text + u"\n") == opos::OPOS_SUCCESS; }

    bool PrintHead()
    {
        const int32_t columns = dots_ / kCharacterDots;
        const std::u16string model = platform::Utf16FromUtf8(printer_.Text(opos::PIDX_DeviceDescription));
        const std::u16string service = platform::Utf16FromUtf8(printer_.Text(opos::PIDX_ServiceObjectDescription));
        return Line(u"\x1B|cA\x1B|4C" + device_) && Line(model) && Line(service) &&
               Line(
                   platform::Utf16FromUtf8(std::to_string(dots_) + " dots, " + std::to_string(columns) + " columns")) &&
               printer_.PrintNormal(Ruler(columns)) == opos::OPOS_SUCCESS;
    }

    bool PrintStyles()
    {
        return Line(u"left") && Line(u"\x1B|cAcentred") && Line(u"\x1B|rAright") && Line(u"\x1B|bCbold") &&
               Line(u"\x1B|uCunderlined") && Line(u"\x1B|iCitalic") && Line(u"\x1B|2Cdouble width") &&
               Line(u"\x1B|3Cdouble height") && Line(u"\x1B|4Cboth") && Line(u"\x1B|3hC\x1B|3vCx 3\x1B|1hC\x1B|1vC");
    }

    // The upper half of a table as the printer has it: the till's own code page need not hold a character of it.
    bool PrintTable(const support::CharSetStruct& table)
    {
        const std::string number = std::to_string(table.SetNumber);
        if (!Line(u"\n" + platform::Utf16FromUtf8(number + " " + std::string(table.DisplayName)))) return false;
        const std::string select = std::string(table.SelectPrefix) + static_cast<char>(table.TableCode);
        const support::CharSetStruct& first = support::CharacterSets().front();
        const std::string back = std::string(first.SelectPrefix) + static_cast<char>(first.TableCode);
        const bool isDoubleByte = table.SetNumber >= 240;
        // Of the large sets a row as an example.
        for (int row = isDoubleByte ? 0xB0 : 0x80; row <= (isDoubleByte ? 0xB0 : 0xE0); row += 0x20) {
            std::string bytes = select;
            for (int column = 0; column < (isDoubleByte ? 0x10 : 0x20); ++column) {
                if (isDoubleByte) bytes += static_cast<char>(row);
                bytes += static_cast<char>((isDoubleByte ? 0xA1 : row) + column);
            }
            if (printer_.SendBytes(bytes + back + "\n") != opos::OPOS_SUCCESS) return false;
        }
        return true;
    }

    bool PrintBarcode(const BarcodeSample& barcode)
    {
        constexpr int32_t kHeight = 50;
        constexpr int32_t kModuleWidth = 2;
        return Line(u"\n\x1B|cA" + std::u16string(barcode.name)) &&
               Did("PrintBarCode", {opos::PTR_S_RECEIPT, barcode.data, barcode.symbology, kHeight, kModuleWidth,
                                    opos::PTR_BC_CENTER, opos::PTR_BC_TEXT_BELOW});
    }

    bool PrintPicture()
    {
        const TemporaryFile picture(GreyScale());
        return Line({}) &&
               Did("PrintBitmap", {opos::PTR_S_RECEIPT, picture.Path(), opos::PTR_BM_ASIS, opos::PTR_BM_CENTER});
    }

    PrinterSession& printer_;
    std::u16string device_;
    int32_t dots_;
};

}  // namespace

std::string PrintTestPage(PrinterSession& printer, const std::string& device)
{
    return TestPage(printer, device).Print();
}

}  // namespace marbex::tools
