#include "support/printer_tables.h"

#include <algorithm>
#include <array>

namespace marbex::support {

namespace {

using namespace std::string_view_literals;

constexpr auto kModels = std::to_array<PrinterModelStruct>({
    {"TALIS", "TALIS", "talis.bmp", "S,U", 1, 0},
    {"TALIS ETHERNET", "TALIS ETHERNET", "taliseth.bmp", "E", 1, 0},
    {"ORVEN", "ORVEN", "orven.bmp", "S,U", 0, 0},
    {"ORVENETH", "ORVENETH", "orveneth.bmp", "S,U,E", 0, 0},
    {"BRISA", "BRISA", "brisa.bmp", "S,U,E", 0, 0},
    {"BRISA-HD", "BRISA-HD", "brisahd.bmp", "S,U,E", 0, 0},
    {"PELTO", "PELTO", "pelto.bmp", "S,U", 1, 0},
    {"SELVA", "SELVA", "selva.bmp", "S,U", 1, 0},
    {"GALEN", "GALEN", "galen.bmp", "S,U,E", 0, 0},
    {"LUMEN", "LUMEN", "lumen.bmp", "S,U", 0, 0},
    {"OSTRA", "OSTRA", "ostra.bmp", "S,U", 0, 0},
    {"FERRO", "FERRO", "ferro.bmp", "S,U", 0, 0},
    {"NESTO", "NESTO", "nesto.bmp", "U,E", 1, 1},
    {"VELA PC", "VELA PC", "velapc.bmp", "S", 1, 1},
    {"DORIN", "DORIN", "dorin.bmp", "S,U,E", 0, 0},
    {"AMBRA", "AMBRA", "ambra.bmp", "S,U,E", 1, 0},
    {"ARGO PC TURBO", "ARGO PC TURBO", "argopc.bmp", "S", 1, 1},
    {"CORVO", "CORVO", "corvo.bmp", "S,U", 0, 0},
});

// FS % 0 ESC t leaves the double-byte mode and selects a table; FS % selects a double-byte encoding.
constexpr auto kTable = "\x1C%\0\x1Bt"sv;
constexpr auto kTableText =
    "\x1C%"
    "MaRkEr00NuLl"
    "\x1Bt"sv;
constexpr auto kDoubleByte = "\x1C%"sv;

constexpr auto kCharacterSets = std::to_array<CharSetStruct>({
    {0, 0, "437", "PC437 - USA", kTable, kTableText, 437},
    {1, 1, "20290", "Katakana", kTable, kTableText, 20290},
    {2, 2, "850", "PC850 - Multilingual", kTable, kTableText, 850},
    {3, 3, "860", "PC860 - Portuguese", kTable, kTableText, 860},
    {4, 4, "863", "PC863 - Canadian/Franch", kTable, kTableText, 863},
    {5, 5, "865", "PC865 - Nordic", kTable, kTableText, 865},
    {13, 13, "857", "PC857 - Turkish", kTable, kTableText, 857},
    {14, 14, "737", "PC737 - Greek", kTable, kTableText, 737},
    {17, 17, "866", "PC866 - Cyrillic 2", kTable, kTableText, 866},
    {18, 18, "852", "PC852 - Latin 2", kTable, kTableText, 852},
    {19, 19, "858", "PC858 - Euro", kTable, kTableText, 858},
    {20, 20, "874", "KU42 - Thai", kTable, kTableText, 874},
    {34, 34, "855", "PC855 - Cyrillic", kTable, kTableText, 855},
    {36, 36, "862", "PC862 - Hebrew", kTable, kTableText, 862},
    {37, 37, "864", "PC864 - Arabic", kTable, kTableText, 864},
    {45, 45, "1252", "WPC1250 - Latin 2", kTable, kTableText, 1252},
    {46, 46, "1251", "WPC1251 - Cyrillic", kTable, kTableText, 1251},
    {47, 47, "1253", "WPC1253 - Greek", kTable, kTableText, 1253},
    {48, 48, "1254", "WPC1254 - Turkish", kTable, kTableText, 1254},
    {49, 49, "1255", "WPC1255 - Hebrew", kTable, kTableText, 1255},
    {50, 50, "1256", "WPC1256 - Arabic", kTable, kTableText, 1256},
    {51, 51, "1257", "WPC1257 - Baltic Rim", kTable, kTableText, 1257},
    {52, 52, "1258", "WPC1258 - Vientamese", kTable, kTableText, 1258},
    {240, 1, "54936", "GB18030", kDoubleByte, kDoubleByte, 54936},
    {241, 2, "949", "CP949", kDoubleByte, kDoubleByte, 949},
});

constexpr auto kSubModels = std::to_array<SubModelStruct>({
    {"PRINTER DEFAULT", "", 0},
    {"PC866 RUSSIAN (Only if loaded in Printer)", "RUSSIAN", 866},
    {"PC857 TURKISH (Only if loaded in Printer)", "TURKISH", 857},
    {"PC852 EASTERN EUROPE (Only if loaded in Printer)", "ESTEEUROPE", 852},
    {"PC862 ISRAELI (Only if loaded in Printer)", "ISRAELI", 862},
    {"PC737 GREEK (Only if loaded in Printer)", "GREEK", 737},
    {"GB2312 CHINA (Only if loaded in Printer)", "CHINA-GB2312", 936},
    {"GB18030 CHINA (Only if loaded in Printer)", "CHINA-GB18030", 54936},
});

}  // namespace

std::span<const PrinterModelStruct> PrinterModels()
{
    return kModels;
}

std::span<const CharSetStruct> CharacterSets()
{
    return kCharacterSets;
}

const CharSetStruct* FindCharacterSet(uint8_t setNumber)
{
    const auto found = std::find_if(kCharacterSets.begin(), kCharacterSets.end(),
                                    [setNumber](const CharSetStruct& set) { return set.SetNumber == setNumber; });
    return found == kCharacterSets.end() ? nullptr : &*found;
}

std::span<const SubModelStruct> SubModels()
{
    return kSubModels;
}

}  // namespace marbex::support
