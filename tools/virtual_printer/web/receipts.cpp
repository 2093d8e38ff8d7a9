#include "virtual_printer/web/receipts.h"

#include <algorithm>
#include <charconv>

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostRows = 4096;  // of dots in one answer

std::string Text(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::size_t> Number(std::string_view text)
{
    std::size_t number = 0;
    const auto end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

std::size_t NumberOr(const Request& request, const char* name, std::size_t otherwise)
{
    const auto found = request.query.find(name);
    return found == request.query.end() ? otherwise : Number(found->second).value_or(otherwise);
}

Json Entry(const Piece& piece)
{
    Json json{{"number", piece.number}, {"begun", TimeText(piece.begun)}};
    if (piece.finished) {
        json["ended"] = TimeText(piece.ended);
        json["end"] = piece.end;
    }
    json["rows"] = piece.rows;
    json["width"] = piece.width;
    json["lines"] = piece.noLines + piece.lines.size();
    json["bytes"] = piece.bytes.size();
    json["unknown"] = piece.unknown;
    // What it is known by in a list.
    for (const PieceLine& line : piece.lines) {
        const bool blank = line.text.find_first_not_of(' ') == std::string::npos;
        if (line.kind == PieceLine::Kind::kText && !blank) {
            json["title"] = line.text;
            break;
        }
    }
    return json;
}

std::shared_ptr<const Piece> Unfinished(const Station& station, bool withDots)
{
    std::shared_ptr<const Piece> piece;
    station.server.With([&](VirtualPrinter& printer) {
        piece = std::make_shared<const Piece>(station.recorder.Unfinished(printer.GetPaper(), withDots));
    });
    return piece;
}

std::shared_ptr<const Piece> FindPiece(const Station& station, std::string_view name, bool withDots)
{
    if (name == "last") {
        const auto pieces = station.recorder.Pieces();
        return pieces.empty() ? nullptr : pieces.back();
    }
    const auto number = Number(name);
    if (name == "current" || number == station.recorder.UnfinishedSize().first) {
        return Unfinished(station, withDots);
    }
    return number ? station.recorder.Find(*number) : nullptr;
}

// The rows asked for, of those that are kept. allRows: of the piece, from its beginning.
Response Dots(const Paper::Page& page, int width, std::size_t allRows, const Request& request)
{
    const std::size_t stride = (static_cast<std::size_t>(width) + 7) / 8;
    const std::size_t forgotten = allRows - std::min(allRows, page.rows);
    const std::size_t from = std::clamp(NumberOr(request, "from", forgotten), forgotten, allRows);
    const std::size_t count = std::min({NumberOr(request, "rows", kMostRows), kMostRows, allRows - from});
    const auto begin = page.bits.begin() + static_cast<std::ptrdiff_t>((from - forgotten) * stride);
    Response response{200, "application/octet-stream", {}, {}};
    response.body.assign(begin, begin + static_cast<std::ptrdiff_t>(count * stride));
    response.headers = {{"X-From", std::to_string(from)},
                        {"X-Rows", std::to_string(count)},
                        {"X-All-Rows", std::to_string(allRows)},
                        {"X-Stride", std::to_string(stride)}};
    return response;
}

// Of a piece that grows only what is asked for is copied.
Response Dots(const Station& station, std::string_view name, const Request& request)
{
    std::optional<Response> response;
    station.server.With([&](VirtualPrinter& printer) {
        const auto [number, rows] = station.recorder.UnfinishedSize();
        if (name == "current" || Number(name) == number) {
            const Paper& paper = printer.GetPaper();
            response = Dots(paper.Pages().back(), paper.Width(), std::max(rows, paper.Pages().back().rows), request);
        }
    });
    if (response) {
        return *response;
    }
    const auto piece = FindPiece(station, name, false);
    return piece ? Dots(piece->page, piece->width, piece->rows, request) : Problem(404, "no such receipt");
}

}  // namespace

Response ReceiptList(const Station& station)
{
    Json json{{"printer", station.number}, {"receipts", Json::array()}};
    for (const auto& piece : station.recorder.Pieces()) {
        json["receipts"].push_back(Entry(*piece));
    }
    json["current"] = Entry(*Unfinished(station, false));
    return {200, "application/json", Text(json), {}};
}

Response Receipt(const Station& station, const std::string& name, const Request& request)
{
    const std::size_t dot = std::min(name.find('.'), name.size());
    const std::string form = name.substr(std::min(dot + 1, name.size()));
    if (form == "dots") {
        return Dots(station, std::string_view(name).substr(0, dot), request);
    }
    const auto piece = FindPiece(station, std::string_view(name).substr(0, dot), form == "png");
    if (piece == nullptr) {
        return Problem(404, "no receipt " + name.substr(0, dot) + "; it may have been forgotten");
    }
    const auto named = [&piece, &form, &station](const char* type, std::string body) {
        // The name under which a browser saves it.
        const std::string file =
            "printer-" + std::to_string(station.number) + "-receipt-" + std::to_string(piece->number) + "." + form;
        return Response{200, type, std::move(body), {{"Content-Disposition", "inline; filename=\"" + file + "\""}}};
    };
    if (form == "png") {
        return named("image/png", PagePicture(piece->page, piece->width));
    }
    if (form == "txt") {
        return named("text/plain; charset=utf-8", piece->Text());
    }
    if (form == "json" || form.empty()) {
        return named("application/json", piece->Json());
    }
    if (form == "bin") {
        return named("application/octet-stream", {piece->bytes.begin(), piece->bytes.end()});
    }
    return Problem(404, "a receipt is there as .png, .txt, .json and .bin");
}

}  // namespace marbex::virtual_printer
