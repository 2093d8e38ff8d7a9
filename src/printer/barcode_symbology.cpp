#include "printer/barcode_symbology.h"

#include <algorithm>
#include <array>

#include "opos/printer.h"

namespace marbex::printer {

using namespace opos;

namespace {

constexpr std::array kTypes{
    BarcodeType{PTR_BCS_UPCA, "PTR_BCS_UPCA", Symbology::kUpcA, 0x41},
    BarcodeType{PTR_BCS_UPCE, "PTR_BCS_UPCE", Symbology::kUpcE, 0x42},
    BarcodeType{PTR_BCS_EAN8, "PTR_BCS_EAN8", Symbology::kEan8, 0x44},
    BarcodeType{PTR_BCS_EAN13, "PTR_BCS_EAN13", Symbology::kEan13, 0x43},
    BarcodeType{PTR_BCS_ITF, "PTR_BCS_ITF", Symbology::kItf, 0x46},
    BarcodeType{PTR_BCS_Codabar, "PTR_BCS_Codabar", Symbology::kCodabar, 0x47},
    BarcodeType{PTR_BCS_Code39, "PTR_BCS_Code39", Symbology::kCode39, 0x45},
    BarcodeType{PTR_BCS_Code93, "PTR_BCS_Code93", Symbology::kCode93, 0x48},
    BarcodeType{PTR_BCS_Code128, "PTR_BCS_Code128", Symbology::kCode128, 0x49},
};

}  // namespace

const BarcodeType* FindBarcodeType(int32_t oposCode)
{
    const auto type = std::ranges::find(kTypes, oposCode, &BarcodeType::oposCode);
    return type != kTypes.end() ? type : nullptr;
}

}  // namespace marbex::printer
