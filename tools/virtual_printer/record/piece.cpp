#include "virtual_printer/record/piece.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "virtual_printer/record/command_name.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

}  // namespace

std::string_view Name(PieceLine::Kind kind)
{
    switch (kind) {
        case PieceLine::Kind::kPicture:
            return "picture";
        case PieceLine::Kind::kBarcode:
            return "barcode";
        case PieceLine::Kind::kFeed:
            return "feed";
        case PieceLine::Kind::kText:
            break;
    }
    return "text";
}

std::string Piece::Text() const
{
    std::string text;
    for (const PieceLine& line : lines) {
        if (line.kind == PieceLine::Kind::kPicture || line.kind == PieceLine::Kind::kBarcode) {
            text += "[" + line.text + "]\n";
        } else if (line.kind == PieceLine::Kind::kText) {
            text += line.text + "\n";
        }
    }
    return text;
}

std::string Piece::Json() const
{
    virtual_printer::Json json{{"number", number}, {"begun", TimeText(begun)}};
    if (finished) {
        json["ended"] = TimeText(ended);
        json["end"] = end;
    }
    json["width"] = width;
    json["rows"] = rows;
    json["bytes"] = bytes.size();
    json["whole"] = whole;
    json["lines"] = virtual_printer::Json::array();
    for (const PieceLine& line : lines) {
        json["lines"].push_back({{"line", noLines + json["lines"].size()},
                                 {"kind", Name(line.kind)},
                                 {"text", line.text},
                                 {"y", line.y},
                                 {"rows", line.rows}});
    }
    json["commands"] = virtual_printer::Json::array();
    for (const PieceCommand& command : commands) {
        const auto part = std::span(bytes).subspan(command.at, command.length);
        const CommandName name = NameOf(command.op, part);
        json["commands"].push_back({{"name", name.code},
                                    {"means", name.meaning},
                                    {"at", command.at},
                                    {"length", command.length},
                                    {"bytes", HexText(part, 64)},
                                    {"line", command.line}});
        if (!command.text.empty()) {
            json["commands"].back()["text"] = command.text;
        }
    }
    return json.dump(-1, ' ', false, virtual_printer::Json::error_handler_t::replace);
}

std::string TimeText(WallClock::time_point time)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(time - day));
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    return text.data();
}

std::string HexText(std::span<const uint8_t> bytes, std::size_t most)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t byte : bytes.first(std::min(most, bytes.size()))) {
        if (!text.empty()) {
            text.push_back(' ');
        }
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0x0F]);
    }
    return bytes.size() > most ? text + " …" : text;
}

}  // namespace marbex::virtual_printer
