// What is remembered of a printer: which bytes made which line, the pieces, and that memory is bounded.

#include "virtual_printer/record/recorder.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "bytes.h"
#include "virtual_printer/record/command_name.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::json;

struct Recorded {
    explicit Recorded(std::string_view model = "TALIS") : printer(model), recorder(printer.GetModel())
    {
        printer.Observe([this](const VirtualPrinter& p, const Happening& h) { recorder.Happened(p, h); });
        printer.Watch(
            [this](const VirtualPrinter& p, const Command& c, std::string_view text) { recorder.Done(p, c, text); });
    }
    std::vector<Json> Items(const std::string& event)
    {
        std::vector<Json> found;
        for (const Journal::Item& item : recorder.Items(1)) {
            const Json json = Json::parse(item.json);
            if (json["event"] == event) {
                found.push_back(json);
            }
        }
        return found;
    }
    VirtualPrinter printer;
    Recorder recorder;
};

// "0 text prezzo é; 0 LF; 1 ESC ! 8; ..." : the line of the paper that each command belongs to.
std::string Story(const Piece& piece)
{
    std::string story;
    const Json json = Json::parse(piece.Json());
    for (const Json& command : json["commands"]) {
        story += std::to_string(command["line"].get<int>()) + " " + command["name"].get<std::string>() + "; ";
    }
    return story;
}

TEST(Recorder, TellsWhichBytesMadeWhichLine)
{
    Recorded r;
    const std::string bytes = Joined({"\x1B!\x08prezzo \x82\n", "\x1B&l2P\x1B*b1W\xFF\x1B*b1W\xFF\x1B*rB",
                                      "\x1DkE\x05"
                                      "AB-12",
                                      "unfinished\x1Bi"});
    r.printer.Feed(bytes);
    const auto piece = r.recorder.Find(1);
    ASSERT_NE(piece, nullptr);
    EXPECT_EQ(Story(*piece),
              "0 ESC ! 8; 0 text; 0 LF; 1 ESC & l P; 1 ESC * b W; 1 ESC * r B; 2 GS k 69; 3 text; 3 ESC i; ");
    EXPECT_EQ(std::string(piece->bytes.begin(), piece->bytes.end()), bytes);
    EXPECT_EQ(piece->Text(), "prezzo é\n[picture, 8 x 2]\n[CODE 39 *AB-12*]\nunfinished\n");
    // The lines lie one under the other and fill the piece.
    std::size_t y = 0;
    for (const PieceLine& line : piece->lines) {
        EXPECT_EQ(line.y, y);
        y += line.rows;
    }
    EXPECT_EQ(y, piece->rows);
    EXPECT_EQ(piece->page.rows, piece->rows);
    EXPECT_EQ(piece->end, "full");

    const std::vector<Json> commands = r.Items("executed");
    EXPECT_EQ(commands[0]["means"], "print mode: bold");
    EXPECT_EQ(commands[1]["text"], "prezzo é");
    EXPECT_EQ(commands[1]["bytes"], "70 72 65 7A 7A 6F 20 82");
    EXPECT_EQ(commands[4]["bytes"], "1B 2A 62 31 57 FF 1B 2A 62 31 57 FF");
    EXPECT_EQ(commands[6]["means"], "bar code: CODE 39 \"AB-12\"");
    EXPECT_EQ(r.recorder.UnfinishedSize(), std::make_pair(std::size_t{2}, std::size_t{0}));
}

TEST(Recorder, ALineThatWrapsAndOneThatIsThrownAwayKeepTheirBytes)
{
    Recorded r("NESTO");  // 32 characters wide
    r.printer.Feed(std::string(40, 'x') + "\ngone\x18");
    const Piece piece = r.recorder.Unfinished(r.printer.GetPaper(), true);
    EXPECT_EQ(Story(piece), "0 text; 1 text; 1 LF; 2 text; 2 CAN; ");
    EXPECT_EQ(piece.commands[0].length, 32U);
    EXPECT_EQ(piece.lines.size(), 2U);
}

TEST(Recorder, SeesWhatIsAroundThePaper)
{
    Recorded r("VELA PC");
    r.printer.Feed(
        Z("\x1B\xB2"
          "DTOTAL 1,20\x1B\xB2P\x1Bp0\x19\x19\x07\x07"));
    Surroundings s = r.recorder.Look();
    EXPECT_EQ(s.display[0], "TOTAL 1,20          ");
    EXPECT_TRUE(s.drawerOpen);
    EXPECT_EQ(s.unknown["07"].times, 2U);
    EXPECT_EQ(r.Items("executed")[1]["text"], "TOTAL 1,20");
    r.recorder.MoveDrawer(false);
    EXPECT_FALSE(r.recorder.Look().drawerOpen);
}

TEST(Recorder, ForgetsTheOldestWithoutLosingItsPlace)
{
    Recorded r;
    for (int i = 0; i < 250; ++i) {
        r.printer.Feed("piece\n\x1Bi");
    }
    EXPECT_EQ(r.recorder.Pieces().size(), Recorder::kMostPieces);
    EXPECT_EQ(r.recorder.Pieces().back()->number, 250U);
    EXPECT_EQ(r.recorder.Find(1), nullptr);
    for (int i = 0; i < 15000; ++i) {
        r.printer.Feed("one long roll\n");
    }
    const Piece piece = r.recorder.Unfinished(r.printer.GetPaper(), true);
    EXPECT_EQ(piece.rows, 15000U * 32);
    EXPECT_LE(piece.page.rows, Paper::kMaxRows);
    EXPECT_LE(piece.rows - piece.page.rows, piece.lines.front().y + piece.lines.front().rows);
    EXPECT_EQ(piece.noLines + piece.lines.size(), 15000U);
    EXPECT_LE(r.recorder.NextItem() - r.recorder.FirstItem(), Journal::kMostItems);
    const auto items = r.recorder.Items(1);
    EXPECT_EQ(items.front().number, r.recorder.FirstItem());
    EXPECT_EQ(r.recorder.Items(r.recorder.NextItem()).size(), 0U);
}

TEST(Recorder, NamesEveryCommand)
{
    struct Case {
        Op op;
        std::string_view bytes;
        std::string code;
        std::string meaning;
    };
    for (const Case& c : {Case{Op::kScale, "\x1D!\x11", "GS ! 17", "character size: 2 wide, 2 high"},
                          Case{Op::kPosition, Z("\x1B$\x64\0"), "ESC $ 100 0", "position: 100 dots"},
                          Case{Op::kPresenter,
                               "\x1D"
                               "e\x03\x0A",
                               "GS e 3 10", "presenter: 10 steps out"},
                          Case{Op::kDrawer, "\x1Bp\x30\x19\xFA", "ESC p 48 25 250", "drawer: 50 ms on, 500 ms off"},
                          Case{Op::kRasterRows, "\x1B&l240P", "ESC & l P", "picture: 240 rows"},
                          Case{Op::kAlign,
                               "\x1B"
                               "a\x07",
                               "ESC a 7", "alignment: 7"},
                          Case{Op::kStartUp, "\x1C<EPOS>", "FS <", "start-up: EPOS"},
                          Case{Op::kUnknown, "\x07", "?", "not understood"}}) {
        const CommandName name =
            NameOf(c.op, std::span(reinterpret_cast<const uint8_t*>(c.bytes.data()), c.bytes.size()));
        EXPECT_EQ(name.code, c.code);
        EXPECT_EQ(name.meaning, c.meaning);
    }
}

}  // namespace
}  // namespace marbex::virtual_printer
