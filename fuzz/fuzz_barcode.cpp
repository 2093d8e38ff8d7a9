// A barcode is either refused or sent as it is, and what the printer draws of it is as wide as was worked out here and
// has the same text under it.

#include <fuzzer/FuzzedDataProvider.h>

#include "must.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "printer/barcode_command.h"
#include "spooler/barcode_request.h"
#include "virtual_printer/printer.h"

using namespace marbex;
using fuzz::Must;

namespace {

constexpr int32_t kSymbologies[] = {
    opos::PTR_BCS_UPCA, opos::PTR_BCS_UPCE,    opos::PTR_BCS_EAN8,   opos::PTR_BCS_EAN13,  opos::PTR_BCS_TF,
    opos::PTR_BCS_ITF,  opos::PTR_BCS_Codabar, opos::PTR_BCS_Code39, opos::PTR_BCS_Code93, opos::PTR_BCS_Code128,
};

// Of symbologies whose elements have one width for all; how the others are drawn is the printer's affair.
void CheckDrawn(const virtual_printer::Barcode& drawn, const printer::BarcodeEngine& engine, int32_t symbology)
{
    switch (symbology) {
        case opos::PTR_BCS_UPCA:
        case opos::PTR_BCS_EAN8:
        case opos::PTR_BCS_EAN13:
            Must(drawn.text == engine.GetHriText());
            [[fallthrough]];
        case opos::PTR_BCS_Code93:
            Must(static_cast<uint32_t>(drawn.width) == engine.GetWidth());
            break;
        case opos::PTR_BCS_ITF:
            Must(drawn.text == engine.GetHriText());
            break;
        case opos::PTR_BCS_Code39:
            Must(drawn.text == "*" + engine.GetHriText() + "*");
            break;
        default:
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider in(bytes, size);
    spooler::BarcodeRequest request{};
    request.symbology =
        in.ConsumeProbability<float>() < 0.9F ? in.PickValueInArray(kSymbologies) : in.ConsumeIntegral<int32_t>();
    request.height = in.ConsumeIntegral<int32_t>();
    request.width = in.ConsumeIntegral<int32_t>();
    request.alignment = in.ConsumeBool() ? in.ConsumeIntegralInRange<int32_t>(-3, -1) : in.ConsumeIntegral<int32_t>();
    request.textPosition = in.ConsumeIntegralInRange<int32_t>(-14, -10);
    const std::string data = in.ConsumeRemainingBytesAsString();
    request.data = data;

    printer::BarcodeEngine engine;
    printer::BarcodeDataStruct barcode{};
    if (spooler::PrepareBarcode("fuzz", true, engine, request, &barcode) != opos::OPOS_SUCCESS) return 0;
    Must(barcode.dataLength <= sizeof barcode.data && barcode.widthDots <= sizeof barcode.bars * 8);
    for (uint32_t dot = (barcode.widthDots + 7) / 8 * 8; dot < sizeof barcode.bars * 8; ++dot)
        Must((engine.Bars()[dot / 8] >> (7 - dot % 8) & 1) == 0);

    virtual_printer::VirtualPrinter printer("OSTRA");
    printer.Feed(printer::BarcodeCommand(barcode));
    const auto drawn = printer.All<virtual_printer::Barcode>();
    Must(drawn.size() == 1);
    Must(drawn[0].data == std::string_view(reinterpret_cast<const char*>(barcode.data), barcode.dataLength));
    // Printers refuse what does not fit on their paper, and characters that are not in the code set of a Code 128.
    if (drawn[0].printed) CheckDrawn(drawn[0], engine, request.symbology);
    return 0;
}
