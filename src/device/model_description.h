#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "device/converter_traits.h"
#include "printer/encoder_traits.h"
#include "spooler/print_spooler.h"

namespace marbex::device {

// RecLineWidth in the map modes that do not count dots.
struct LineWidths {
    int32_t twips;    // 1/1440 inch
    int32_t english;  // 1/1000 inch
    int32_t metric;   // 1/100 mm
};

// How the cash drawer is kicked.
enum class DrawerKick : uint8_t {
    kPrinterCommand,  // ESC p through the printer
    kSuperIo,         // register access through the platform's Super I/O library
};

// The line display at the printer.
struct DisplayDescription {
    std::string_view format;  // rows x columns
    int32_t rows;
    int32_t columns;
    bool onSecondLink;  // reached over the port's second connection, without a frame
    int32_t defaultCodePage;
    std::span<const int32_t> codePages;
};

// Everything in which one model differs from another. All models share one device class; a new model is a new row of
// the table in model_table.cpp.
struct ModelDescription {
    std::string_view name;         // as in the model table of the registry's profiles
    const char* tag;               // class name in the log
    std::string_view description;  // in DeviceDescription
    LineWidths recLineWidth;
    int32_t recLinesToPaperCut;
    ConverterTraits converter;
    printer::EncoderTraits encoder;
    spooler::SpoolerTraits spooler;
    DrawerKick drawer = DrawerKick::kPrinterCommand;
    const DisplayDescription* display = nullptr;
    bool reportsPaperJam = false;
};

std::span<const ModelDescription> ModelDescriptions();

// By upper-cased name; null when no model has it.
const ModelDescription* FindModel(std::string_view name);

}  // namespace marbex::device
