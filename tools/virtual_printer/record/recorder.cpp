#include "virtual_printer/record/recorder.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "virtual_printer/operator/json_report.h"
#include "virtual_printer/record/command_name.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kBytesShown = 48;     // of a command, in the journal
constexpr std::size_t kMostUnknown = 100;   // kinds of bytes not understood
constexpr std::size_t kLongestRun = 65536;  // bytes of characters or raster rows in one item

bool ComesInRuns(Op op)
{
    return op == Op::kCharacter || op == Op::kRasterRow;
}

// A command that brings something onto the paper belongs to what it brought; another one to what comes next.
bool EndsLine(Op op)
{
    switch (op) {
        case Op::kLineFeed:
        case Op::kRasterEnd:
        case Op::kBarcode:
        case Op::kMarkFeed:
        case Op::kFullCut:
        case Op::kPartialCut:
        case Op::kPresenter:
            return true;
        default:
            return false;
    }
}

std::string Text(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Recorder::Recorder(const Model& model, std::function<void()> onChange) : model_(model), onChange_(std::move(onChange))
{
    piece_.begun = WallClock::now();
    piece_.width = model.printableDots;
    surroundings_.display.assign(model.displayRows, std::string(20, ' '));
}

std::string Recorder::Happened(const VirtualPrinter& printer, const Happening& happening)
{
    std::string json = ToJson(happening);
    const auto add = [&json](const std::string& field) { json.insert(json.size() - 1, "," + field); };
    add("\"time\":\"" + TimeText(WallClock::now()) + "\"");
    {
        const std::lock_guard lock(mutex_);
        const Paper& paper = printer.GetPaper();
        if (const auto* line = std::get_if<TextLine>(&happening)) {
            CloseLine(paper, PieceLine::Kind::kText, line->text);
        } else if (const auto* image = std::get_if<RasterImage>(&happening)) {
            CloseLine(paper, PieceLine::Kind::kPicture,
                      "picture, " + std::to_string(image->width) + " x " + std::to_string(image->height));
        } else if (const auto* barcode = std::get_if<Barcode>(&happening)) {
            CloseLine(paper, PieceLine::Kind::kBarcode,
                      barcode->printed ? barcode->symbology + " " + barcode->text : "no bar code: " + barcode->problem);
        } else if (std::holds_alternative<MarkFeed>(happening)) {
            CloseLine(paper, PieceLine::Kind::kFeed, "");
        } else if (const auto* cut = std::get_if<Cut>(&happening)) {
            FlushRun();
            pendingEnd_ = cut->full ? "full" : "partial";
            add("\"piece\":" + std::to_string(piece_.number));
        } else if (std::holds_alternative<Torn>(happening)) {
            FlushRun();
            add("\"piece\":" + std::to_string(piece_.number));
            FinishPiece(paper, "torn");
        } else if (!std::holds_alternative<StatusQuery>(happening)) {
            FlushRun();
        }
        Note(happening);
        journal_.Append(Journal::Kind::kHappening, json);
    }
    if (onChange_) {
        onChange_();
    }
    return json;
}

void Recorder::Note(const Happening& happening)
{
    Surroundings& s = surroundings_;
    if (std::holds_alternative<TextLine>(happening)) {
        ++s.lines;
    } else if (std::holds_alternative<Torn>(happening)) {
        s.ticket.clear();
    } else if (std::holds_alternative<Cut>(happening)) {
        ++s.cuts;
        s.ticket = model_.presenter ? "held" : "";
    } else if (const auto* move = std::get_if<PresenterMove>(&happening)) {
        s.ticket = move->function == 3 ? "presented" : "";
    } else if (const auto* pulse = std::get_if<DrawerPulse>(&happening)) {
        ++s.pulses;
        s.drawerOpen = s.drawerOpen || pulse->drawer;
    } else if (const auto* display = std::get_if<DisplayContent>(&happening)) {
        s.display = display->rows;
    } else if (std::holds_alternative<Connected>(happening)) {
        s.connected = true;
    } else if (std::holds_alternative<Disconnected>(happening)) {
        s.connected = false;
    } else if (const auto* unknown = std::get_if<Unknown>(&happening)) {
        piece_.unknown = true;
        const std::string bytes = HexText(unknown->bytes, kBytesShown);
        if (s.unknown.size() < kMostUnknown || s.unknown.contains(bytes)) {
            auto& entry = s.unknown[bytes];
            entry.why = unknown->why;
            ++entry.times;
        }
    }
}

std::size_t Recorder::RowsOf(const Paper& paper) const
{
    return static_cast<std::size_t>(paper.Moved() - pieceFrom_);
}

void Recorder::TakeTicket()
{
    {
        const std::lock_guard lock(mutex_);
        surroundings_.ticket.clear();
    }
    if (onChange_) {
        onChange_();
    }
}

void Recorder::MoveDrawer(bool open)
{
    {
        const std::lock_guard lock(mutex_);
        surroundings_.drawerOpen = open;
    }
    if (onChange_) {
        onChange_();
    }
}

// What waits for the end of a line ends with it: the run belongs to it, and the rows since the last line are its.
void Recorder::CloseLine(const Paper& paper, PieceLine::Kind kind, std::string text)
{
    FlushRun();
    const std::size_t row = RowsOf(paper);
    PieceLine line{kind, std::move(text), lineFrom_, row - lineFrom_};
    lineFrom_ = row;
    piece_.rows = row;
    lineClosed_ = true;
    journal_.Append(Journal::Kind::kLine, Text(Json{{"event", "line"},
                                                    {"piece", piece_.number},
                                                    {"line", piece_.noLines + piece_.lines.size()},
                                                    {"kind", Name(kind)},
                                                    {"text", line.text},
                                                    {"y", line.y},
                                                    {"rows", line.rows}}));
    piece_.lines.push_back(std::move(line));
    const std::size_t forgotten = row - std::min(row, paper.Pages().back().rows);
    while (!piece_.lines.empty() && forgotten > 0 && piece_.lines.front().y + piece_.lines.front().rows <= forgotten) {
        piece_.lines.pop_front();
        ++piece_.noLines;
    }
}

void Recorder::Done(const VirtualPrinter& printer, const Command& command, std::string_view characters)
{
    {
        const std::lock_guard lock(mutex_);
        piece_.rows = RowsOf(printer.GetPaper());
        const std::size_t at = piece_.bytes.size();
        if (at == 0) {
            piece_.begun = WallClock::now();
        }
        if (at + command.bytes.size() <= Piece::kMostBytes) {
            piece_.bytes.insert(piece_.bytes.end(), command.bytes.begin(), command.bytes.end());
        } else {
            piece_.whole = false;
        }
        if (run_.count > 0 && (run_.op != command.op || run_.length >= kLongestRun)) {
            FlushRun();
        }
        if (ComesInRuns(command.op)) {
            if (run_.count == 0) {
                run_ = {command.op, at, 0, 0, {}};
            }
            ++run_.count;
            run_.length += command.bytes.size();
            run_.characters += characters;
        } else {
            const std::size_t next = piece_.noLines + piece_.lines.size();
            const bool closed = lineClosed_ && EndsLine(command.op);
            AddCommand(command.op, at, command.bytes.size(), closed ? next - 1 : next, characters);
        }
        lineClosed_ = false;
        if (!pendingEnd_.empty()) {
            FinishPiece(printer.GetPaper(), std::exchange(pendingEnd_, {}));
        }
    }
    if (onChange_) {
        onChange_();
    }
}

void Recorder::FlushRun()
{
    const Run run = std::exchange(run_, {});
    if (run.count > 0) {
        AddCommand(run.op, run.at, run.length, piece_.noLines + piece_.lines.size(), run.characters);
    }
}

void Recorder::AddCommand(Op op, std::size_t at, std::size_t length, std::size_t line, std::string_view characters)
{
    if (at + length > piece_.bytes.size()) {
        return;  // its bytes were too much to keep
    }
    const auto bytes = std::span(piece_.bytes).subspan(at, length);
    const CommandName name = NameOf(op, bytes);
    Json json{{"event", "executed"},    {"name", name.code},
              {"means", name.meaning},  {"at", at},
              {"length", length},       {"bytes", HexText(bytes, kBytesShown)},
              {"piece", piece_.number}, {"line", line}};
    if (!characters.empty()) {
        json["text"] = characters;
    }
    journal_.Append(Journal::Kind::kCommand, Text(json));
    if (piece_.commands.size() < Piece::kMostCommands) {
        piece_.commands.push_back({op, at, length, line, std::string(characters)});
    } else {
        piece_.whole = false;
    }
}

// paper: already at its next page.
void Recorder::FinishPiece(const Paper& paper, std::string end)
{
    const std::size_t pages = paper.Pages().size();
    piece_.finished = true;
    piece_.end = std::move(end);
    piece_.ended = WallClock::now();
    if (pages >= 2) {
        piece_.page = paper.Pages()[pages - 2];
    }
    pieceFrom_ = paper.Moved();
    Piece next;
    next.number = piece_.number + 1;
    next.begun = piece_.ended;
    next.width = piece_.width;
    pieceBytes_ += piece_.Size();
    pieces_.push_back(std::make_shared<const Piece>(std::exchange(piece_, std::move(next))));
    lineFrom_ = 0;
    while (pieces_.size() > 1 && (pieces_.size() > kMostPieces || pieceBytes_ > kMostPieceBytes)) {
        pieceBytes_ -= pieces_.front()->Size();
        pieces_.pop_front();
    }
}

uint64_t Recorder::NextItem() const
{
    const std::lock_guard lock(mutex_);
    return journal_.Next();
}

uint64_t Recorder::FirstItem() const
{
    const std::lock_guard lock(mutex_);
    return journal_.First();
}

std::vector<Journal::Item> Recorder::Items(uint64_t from) const
{
    const std::lock_guard lock(mutex_);
    return journal_.From(from);
}

Surroundings Recorder::Look() const
{
    const std::lock_guard lock(mutex_);
    return surroundings_;
}

std::vector<std::shared_ptr<const Piece>> Recorder::Pieces() const
{
    const std::lock_guard lock(mutex_);
    return {pieces_.begin(), pieces_.end()};
}

std::shared_ptr<const Piece> Recorder::Find(std::size_t number) const
{
    const std::lock_guard lock(mutex_);
    for (const auto& piece : pieces_) {
        if (piece->number == number) {
            return piece;
        }
    }
    return nullptr;
}

Piece Recorder::Unfinished(const Paper& paper, bool withDots) const
{
    const std::lock_guard lock(mutex_);
    Piece piece = piece_;
    if (withDots) {
        piece.page = paper.Pages().back();
    }
    piece.width = paper.Width();
    piece.rows = RowsOf(paper);
    return piece;
}

std::pair<std::size_t, std::size_t> Recorder::UnfinishedSize() const
{
    const std::lock_guard lock(mutex_);
    return {piece_.number, piece_.rows};
}

}  // namespace marbex::virtual_printer
