#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "device/converter_traits.h"
#include "support/printer_tables.h"

namespace marbex::device {

// Turns the application's text, with its OPOS escape sequences (ESC|100P and the like), into the bytes that the printer
// understands. One a device; used on one thread at a time. The traits must live as long as the converter.
class PrintDataConverter {
public:
    explicit PrintDataConverter(const ConverterTraits& traits) : traits_(traits) {}

    // Converts data, text in the ANSI code page up to its first 0x00, and overwrites out; every 0x00 byte for the
    // printer stands in out as support::kNulMarker. charSets are the sets the printer offers, the first of them its
    // table 0; printerSubModel names the national table loaded into table 0, if any. OPOS_SUCCESS for the receipt
    // station, whatever the text; OPOS_E_ILLEGAL, out untouched, for any other.
    int32_t DoValidateDataW(int32_t station, std::string_view data, std::span<const support::CharSetStruct> charSets,
                            std::string_view printerSubModel, std::string& out);

    // For the opening of the device. Every conversion leaves the scales at 1 as well.
    void ResetScales();

private:
    const ConverterTraits& traits_;
    int32_t horizontalScale_ = 1;  // 1 to 8
    int32_t verticalScale_ = 1;    // 1 to 8
};

}  // namespace marbex::device
