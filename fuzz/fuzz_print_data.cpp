// Any text, for any model, becomes bytes that a printer takes; plain text becomes nothing but what it says.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

#include "common/code_page_registry.h"
#include "device/model_description.h"
#include "device/print_data_converter.h"
#include "must.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"
#include "printer/nul_markers.h"
#include "virtual_printer/printer.h"

using namespace marbex;
using fuzz::Must;

namespace {

constexpr const char* kCodePages[] = {"1252", "1253", "932", "949", "65001"};
constexpr int32_t kStations[] = {opos::PTR_S_RECEIPT, opos::PTR_S_RECEIPT, opos::PTR_S_JOURNAL, opos::PTR_S_SLIP, 0};

template <typename Items>
const auto& OneOf(FuzzedDataProvider& in, const Items& items)
{
    return items[in.ConsumeIntegralInRange<std::size_t>(0, std::size(items) - 1)];
}

bool IsPlain(std::string_view text)
{
    return std::ranges::all_of(
        text, [](unsigned char byte) { return byte >= 0x20 ? byte != 0x7F : byte == '\r' || byte == '\n'; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider in(bytes, size);
    const device::ModelDescription& model = OneOf(in, device::ModelDescriptions());
    const support::SubModelStruct& subModel = OneOf(in, support::SubModels());
    const int32_t station = OneOf(in, kStations);
    platform::LoadAnsiCodePage(test::CodePageRegistry(OneOf(in, kCodePages)));
    std::vector<support::CharSetStruct> sets;
    for (auto count = in.ConsumeIntegralInRange<unsigned>(1, 6); count > 0; --count)
        sets.push_back(OneOf(in, support::CharacterSets()));
    const std::string text = in.ConsumeRemainingBytesAsString();

    device::PrintDataConverter converter(model.converter);
    std::string converted = "as it was";
    const int32_t result = converter.DoValidateDataW(station, text, sets, subModel.Key, converted);
    Must(result == (station == opos::PTR_S_RECEIPT ? opos::OPOS_SUCCESS : opos::OPOS_E_ILLEGAL));
    if (result != opos::OPOS_SUCCESS) {
        Must(converted == "as it was");
        return 0;
    }
    Must(converted.find('\0') == std::string::npos);
    std::string again;
    converter.DoValidateDataW(station, text, sets, subModel.Key, again);
    Must(again == converted);

    // The zeros must not make a marker of what stands around them.
    std::string storage;
    const std::string_view sent = printer::ReplaceNulMarkers(converted, storage);
    if (sent.size() > 1U << 16) return 0;  // so many line feeds only take the fuzzer's time
    virtual_printer::VirtualPrinter printer(model.name);
    printer.Feed(sent);
    if (IsPlain(text)) Must(printer.All<virtual_printer::Unknown>().empty());
    return 0;
}
