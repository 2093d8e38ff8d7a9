#include "virtual_printer/operator/json_report.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace marbex::virtual_printer {
namespace {

// Keys in the order in which they are written.
using Json = nlohmann::ordered_json;

std::string Hex(const Bytes& bytes)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t byte : bytes) {
        if (!text.empty()) {
            text.push_back(' ');
        }
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0x0F]);
    }
    return text;
}

std::string_view Name(Alignment alignment)
{
    switch (alignment) {
        case Alignment::kCentre:
            return "centre";
        case Alignment::kRight:
            return "right";
        case Alignment::kLeft:
            break;
    }
    return "left";
}

Json ToJsonValue(const Style& style)
{
    Json json = Json::object();
    if (style.bold) {
        json["bold"] = true;
    }
    if (style.italic) {
        json["italic"] = true;
    }
    if (style.underline) {
        json["underline"] = true;
    }
    if (style.scaleX != 1) {
        json["width"] = style.scaleX;
    }
    if (style.scaleY != 1) {
        json["height"] = style.scaleY;
    }
    return json;
}

struct Writer {
    Json operator()(const TextLine& line) const
    {
        Json json{{"event", "text"}, {"text", line.text}, {"align", Name(line.alignment)}, {"x", line.x}};
        if (line.runs.size() == 1) {
            json["style"] = ToJsonValue(line.runs[0].style);
        } else if (!line.runs.empty()) {
            for (const TextRun& run : line.runs) {
                json["runs"].push_back({{"text", run.text}, {"style", ToJsonValue(run.style)}});
            }
        }
        if (line.wrapped) {
            json["wrapped"] = true;
        }
        return json;
    }
    Json operator()(const Cut& cut) const { return {{"event", "cut"}, {"kind", cut.full ? "full" : "partial"}}; }
    Json operator()(const Torn&) const { return {{"event", "torn"}}; }
    Json operator()(const PresenterMove& move) const
    {
        Json json{{"event", "presenter"}, {"action", move.function == 3 ? "present" : "eject"}};
        if (move.function == 3) {
            json["steps"] = move.steps;
        }
        return json;
    }
    Json operator()(const MarkFeed&) const { return {{"event", "mark_feed"}}; }
    Json operator()(const DrawerPulse& pulse) const
    {
        return {{"event", "pulse"},
                {"connector", pulse.connector},
                {"on_ms", pulse.onMs},
                {"off_ms", pulse.offMs},
                {"drawer", pulse.drawer}};
    }
    Json operator()(const StatusQuery& query) const
    {
        return {{"event", "status_query"}, {"kind", query.kind}, {"answer", Hex(query.answer)}};
    }
    Json operator()(const IdentityQuery& query) const
    {
        return {{"event", "identity_query"}, {"kind", query.kind}, {"answer", Hex(query.answer)}};
    }
    Json operator()(const RasterImage& image) const
    {
        return {{"event", "image"},
                {"x", image.x},
                {"width", image.width},
                {"height", image.height},
                {"declared_rows", image.declaredRows},
                {"complete", image.complete},
                {"clipped", image.clipped}};
    }
    Json operator()(const Barcode& barcode) const
    {
        Json json{{"event", "barcode"},
                  {"symbology", barcode.symbology},
                  {"data", barcode.data},
                  {"text", barcode.text},
                  {"text_position", barcode.textPosition},
                  {"height", barcode.height},
                  {"module_width", barcode.moduleWidth},
                  {"x", barcode.x},
                  {"width", barcode.width},
                  {"printed", barcode.printed}};
        if (!barcode.printed) {
            json["problem"] = barcode.problem;
        }
        return json;
    }
    Json operator()(const DisplayContent& content) const { return {{"event", "display"}, {"rows", content.rows}}; }
    Json operator()(const Initialised&) const { return {{"event", "initialised"}}; }
    Json operator()(const StartUp& startUp) const { return {{"event", "start_up"}, {"name", startUp.name}}; }
    Json operator()(const Cancelled& cancelled) const
    {
        return {{"event", "cancelled"},
                {"by", cancelled.byEnquiry ? "DLE ENQ 2" : "CAN"},
                {"discarded", cancelled.discarded}};
    }
    Json operator()(const Unknown& unknown) const
    {
        return {{"event", "unknown"}, {"bytes", Hex(unknown.bytes)}, {"why", unknown.why}};
    }
    Json operator()(const Overrun& overrun) const { return {{"event", "overrun"}, {"bytes", overrun.bytes}}; }
    Json operator()(const Connected&) const { return {{"event", "connected"}}; }
    Json operator()(const Disconnected& end) const
    {
        Json json{{"event", "disconnected"}};
        if (end.unread != 0) {
            json["unread"] = end.unread;
        }
        return json;
    }
    Json operator()(const PowerOff& off) const
    {
        return {{"event", "power_off"}, {"lost", off.lost}, {"from", off.from}, {"received", off.received}};
    }
    Json operator()(const PowerOn& on) const { return {{"event", "power_on"}, {"missed", on.missed}}; }
};

}  // namespace

std::string ToJson(const Happening& happening)
{
    // Barcode data may hold bytes that are not UTF-8.
    return std::visit(Writer{}, happening).dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace marbex::virtual_printer
