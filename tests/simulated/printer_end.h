#pragma once

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
    std::string paper;  // the lines it printed
};

}  // namespace marbex::tests
