// Whatever comes over its link, and whatever is done to it meanwhile, the virtual printer does the same however the
// stream is cut.

#include <fuzzer/FuzzedDataProvider.h>

#include "must.h"
#include "virtual_printer/printer.h"

using namespace marbex::virtual_printer;
using marbex::fuzz::Must;

namespace {

Bytes Feed(VirtualPrinter& printer, std::span<const uint8_t> bytes, std::size_t piece)
{
    Bytes answers;
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(piece, bytes.size()))) {
        const Bytes more = printer.Feed(bytes.first(std::min(piece, bytes.size())));
        answers.insert(answers.end(), more.begin(), more.end());
    }
    return answers;
}

// Something that is done to a printer between two pieces of the stream.
void Do(VirtualPrinter& printer, unsigned what)
{
    switch (what) {
        case 0:
            return printer.SetCover(true);
        case 1:
            return printer.SetCover(false);
        case 2:
            return printer.SetPaper(PaperState::kOut);
        case 3:
            return printer.SetPaper(PaperState::kLow);
        case 4:
            return printer.SetPaper(PaperState::kOk);
        case 5:
            return printer.SetMute(true);
        case 6:
            return printer.SetMute(false);
        case 7:
            return printer.SetPower(false);
        case 8:
            return printer.SetPower(true);
        case 9:
            return printer.TearOff();
        case 10:
            return printer.LinkClosed();
        case 11:
            return printer.HalveAnswers(1);
        case 12:
            return printer.SetPrintingHeld(true);
        default:
            return printer.SetPrintingHeld(false);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider in(bytes, size);
    const auto models = Models();
    const Model& model = models[in.ConsumeIntegralInRange<std::size_t>(0, models.size() - 1)];
    PrinterOptions options;
    options.wide = in.ConsumeBool();
    options.buffer = in.ConsumeBool() ? 64 : 0;
    VirtualPrinter whole(model.name, options);
    VirtualPrinter cut(model.name, options);
    while (in.remaining_bytes() > 0) {
        const unsigned what = in.ConsumeIntegralInRange<unsigned>(0, 15);
        const std::string piece = in.ConsumeRandomLengthString();
        const std::span stream(reinterpret_cast<const uint8_t*>(piece.data()), piece.size());
        const std::span taken = stream.first(std::min(stream.size(), whole.Room()));
        Must(Feed(whole, taken, stream.size()) == Feed(cut, taken, 1));
        Must(whole.Room() == cut.Room());
        if (what == 15 && model.displayOnOwnLine) {
            whole.FeedDisplay(stream);
            cut.FeedDisplay(stream);
        }
        Do(whole, what);
        Do(cut, what);
    }
    whole.LinkClosed();
    cut.LinkClosed();
    Must(whole.Happenings() == cut.Happenings());
    Must(whole.UnfinishedLine() == cut.UnfinishedLine());
    Must(whole.GetPaper().Pages().size() == cut.GetPaper().Pages().size());
    return 0;
}
