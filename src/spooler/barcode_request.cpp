#include "spooler/barcode_request.h"

#include <algorithm>
#include <string>

#include "opos/common.h"
#include "opos/printer.h"
#include "support/service_log.h"

namespace marbex::spooler {

using namespace opos;
using printer::BarcodeDataStruct;
using support::LogWrite;

namespace {

constexpr std::size_t kLoggedRowBytes = 31;

void LogData(const char* tag, std::string_view data)
{
    if (!support::LogIsEnabled()) return;
    LogWrite("[%s] --- PrintBarCode - Buffer Size %d", tag, static_cast<int>(data.size()));
    for (std::size_t i = 0; i < data.size(); ++i) {
        LogWrite("[%s] --- PrintBarCode - Data Byte[%02d] = %d", tag, static_cast<int>(i),
                 static_cast<uint8_t>(data[i]));
    }
}

void LogAlignment(const char* tag, int32_t alignment)
{
    switch (alignment) {
        case PTR_BC_LEFT:
            LogWrite("[%s] --- PrintBarCode - Alignment Left", tag);
            break;
        case PTR_BC_CENTER:
            LogWrite("[%s] --- PrintBarCode - Alignment Center", tag);
            break;
        case PTR_BC_RIGHT:
            LogWrite("[%s] --- PrintBarCode - Alignment Right", tag);
            break;
        default:
            LogWrite("[%s] --- PrintBarCode - Alignment of %d dots From the Left", tag, alignment);
            break;
    }
}

bool AcceptsTextPosition(const char* tag, int32_t textPosition)
{
    switch (textPosition) {
        case PTR_BC_TEXT_NONE:
            LogWrite("[%s] --- PrintBarCode - Text None", tag);
            return true;
        case PTR_BC_TEXT_ABOVE:
            LogWrite("[%s] --- PrintBarCode - Text Above", tag);
            return true;
        case PTR_BC_TEXT_BELOW:
            LogWrite("[%s] --- PrintBarCode - Text Below", tag);
            return true;
        default:
            LogWrite("[%s] --- PrintBarCode - Text Not Supported", tag);
            return false;
    }
}

bool EncodeData(const char* tag, printer::BarcodeEngine& engine, std::string_view data, printer::Symbology symbology,
                uint32_t moduleWidth)
{
    // A longer code does not fit the job; cut, it would be another code.
    const bool fits = data.size() <= sizeof(BarcodeDataStruct::data);
    if (!fits || !engine.Encode(data, symbology, moduleWidth)) {
        LogWrite("[%s] --- PrintBarCode - BARCODE Data NOT Correct!", tag);
        return false;
    }
    LogWrite("[%s] --- PrintBarCode - BARCODE Data Correct!", tag);
    if (support::LogIsEnabled()) {
        LogWrite("[%s] --- PrintBarCode - Barcode HRI =  %s", tag, engine.GetHriText().c_str());
    }
    LogWrite("[%s] --- PrintBarCode - Barcode Width %d", tag, static_cast<int>(engine.GetWidth()));
    return true;
}

// The row is kept as 16-bit words of the other byte order. Only the used bytes are taken, so that the exchange partner
// of an odd last one is the white byte behind it.
void CopyBars(const printer::BarcodeEngine& engine, BarcodeDataStruct& out)
{
    const auto bars = engine.Bars();
    const uint32_t used = (engine.GetWidth() + 7) / 8;
    for (uint32_t i = 0; i < bars.size(); ++i)
        out.bars[i] = i < used ? bars[i ^ 1U] : uint8_t{0};
}

void LogBars(const char* tag, const BarcodeDataStruct& payload)
{
    if (!support::LogIsEnabled()) return;
    for (std::size_t i = 0; i < kLoggedRowBytes; ++i) {
        LogWrite("[%s] --- PrintBarCode - RowBar [%d]= %d", tag, static_cast<int>(i), payload.bars[i]);
    }
}

}  // namespace

uint32_t BarcodeModuleWidth(int32_t width)
{
    const uint32_t dots = static_cast<uint32_t>(width) % 4;
    return dots != 0 ? dots : 2;
}

int32_t PrepareBarcode(const char* tag, bool logsCastWidth, printer::BarcodeEngine& engine,
                       const BarcodeRequest& request, BarcodeDataStruct* out)
{
    LogWrite("[%s] --- PrintBarCode Begin", tag);
    if (out == nullptr) {
        LogWrite("[%s] --- PrintBarCode - BarcodeDataStruct Allocation failure", tag);
        return OPOS_E_ILLEGAL;
    }
    std::string data(request.data.substr(0, request.data.find('\0')));
    LogData(tag, data);
    if (request.symbology == PTR_BCS_Code128 && !printer::HasCode128Start(data)) {
        LogWrite("[%s] --- PrintBarCode - Code128 Without Start", tag);
        data.insert(0, "{A");
    }

    const uint32_t moduleWidth = BarcodeModuleWidth(request.width);
    LogWrite("[%s] --- PrintBarCode - Height %d", tag, request.height);
    LogWrite("[%s] --- PrintBarCode - Width %d", tag, request.width);
    if (logsCastWidth) LogWrite("[%s] --- PrintBarCode - Cast Width %d", tag, static_cast<int>(moduleWidth));
    LogAlignment(tag, request.alignment);
    if (!AcceptsTextPosition(tag, request.textPosition)) return OPOS_E_ILLEGAL;

    const printer::BarcodeType* const type = printer::FindBarcodeType(request.symbology);
    if (type == nullptr) {
        LogWrite("[%s] --- PrintBarCode - Type Not Supported", tag);
        return OPOS_E_ILLEGAL;
    }
    LogWrite("[%s] --- PrintBarCode - Type %s", tag, type->logName);
    if (!EncodeData(tag, engine, data, type->symbology, moduleWidth)) return OPOS_E_ILLEGAL;

    *out = {};
    std::ranges::copy(data, out->data);
    out->dataLength = static_cast<uint32_t>(data.size());
    out->widthDots = engine.GetWidth();
    out->symbology = request.symbology;
    out->height = request.height;
    out->moduleWidth = static_cast<int32_t>(moduleWidth);
    out->alignment = request.alignment;
    out->textPosition = request.textPosition;
    CopyBars(engine, *out);
    LogBars(tag, *out);
    LogWrite("[%s] --- PrintBarCode End", tag);
    return OPOS_SUCCESS;
}

}  // namespace marbex::spooler
