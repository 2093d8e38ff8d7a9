#include "server/posprinter_methods.h"

#include <opos/common.h>

#include "device/posprinter_device.h"
#include "server/posprinter_front.h"

namespace marbex::server {
namespace {

using device::POSPrinterDevice;
using Front = MarbexOposPrnDriver;

// A row for an operation of the device that the front only forwards. Without a device the result is 106
// (OPOS_E_ILLEGAL), and nothing where there is no result.
template <auto Operation>
constexpr DispatchMethod Forward(std::string_view name)
{
    using Called = Signature<decltype(Operation)>;
    return {name, Called::kCount, [](void* service, DispatchCall& call) {
                const auto device = static_cast<Front*>(service)->Device();
                return RunCall<Called>(call, [&](auto&&... arguments) -> typename Called::ResultType {
                    if (device != nullptr) {
                        return ((*device).*Operation)(std::forward<decltype(arguments)>(arguments)...);
                    }
                    if constexpr (!std::is_void_v<typename Called::ResultType>) return opos::OPOS_E_ILLEGAL;
                });
            }};
}

// In the order of their dispatch identifiers, which is fixed.
constexpr DispatchMethod kMethods[] = {
    Method<&Front::OpenService>("OpenService"),
    Method<&Front::CloseService>("CloseService"),
    Forward<&POSPrinterDevice::ClaimDevice>("ClaimDevice"),
    Forward<&POSPrinterDevice::GetOpenResult>("GetOpenResult"),
    Forward<&POSPrinterDevice::COFreezeEvents>("COFreezeEvents"),
    Forward<&POSPrinterDevice::ResetStatistics>("ResetStatistics"),
    Forward<&POSPrinterDevice::UpdateStatistics>("UpdateStatistics"),
    Forward<&POSPrinterDevice::BeginInsertion>("BeginInsertion"),
    Forward<&POSPrinterDevice::BeginRemoval>("BeginRemoval"),
    Forward<&POSPrinterDevice::ChangePrintSide>("ChangePrintSide"),
    Method<&Front::CutPaper>("CutPaper"),
    Forward<&POSPrinterDevice::EndInsertion>("EndInsertion"),
    Forward<&POSPrinterDevice::EndRemoval>("EndRemoval"),
    Forward<&POSPrinterDevice::MarkFeed>("MarkFeed"),
    Forward<&POSPrinterDevice::PrintBarCode>("PrintBarCode"),
    Forward<&POSPrinterDevice::PrintBitmap>("PrintBitmap"),
    Forward<&POSPrinterDevice::PrintImmediate>("PrintImmediate"),
    Forward<&POSPrinterDevice::PrintNormal>("PrintNormal"),
    Forward<&POSPrinterDevice::PrintTwoNormal>("PrintTwoNormal"),
    Forward<&POSPrinterDevice::RotatePrint>("RotatePrint"),
    Forward<&POSPrinterDevice::SetBitmap>("SetBitmap"),
    Forward<&POSPrinterDevice::SetLogo>("SetLogo"),
    Forward<&POSPrinterDevice::TransactionPrint>("TransactionPrint"),
    Forward<&POSPrinterDevice::ValidateData>("ValidateData"),
    Forward<&POSPrinterDevice::GetPropertyNumber>("GetPropertyNumber"),
    Method<&Front::GetPropertyString>("GetPropertyString"),
    Forward<&POSPrinterDevice::SetPropertyString>("SetPropertyString"),
    Forward<&POSPrinterDevice::SetPropertyNumber>("SetPropertyNumber"),
    Forward<&POSPrinterDevice::ReleaseDevice>("ReleaseDevice"),
    Forward<&POSPrinterDevice::DirectIO>("DirectIO"),
    Forward<&POSPrinterDevice::CheckHealth>("CheckHealth"),
    Forward<&POSPrinterDevice::ClearOutput>("ClearOutput"),
    Forward<&POSPrinterDevice::RetrieveStatistics>("RetrieveStatistics"),
    Forward<&POSPrinterDevice::Claim>("Claim"),
    Method<&Front::Close>("Close"),
    Forward<&POSPrinterDevice::Release>("Release"),
    Method<&Front::DirectIO_NET>("DirectIO_NET"),
    Method<&Front::OpenService_NET>("OpenService_NET"),
    Method<&Front::RetrieveStatistics_NET>("RetrieveStatistics_NET"),
    Forward<&POSPrinterDevice::CompareFirmwareVersion>("CompareFirmwareVersion"),
    Forward<&POSPrinterDevice::UpdateFirmware>("UpdateFirmware"),
    Forward<&POSPrinterDevice::ClearPrintArea>("ClearPrintArea"),
    Forward<&POSPrinterDevice::PageModePrint>("PageModePrint"),
    Forward<&POSPrinterDevice::PrintMemoryBitmap>("PrintMemoryBitmap"),
    Forward<&POSPrinterDevice::DrawRuledLine>("DrawRuledLine"),
};

constexpr DispatchTable kTable("MarbexOposPrnDriver", kMethods);

}  // namespace

const DispatchTable& PosPrinterTable()
{
    return kTable;
}

}  // namespace marbex::server
