// What passes between the driver and a printer: what is sent for each command, how answers are taken in whatever
// pieces they come, how long they are waited for.

#include <gtest/gtest.h>

#include "common/story.h"
#include "common/wire_text.h"
#include "opos/printer.h"
#include "printer/print_end_wait.h"
#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"
#include "support/printer_tables.h"

namespace marbex::printer {
namespace {

using test::FromWireText;
using test::WireText;

const std::map<std::string, CutCommand> kCuts{{"fullAt100ElsePartial", CutCommand::kFullAt100ElsePartial},
                                              {"full", CutCommand::kFull},
                                              {"fullWithPresenter", CutCommand::kFullWithPresenter},
                                              {"presenterAt100ElsePartial", CutCommand::kPresenterAt100ElsePartial},
                                              {"partialAt50ElseFull", CutCommand::kPartialAt50ElseFull},
                                              {"twoLineFeeds", CutCommand::kTwoLineFeeds}};
const std::map<std::string, StatusVariant> kStatuses{{"reference", StatusVariant::kReference},
                                                     {"cleansOutput", StatusVariant::kReferenceCleansOutput},
                                                     {"noDrawer", StatusVariant::kNoDrawerFlag},
                                                     {"brisaHd", StatusVariant::kBrisaHd}};

// What is written is the trace of the port and of the clock. Bytes that cannot be printed stand as <10>.
class Conversation : public tests::StoryTeller {
protected:
    Conversation()
    {
        port.SetTimeouts(5000, 3000);
        switches = {{"portOpen", &port.open},
                    {"opens", &port.opens},
                    {"opensSecond", &port.opensSecondary},
                    {"afterCut", &traits.afterCutSequence},
                    {"errorBit", &traits.queriesErrorBit},
                    {"waitsForBitmaps", &traits.waitsForBitmapEnd},
                    {"asksMechanism", &traits.asksWideMechanism},
                    {"extendedAtOnce", &traits.identity.extendedAtOnce},
                    {"extendedAfterFF", &traits.identity.extendedAfterFF},
                    {"firstMustBeFF", &traits.identity.firstAnswerMustBeFF},
                    {"wholeSeconds", &traits.identity.wholeSeconds}};
        DescribeTheModel();
        SetTheScene();
        Converse();
        encoder->AttachPort(&port);
    }

    void DescribeTheModel()
    {
        // Those that a printer keeps from its beginning are followed by "printer".
        verbs["printer"] = [this](const Words&) {
            encoder = std::make_unique<CPrinterEncoder>(traits, clock);
            encoder->AttachPort(&port);
            port.open = true;
            Forget();
            return "";
        };
        verbs["cutter"] = [this](const Words& w) { return traits.cut = kCuts.at(w[0]), ""; };
        verbs["presenter"] = [this](const Words& w) { return Keep(w[0], traits.presenter); };
        verbs["startUp"] = [this](const Words& w) { return Keep(w[0], traits.startUpBytes); };
        verbs["statusKind"] = [this](const Words& w) { return traits.status = kStatuses.at(w[0]), ""; };
        verbs["recovers"] = [this](const Words& w) {
            traits.recovery = w[0] == "can" ? Recovery::kCan : Recovery::kDleEnq2;
            return "";
        };
        verbs["second"] = [this](const Words& w) { return traits.secondaryComPort = Number(w[0]), ""; };
        verbs["width"] = [this](const Words& w) {
            traits.rasterWidth = static_cast<uint16_t>(Number(w[0]));
            return "";
        };
        verbs["accepts"] = [this](const Words& w) {
            accepted.clear();
            for (const std::string& word : w)
                accepted.push_back(static_cast<uint16_t>(std::stoul(word, nullptr, 16)));
            traits.identity.accepted = accepted;
            return "";
        };
    }

    void SetTheScene()
    {
        // The question, and the pieces of its answer: "." for one of no bytes, "-" for a failed read.
        verbs["answer"] = [this](const Words& w) {
            port.Answer(FromWireText(w[0]), Pieces({w.begin() + 1, w.end()}));
            return "";
        };
        verbs["came"] = [this](const Words& w) { return port.pieces = Pieces(w), ""; };
        verbs["noAnswers"] = [this](const Words&) { return port.ForgetAnswers(), ""; };
        // The next but so many.
        verbs["writeFails"] = [this](const Words& w) { return port.FailWrite(w.empty() ? 0 : Number(w[0])), ""; };
        verbs["readTakes"] = [this](const Words& w) {
            port.onRead = [this, ms = Number(w[0])] { clock.now += ms; };
            return "";
        };
        verbs["readStops"] = [this](const Words&) { return port.onRead = [this] { stop = true; }, ""; };
        verbs["readReopens"] = [this](const Words&) { return port.onRead = [this] { ++port.openings; }, ""; };
        verbs["reopened"] = [this](const Words&) { return ++port.openings, ""; };
        verbs["baud"] = [this](const Words& w) { return port.baudRate = Number(w[0]), ""; };
        verbs["itIs"] = [this](const Words& w) { return since = clock.now = Number(w[0]), ""; };
        verbs["stopped"] = [this](const Words& w) {
            stop = w[0] == "on";
            encoder->RequestStop(stop);
            return "";
        };
    }

    void Converse()
    {
        verbs["open"] = [this](const Words&) { return Code(encoder->Open()); };
        verbs["detach"] = [this](const Words&) { return encoder->DetachPort(), ""; };
        verbs["isOpen"] = [this](const Words&) { return YesNo(encoder->IsOpen()); };
        verbs["print"] = [this](const Words& w) { return Code(encoder->PrintText(FromWireText(w[0]))); };
        verbs["printLong"] = [this](const Words& w) {
            return Code(encoder->PrintText(std::string(support::kNulMarker) + std::string(Number(w[0]), 'x')));
        };
        verbs["cut"] = [this](const Words& w) { return Code(encoder->CutPaper(static_cast<int32_t>(Number(w[0])))); };
        verbs["noCut"] = [this](const Words&) { return encoder->ClearCutSent(), ""; };
        verbs["barcode"] = [this](const Words& w) { return Code(encoder->PrintBarcode(Barcode(w))); };
        // Width, height, gray; rotation (1, 257, 258, 259), alignment (-1 left, -2 centre, -3 right, dots).
        verbs["picture"] = [this](const Words& w) {
            const uint32_t width = Number(w[0]), height = Number(w[1]);
            const std::size_t dots = std::size_t{width} * height;
            BitmapDataStruct bitmap{width, height, w.size() > 4 ? std::stoi(w[4]) : opos::PTR_BM_LEFT,
                                    w.size() > 3 ? std::stoi(w[3]) : opos::PTR_RP_NORMAL,
                                    std::make_unique<uint8_t[]>(dots)};
            std::fill_n(bitmap.pixels.get(), dots, static_cast<uint8_t>(Number(w[2])));
            return Code(encoder->PrintBitmap(bitmap));
        };
        verbs["direct"] = [this](const Words& w) { return Code(encoder->SendDirect(Direct(w))); };
        verbs["directSecond"] = [this](const Words& w) { return Code(encoder->SendDirectSecondary(Direct(w))); };
        verbs["recover"] = [this](const Words&) { return Code(encoder->RecoverFromError()); };
        verbs["initialise"] = [this](const Words&) { return encoder->InitialiseAtOpen(), ""; };
        verbs["clean"] = [this](const Words& w) {
            return w[0] == "input" ? encoder->CleanInput() : encoder->CleanOutput(), "";
        };
        verbs["isIt"] = [this](const Words&) {
            const bool accepts = encoder->CheckPrinter();
            port.ForgetAnswers();
            return YesNo(accepts);
        };
        verbs["status"] = [this](const Words&) { return Status(); };
        verbs["flags"] = [this](const Words& w) { return FlagsOfEveryKind(w); };
        verbs["printEnd"] = [this](const Words&) { return Code(WaitForPrintEnd(PrinterLink(&port), clock, stop)); };
        verbs["begin"] = [this](const Words&) { return encoder->BeginOutput(), ""; };
        // "all": whatever has been sent over this link.
        verbs["confirm"] = [this](const Words& w) {
            PrinterStatus status;
            const bool confirmed =
                encoder->ConfirmReceipt(w.empty() ? encoder->OutputBegin() : OutputMark{port.openings, 0}, status);
            return YesNo(confirmed) + Flags(status);
        };
        verbs["failed"] = [this](const Words&) { return YesNo(encoder->IsInError()); };
        verbs["took"] = [this](const Words&) {
            return Code(static_cast<int32_t>(clock.now - std::exchange(since, clock.now)));
        };
        verbs["sizes"] = [this](const Words&) {
            std::vector<std::size_t> sizes;
            for (const std::string& line : std::exchange(trace, {}))
                sizes.push_back(line.size());
            return tests::Joined(sizes);
        };
    }

    static std::string Code(int32_t code) { return std::to_string(code); }
    static std::string YesNo(bool yes) { return yes ? "yes" : "no"; }

    std::string Keep(const std::string& word, std::string_view& where)
    {
        kept.push_back(FromWireText(word));
        where = kept.back();
        return "";
    }

    static std::deque<test::ScriptedPort::Piece> Pieces(const Words& words)
    {
        std::deque<test::ScriptedPort::Piece> pieces;
        for (const std::string& word : words) {
            if (word == "-") {
                pieces.emplace_back(std::nullopt);
            } else {
                pieces.emplace_back(word == "." ? "" : FromWireText(word));
            }
        }
        return pieces;
    }

    // Symbology, data, height, alignment, place of the text.
    static BarcodeDataStruct Barcode(const Words& words)
    {
        BarcodeDataStruct barcode{};
        std::ranges::copy(words[1], barcode.data);
        barcode.dataLength = static_cast<uint32_t>(words[1].size());
        barcode.symbology = std::stoi(words[0]);
        barcode.height = std::stoi(words[2]);
        barcode.moduleWidth = 2;
        barcode.alignment = std::stoi(words[3]);
        barcode.textPosition = std::stoi(words[4]);
        return barcode;
    }

    static DirectIODataStruct Direct(const Words& words)
    {
        const std::string bytes = words.empty() ? "" : FromWireText(words[0]);
        DirectIODataStruct direct{};
        direct.count = static_cast<uint32_t>(bytes.size());
        std::ranges::copy(bytes, direct.data);
        return direct;
    }

    static std::string Flags(const PrinterStatus& status)
    {
        std::string set;
        for (std::size_t i = 0; i < status.flags.size(); ++i) {
            if (status.flags[i] != 0) set += " " + std::to_string(i);
        }
        return set;
    }

    std::string Status()
    {
        PrinterStatus status;
        status.flags.fill(9);
        uint32_t full = 0;
        const int32_t result = encoder->GetStatus(status, false, &full);
        std::ostringstream text;
        text << result << Flags(status) << " full " << std::hex << full;
        return text.str();
    }

    // Of the four bytes of the full status and the one of the printer: of the reference, of a model without a drawer's
    // flag, and of the BRISA-HD.
    std::string FlagsOfEveryKind(const Words& bytes)
    {
        std::string all;
        for (const char* kind : {"reference", "cleansOutput", "noDrawer", "brisaHd"}) {
            traits.status = kStatuses.at(kind);
            verbs["printer"]({});
            port.Answer("\x10\x04\x14", {FromWireText("<10><0f><" + bytes[0] + "><" + bytes[1] + "><" + bytes[2] +
                                                      "><" + bytes[3] + ">")});
            port.Answer("\x10\x04\x01", {FromWireText("<" + bytes[4] + ">")});
            const std::string status = Status();
            const std::string flags = status.substr(1, status.find(" full") - 1);
            EXPECT_EQ(status[0], '0');
            if (kind == std::string("cleansOutput")) {
                EXPECT_EQ(all, flags);
            } else {
                all += (all.empty() ? "" : ",") + flags;
            }
            EXPECT_EQ(encoder->IsInError(), flags.ends_with(" 11")) << "a jam is a failure of one that answers";
        }
        return all.substr(1);
    }

    Words Written() const override
    {
        Words lines;
        for (const std::string& line : trace)
            lines.push_back(WireText(line));
        return lines;
    }
    void Forget() override { trace.clear(); }

    test::Trace trace;
    test::ScriptedClock clock{&trace};
    test::ScriptedPort port{trace};
    EncoderTraits traits;
    std::vector<uint16_t> accepted;
    std::deque<std::string> kept;
    std::atomic<bool> stop{false};
    uint64_t since = clock.now;
    std::unique_ptr<CPrinterEncoder> encoder = std::make_unique<CPrinterEncoder>(traits, clock);
};

const std::vector<tests::TextCase> kCases = tests::TextCasesIn(
#include "printer/conversation.txt"
);

TEST_P(Conversation, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Printer, Conversation, testing::ValuesIn(kCases), tests::StoryName);

}  // namespace
}  // namespace marbex::printer
