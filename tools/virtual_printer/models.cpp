#include "virtual_printer/models.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace marbex::virtual_printer {
namespace {

constexpr std::array<Model, 18> kModels{{
    {.name = "TALIS", .identity = 0x5F, .printableDots = 608, .drawer = true},
    {.name = "TALIS ETHERNET", .identity = 0x65, .printableDots = 608, .drawer = true},
    {.name = "ORVEN", .identity = 0x5D, .printableDots = 608, .presenter = true, .buffer = 8192},
    {.name = "ORVENETH", .identity = 0x95, .printableDots = 608, .presenter = true, .buffer = 8192},
    {.name = "BRISA", .identity = 0xB9, .printableDots = 568, .presenter = true, .buffer = 8192},
    {.name = "BRISA-HD",
     .identity = 0x212,
     .printableDots = 960,
     .presenter = true,
     .tellsPrinting = true,
     .buffer = 65536},
    {.name = "PELTO", .identity = 0x8E, .printableDots = 576, .drawer = true},
    {.name = "SELVA", .identity = 0x8E, .printableDots = 576, .drawer = true},
    {.name = "GALEN", .identity = 0x75, .printableDots = 608},
    {.name = "LUMEN", .identity = 0xA8, .printableDots = 608, .presenter = true, .buffer = 8192},
    {.name = "OSTRA",
     .identity = 0x204,
     .printableDots = 1248,
     .presenter = true,
     .takesStartUp = true,
     .buffer = 65536},
    {.name = "FERRO", .identity = 0x225, .printableDots = 832, .presenter = true, .buffer = 16384},
    {.name = "NESTO", .identity = 0x226, .printableDots = 384, .cutter = false, .drawer = true, .displayRows = 2},
    {.name = "VELA PC", .identity = 0x239, .printableDots = 640, .drawer = true, .displayRows = 2, .buffer = 16384},
    {.name = "DORIN", .identity = 0x208, .printableDots = 640, .presenter = true, .wideDots = 976, .buffer = 16384},
    {.name = "AMBRA", .identity = 0x20A, .printableDots = 576, .drawer = true},
    {.name = "ARGO PC TURBO",
     .identity = 0x209,
     .printableDots = 384,
     .drawer = true,
     .displayRows = 1,
     .displayOnOwnLine = true,
     .displayCharset = "CP737"},
    {.name = "CORVO", .identity = 0x237, .printableDots = 640, .presenter = true, .buffer = 16384},
}};

bool SameLetters(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::toupper(x) == std::toupper(y); });
}

}  // namespace

std::span<const Model> Models()
{
    return kModels;
}

const Model* FindModel(std::string_view name)
{
    const auto found =
        std::find_if(kModels.begin(), kModels.end(), [name](const Model& m) { return SameLetters(m.name, name); });
    return found == kModels.end() ? nullptr : &*found;
}

}  // namespace marbex::virtual_printer
