#include "printer/printer_encoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "opos/printer.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedClock;
using test::ScriptedPort;
using test::Trace;

constexpr const char* kCleanInput = "clean input";
constexpr const char* kCleanOutput = "clean output";

class EncoderTest : public testing::Test {
protected:
    CPrinterEncoder& Encoder()
    {
        if (!encoder_) {
            encoder_ = std::make_unique<CPrinterEncoder>(traits, clock);
            encoder_->AttachPort(&port);
        }
        return *encoder_;
    }

    Trace TakeTrace() { return std::exchange(trace, {}); }

    Trace trace;
    ScriptedClock clock{&trace};
    ScriptedPort port{trace};
    EncoderTraits traits;

private:
    std::unique_ptr<CPrinterEncoder> encoder_;
};

TEST_F(EncoderTest, TextMarkersBecomeZerosInOnePassFromTheLeft)
{
    const struct {
        std::string text, sent;
    } rows[] = {
        {"plain", "plain"},
        {"MaRkEr00NuLl", "\0"s},
        {"\x1B"
         "aMaRkEr00NuLlMaRkEr00NuLlX",
         "\x1B"
         "a\0\0X"s},
        {"MaRkEr00NuMaRkEr00NuLlLl", "MaRkEr00Nu\0Ll"s},  // what a replacement leaves is no new marker
        {"MMaRkEr00NuLlMaRkEr00NuL", "M\0MaRkEr00NuL"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Encoder().PrintText(row.text), kEncoderOk);
        EXPECT_EQ(TakeTrace(), Trace{"write " + row.sent});
    }
}

TEST_F(EncoderTest, LongTextGoesOutWholeInSeveralWrites)
{
    const std::string text = "MaRkEr00NuLl" + std::string(1'100'000, 'x');
    EXPECT_EQ(Encoder().PrintText(text), kEncoderOk);
    const Trace expected{"write \0"s + std::string(511'999, 'x'), "write " + std::string(512'000, 'x'),
                         "write " + std::string(76'001, 'x')};
    EXPECT_TRUE(trace == expected);

    // A failure in the middle is a failure of the text.
    TakeTrace();
    port.failingWrite = 4;
    EXPECT_EQ(Encoder().PrintText(text), kEncoderTextNotSent);
    EXPECT_EQ(trace.size(), 3u);  // two writes and the pause
}

TEST_F(EncoderTest, FailedTextSetsTheFlagAndLaterTextIsNotTried)
{
    port.failingWrite = 0;
    EXPECT_EQ(Encoder().PrintText("a"), kEncoderTextNotSent);
    EXPECT_EQ(TakeTrace(), (Trace{"write a", "sleep 500"}));
    EXPECT_TRUE(Encoder().IsInError());
    EXPECT_EQ(Encoder().PrintText("b"), kEncoderTextNotSent);
    EXPECT_EQ(TakeTrace(), Trace{"sleep 500"});

    // Other jobs are tried all the same, and a port that is gone has a code of its own.
    EXPECT_EQ(Encoder().CutPaper(100), kEncoderOk);
    port.failingWrite = 2;
    EXPECT_EQ(Encoder().CutPaper(100), kEncoderPortFailed);
    port.open = false;
    EXPECT_EQ(Encoder().CutPaper(100), kEncoderPortNotOpen);
    EXPECT_EQ(Encoder().SendDirect({1, {7}}), kEncoderPortNotOpen);
}

TEST_F(EncoderTest, CutsOfTheFamily)
{
    constexpr std::string_view kPresent = "\x1D\x65\x03\x0A";
    const Trace full{"write \x1Bi"}, partial{"write \x1Bm"}, feeds{"write \n\n"};
    const Trace presented{"write \x1Bi", "sleep 500", "write " + std::string(kPresent)};
    const struct {
        CutCommand cut;
        Trace at100, at99, at50, at0;
    } rows[] = {
        {CutCommand::kFullAt100ElsePartial, full, partial, partial, partial},
        {CutCommand::kFull, full, full, full, full},
        {CutCommand::kFullWithPresenter, presented, presented, presented, presented},
        {CutCommand::kPresenterAt100ElsePartial, presented, partial, partial, partial},
        {CutCommand::kPartialAt50ElseFull, full, full, partial, full},
        {CutCommand::kTwoLineFeeds, feeds, feeds, feeds, feeds},
    };
    for (const auto& row : rows) {
        traits.cut = row.cut;
        traits.presenter = kPresent;
        const std::pair<int, const Trace*> cuts[] = {
            {100, &row.at100}, {99, &row.at99}, {50, &row.at50}, {0, &row.at0}};
        for (const auto& [percentage, expected] : cuts) {
            EXPECT_EQ(Encoder().CutPaper(percentage), kEncoderOk);
            EXPECT_EQ(TakeTrace(), *expected) << "cut " << static_cast<int>(row.cut) << " at " << percentage;
        }
    }
}

TEST_F(EncoderTest, PresenterIsNotToldOfACutThatWasNotSent)
{
    traits.cut = CutCommand::kFullWithPresenter;
    traits.presenter = "\x1D\x65\x03\x03";
    port.failingWrite = 0;
    EXPECT_EQ(Encoder().CutPaper(100), kEncoderPortFailed);
    EXPECT_EQ(trace, Trace{"write \x1Bi"});
}

TEST_F(EncoderTest, AfterCutSequenceGoesBeforeTheNextTextOnce)
{
    traits.cut = CutCommand::kFull;
    traits.afterCutSequence = true;
    Encoder().CutPaper(100);
    BarcodeDataStruct barcode{};
    Encoder().PrintBarcode(barcode);
    TakeTrace();
    Encoder().PrintText("a");
    Encoder().PrintText("b");
    EXPECT_EQ(TakeTrace(), (Trace{"write \x1D\x65\x05", "write a", "write b"}));

    // Also for a cut that failed, and in front of text that is not sent because the printer is in error.
    port.failingWrite = 5;
    EXPECT_NE(Encoder().CutPaper(100), kEncoderOk);
    port.failingWrite = 7;
    EXPECT_EQ(Encoder().PrintText("c"), kEncoderTextNotSent);
    Encoder().CutPaper(100);
    TakeTrace();
    EXPECT_EQ(Encoder().PrintText("d"), kEncoderTextNotSent);
    EXPECT_EQ(TakeTrace(), (Trace{"write \x1D\x65\x05", "sleep 500"}));

    Encoder().CutPaper(100);
    Encoder().ClearCutSent();
    TakeTrace();
    Encoder().PrintText("e");
    EXPECT_EQ(TakeTrace(), Trace{"sleep 500"});
}

BarcodeDataStruct Barcode(int32_t symbology, std::string_view data)
{
    BarcodeDataStruct barcode{};
    std::memcpy(barcode.data, data.data(), data.size());
    barcode.dataLength = static_cast<uint32_t>(data.size());
    barcode.symbology = symbology;
    barcode.height = 80;
    barcode.moduleWidth = 2;
    barcode.alignment = opos::PTR_BC_CENTER;
    barcode.textPosition = opos::PTR_BC_TEXT_BELOW;
    return barcode;
}

TEST_F(EncoderTest, BarcodeIsOneWrite)
{
    EXPECT_EQ(Encoder().PrintBarcode(Barcode(opos::PTR_BCS_Code128, "{A12")), kEncoderOk);
    EXPECT_EQ(TakeTrace(), Trace{"write \x1Dh\x50\x1Dw\x02\x1B\x61\x01\x1DH\x02\x1DkI\x04{A12\x1B\x61\0"s});

    // Binary data is nobody's text: a marker in it stays.
    BarcodeDataStruct barcode = Barcode(opos::PTR_BCS_Code93, "MaRkEr00NuLl");
    barcode.alignment = 300;
    barcode.height = 256;
    barcode.textPosition = 0;
    Encoder().PrintBarcode(barcode);
    EXPECT_EQ(TakeTrace(), Trace{"write \x1Dh\0\x1Dw\x02\x1B$\x2C\x01\x1DkH\x0CMaRkEr00NuLl\x1B\x61\0"s});
}

TEST_F(EncoderTest, BarcodeLettersAlignmentsAndTextPositions)
{
    const std::pair<int32_t, std::string> symbologies[] = {
        {101, "\x1DkA"}, {102, "\x1DkB"}, {103, "\x1DkD"}, {104, "\x1DkC"}, {106, "\x1DkF"},
        {107, "\x1DkG"}, {108, "\x1DkE"}, {109, "\x1DkH"}, {110, "\x1DkI"}, {105, ""}};
    for (const auto& [symbology, letters] : symbologies) {
        BarcodeDataStruct barcode = Barcode(symbology, "1");
        barcode.alignment = opos::PTR_BC_RIGHT;
        barcode.textPosition = opos::PTR_BC_TEXT_ABOVE;
        Encoder().PrintBarcode(barcode);
        EXPECT_EQ(TakeTrace(), Trace{"write \x1Dh\x50\x1Dw\x02\x1B\x61\x02\x1DH\x01"s + letters +
                                     "\x01"
                                     "1\x1B\x61\0"s});
    }
    BarcodeDataStruct barcode = Barcode(101, "1");
    barcode.alignment = opos::PTR_BC_LEFT;
    barcode.textPosition = opos::PTR_BC_TEXT_NONE;
    Encoder().PrintBarcode(barcode);
    EXPECT_EQ(TakeTrace(), Trace{"write \x1Dh\x50\x1Dw\x02\x1B\x61\0\x1DH\0\x1DkA\x01"s
                                 "1\x1B\x61\0"s});
}

TEST_F(EncoderTest, DirectBytesAreSentUnchanged)
{
    DirectIODataStruct direct{};
    EXPECT_EQ(Encoder().SendDirect(direct), kEncoderOk);
    EXPECT_TRUE(trace.empty());
    direct.count = 128;
    for (std::size_t i = 0; i < 128; ++i)
        direct.data[i] = static_cast<uint8_t>(i * 2);
    std::memcpy(direct.data, "MaRkEr00NuLl\0", 13);
    const std::string bytes(reinterpret_cast<const char*>(direct.data), 128);
    EXPECT_EQ(Encoder().SendDirect(direct), kEncoderOk);
    EXPECT_EQ(Encoder().SendDirectSecondary(direct), kEncoderOk);
    EXPECT_EQ(TakeTrace(), (Trace{"write " + bytes, "write secondary " + bytes}));
    port.opensSecondary = false;
    EXPECT_EQ(Encoder().SendDirectSecondary(direct), kEncoderPortFailed);
}

TEST_F(EncoderTest, RecoveryBytes)
{
    Encoder().RecoverFromError();
    traits.recovery = Recovery::kDleEnq2;
    Encoder().RecoverFromError();
    EXPECT_EQ(trace, (Trace{"write \x18", "write \x10\x05\x02"}));
}

TEST_F(EncoderTest, OpenSendsStartUpBytesAndOpensTheSecondLink)
{
    traits.startUpBytes = "\x1C<EPOS>";
    traits.secondaryComPort = 5;
    port.open = false;
    EXPECT_EQ(Encoder().Open(), kEncoderOk);
    EXPECT_EQ(TakeTrace(), (Trace{"open", "open secondary 5", "write \x1C<EPOS>"}));
    EXPECT_EQ(Encoder().Open(), kEncoderOk);
    EXPECT_TRUE(TakeTrace().empty());
    EXPECT_TRUE(Encoder().IsOpen());
    Encoder().DetachPort();
    EXPECT_EQ(TakeTrace(), Trace{"close"});
    EXPECT_EQ(Encoder().Open(), kEncoderOk);  // there is nothing to open
    EXPECT_FALSE(Encoder().IsOpen());
    EXPECT_EQ(Encoder().CutPaper(1), kEncoderPortNotOpen);
    EXPECT_TRUE(TakeTrace().empty());
}

TEST_F(EncoderTest, OpenFailsWithEitherLink)
{
    traits.secondaryComPort = 5;
    port.open = port.opens = false;
    EXPECT_EQ(Encoder().Open(), kEncoderOpenFailed);
    port.opens = true;
    port.opensSecondary = false;
    EXPECT_EQ(Encoder().Open(), kEncoderOpenFailed);
    EXPECT_FALSE(Encoder().IsOpen());  // or the next Open would take it for done
}

TEST_F(EncoderTest, InitialisationLeavesTheFlagAsThePrinterAnswers)
{
    const std::string initialise = "write \x1B@", question = "write \x10\x04\x02";
    Encoder().InitialiseAtOpen();
    EXPECT_EQ(TakeTrace(), (Trace{initialise, "sleep 500"}));
    EXPECT_FALSE(Encoder().IsInError());

    traits.queriesErrorBit = true;
    port.Answer("\x10\x04\x02", {"", "", "\x40"});
    Encoder().InitialiseAtOpen();
    EXPECT_EQ(TakeTrace()[2], question);
    EXPECT_TRUE(Encoder().IsInError());

    port.pieces = {};
    port.Answer("\x10\x04\x02", {"\xBF"});
    Encoder().InitialiseAtOpen();
    EXPECT_FALSE(Encoder().IsInError());

    port.Answer("\x10\x04\x02", {std::nullopt});
    Encoder().InitialiseAtOpen();
    EXPECT_FALSE(Encoder().IsInError());

    const uint64_t before = clock.now;
    Encoder().InitialiseAtOpen();  // no answer at all
    EXPECT_FALSE(Encoder().IsInError());
    EXPECT_GT(clock.now - before, 2400u);
    EXPECT_LT(clock.now - before, 2700u);

    TakeTrace();
    port.failingWrite = 9;
    Encoder().InitialiseAtOpen();
    EXPECT_EQ(TakeTrace(), Trace{initialise});
    EXPECT_TRUE(Encoder().IsInError());
}

TEST_F(EncoderTest, CleaningIsThePorts)
{
    Encoder().CleanInput();
    Encoder().CleanOutput();
    EXPECT_EQ(trace, (Trace{kCleanInput, kCleanOutput}));
}

}  // namespace
}  // namespace marbex::printer
