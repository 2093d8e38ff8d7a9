#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/simulated/machine/cable.h"
#include "virtual_printer/printer.h"

namespace marbex::tests {

// The virtual printer at the far end of a cable.
class PrinterEnd final : public simulated::FarEnd {
public:
    explicit PrinterEnd(std::string_view model) : printer(model)
    {
        printer.Observe([this](const auto&, const virtual_printer::Happening& happening) {
            if (const auto* line = std::get_if<virtual_printer::TextLine>(&happening))
                paper += line->text + (line->wrapped ? "" : "\n");
            if (const auto* code = std::get_if<virtual_printer::Barcode>(&happening); code != nullptr && code->printed)
                paper += code->text + '\n';
            if (const auto* image = std::get_if<virtual_printer::RasterImage>(&happening);
                image != nullptr && image->complete) {
                char mark[24];
                std::snprintf(mark, sizeof mark, "<J%04d.000>\n", image->height);
                paper += mark;
            }
        });
    }

    std::size_t Room() override { return printer.Room(); }
    std::string Take(std::string_view bytes) override
    {
        const virtual_printer::Bytes answer = printer.Feed(bytes);
        return {answer.begin(), answer.end()};
    }
    void Lost() override { printer.LinkClosed(); }

    virtual_printer::VirtualPrinter printer;
    std::string paper;  // the lines it printed, what its bar codes say, and a mark with the height of each picture
};

// Its display, at the far end of a second cable.
class DisplayEnd final : public simulated::FarEnd {
public:
    explicit DisplayEnd(PrinterEnd& end) : end_(end) {}

    std::size_t Room() override { return SIZE_MAX; }
    std::string Take(std::string_view bytes) override
    {
        end_.printer.FeedDisplay({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
        return {};
    }
    void Lost() override {}

private:
    PrinterEnd& end_;
};

}  // namespace marbex::tests
