#include "virtual_printer/web/station.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

const char* Name(PaperState paper)
{
    return paper == PaperState::kOk ? "ok" : paper == PaperState::kLow ? "low" : "out";
}

Json PartsOf(const Model& model)
{
    return {{"cutter", model.cutter},
            {"presenter", model.presenter},
            {"drawer", model.drawer},
            {"display_rows", model.displayRows},
            {"jam", model.tellsPrinting}};
}

}  // namespace

Json StateOf(const Station& station)
{
    PrinterState state;
    std::string unfinished;
    int width = 0;
    std::string_view model;
    Json parts;
    station.server.With([&](VirtualPrinter& printer) {
        state = printer.State();
        unfinished = printer.UnfinishedLine();
        width = printer.GetPaper().Width();
        model = printer.GetModel().name;
        parts = PartsOf(printer.GetModel());
    });
    const PrinterServer::LinkState link = station.server.GetLinkState();
    const Surroundings around = station.recorder.Look();
    const auto [piece, rows] = station.recorder.UnfinishedSize();
    Json json{{"printer", station.number},
              {"name", station.name},
              {"model", model},
              {"place", station.place},
              {"width", width},
              {"parts", std::move(parts)},
              {"connected", around.connected},
              {"cover", state.coverOpen ? "open" : "closed"},
              {"paper", Name(state.paper)},
              {"jam", state.jammed},
              {"mute", state.mute},
              {"garbage", state.garbage},
              {"power", state.on},
              {"stopped", state.stopped},
              {"refusing", link.refusing},
              {"pace", link.bytesPerSecond},
              {"speed", state.speed},
              {"printing_held", state.printingHeld},
              {"drawer_signal", state.drawerSignal},
              {"waiting_bytes", state.waitingBytes},
              {"received", state.received},
              {"drawer", around.drawerOpen ? "open" : "closed"},
              {"pulses", around.pulses},
              {"display", around.display},
              {"ticket", around.ticket},
              {"unfinished", unfinished},
              {"piece", piece},
              {"rows", rows},
              {"lines", around.lines},
              {"cuts", around.cuts},
              {"next", station.recorder.NextItem()}};
    json["unknown"] = Json::array();
    for (const auto& [bytes, entry] : around.unknown) {
        json["unknown"].push_back({{"bytes", bytes}, {"why", entry.why}, {"times", entry.times}});
    }
    return json;
}

}  // namespace marbex::virtual_printer
