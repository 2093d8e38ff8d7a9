// Requests whose output is prepared before it becomes a job: bar codes and pictures.

#include <new>

#include "spooler/barcode_request.h"
#include "spooler/bitmap_request.h"
#include "spooler/print_spooler.h"

namespace marbex::spooler {

int32_t CPrintSpooler::PrintBarCode(int32_t, const std::string& data, int32_t symbology, int32_t height, int32_t width,
                                    int32_t alignment, int32_t textPosition, std::atomic<int32_t>* outputId)
{
    BarcodePayload payload(new (std::nothrow) printer::BarcodeDataStruct{});
    {
        platform::LockHold hold(barcodeLock_);
        const BarcodeRequest request{data, symbology, height, width, alignment, textPosition};
        if (const int32_t refusal =
                PrepareBarcode(traits.tag, traits.logsCastWidth, barcodeEngine_, request, payload.get());
            refusal != 0) {
            return refusal;
        }
    }
    return AddJob(Number(JobMeaning::kPrintBarcode), std::move(payload),
                  static_cast<uint32_t>(sizeof(printer::BarcodeDataStruct)), outputId);
}

int32_t CPrintSpooler::PrintBitmap(int32_t, const std::string& fileName, int32_t width, int32_t alignment,
                                   int32_t rotation, std::atomic<int32_t>* outputId)
{
    BitmapPayload payload(new (std::nothrow) printer::BitmapDataStruct{});
    const BitmapRequest request{fileName, width, alignment, rotation};
    if (const int32_t refusal = PrepareBitmap(traits.tag, request, payload.get()); refusal != 0) return refusal;
    return AddJob(Number(JobMeaning::kPrintBitmap), std::move(payload), printer::kBitmapDataLength, outputId);
}

}  // namespace marbex::spooler
