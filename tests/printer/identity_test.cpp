#include <gtest/gtest.h>

#include <array>
#include <string>

#include "opos/printer.h"
#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedClock;
using test::ScriptedPort;
using test::Trace;

const std::string kShortQuestion = "\x1DI\x01";
const std::string kExtendedQuestion = "\x1DI\xFF";
const std::string kMechanismQuestion = "\x1C\xDD\x01\xFF\x00"s;

constexpr std::array<uint16_t, 2> kShortAndExtended{0xA8, 0x1A8};
constexpr std::array<uint16_t, 1> kExtendedOnly{0x226};
constexpr std::array<uint16_t, 1> kOneShort{0x8E};

constexpr IdentityCheck Check(std::span<const uint16_t> accepted)
{
    IdentityCheck check;
    check.accepted = accepted;
    return check;
}

class IdentityTest : public testing::Test {
protected:
    bool CheckPrinter()
    {
        CPrinterEncoder encoder(traits, clock);
        encoder.AttachPort(&port);
        const bool accepted = encoder.CheckPrinter();
        encoder.DetachPort();
        port.open = true;
        port.ForgetAnswers();
        return accepted;
    }

    Trace trace;
    ScriptedClock clock;
    ScriptedPort port{trace};
    EncoderTraits traits;
};

TEST_F(IdentityTest, WhatCameBeforeTheQuestionIsNoAnswer)
{
    traits.identity = Check(kOneShort);
    port.pieces = {"\x10\x0F"};
    port.Answer(kShortQuestion, {"\x8E"});
    EXPECT_TRUE(CheckPrinter());
    EXPECT_EQ(trace, (Trace{"write " + kShortQuestion, "close"})) << "and nothing tells of it";
}

TEST_F(IdentityTest, ShortIdentifiers)
{
    traits.identity = Check(kOneShort);
    port.Answer(kShortQuestion, {"\x8E"});
    EXPECT_TRUE(CheckPrinter());
    EXPECT_EQ(trace, (Trace{"write " + kShortQuestion, "close"}));
    port.Answer(kShortQuestion, {"\x8D"});
    EXPECT_FALSE(CheckPrinter());

    // Not extended: 0xFF is an identifier like any other, and the second question is not asked.
    trace.clear();
    port.Answer(kShortQuestion, {"\xFF"});
    EXPECT_FALSE(CheckPrinter());
    EXPECT_EQ(trace.size(), 2u);
}

TEST_F(IdentityTest, ExtendedIdentifiers)
{
    traits.identity = Check(kShortAndExtended);
    traits.identity.extendedAfterFF = true;
    port.Answer(kShortQuestion, {"\xA8"});
    EXPECT_TRUE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01\xA8"});
    EXPECT_TRUE(CheckPrinter());
    port.Answer(kShortQuestion, {"", "\xFF"});
    port.Answer(kExtendedQuestion, {"\x01", "", "\xA8"});
    EXPECT_TRUE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01\xA7"});
    EXPECT_FALSE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01\xA8\x00"s});  // more than an identifier
    EXPECT_FALSE(CheckPrinter());

    traits.identity = Check(kExtendedOnly);
    traits.identity.extendedAfterFF = traits.identity.firstAnswerMustBeFF = true;
    trace.clear();
    port.Answer(kShortQuestion, {"\x26"});
    EXPECT_FALSE(CheckPrinter());
    EXPECT_EQ(trace, (Trace{"write " + kShortQuestion, "close"}));

    traits.identity.extendedAtOnce = true;
    trace.clear();
    port.Answer(kExtendedQuestion, {"\x02\x26"});
    EXPECT_TRUE(CheckPrinter());
    EXPECT_EQ(trace, (Trace{"write " + kExtendedQuestion, "close"}));
}

TEST_F(IdentityTest, AnswersMustComeInTime)
{
    const struct {
        bool wholeSeconds;
        uint64_t startsAt, takes;
        bool accepted;
    } rows[] = {
        {false, 5900, 2000, true},
        {false, 5900, 2001, false},
        // From second 5 on, the seconds 5, 6 and 7 are in time.
        {true, 5000, 2999, true},
        {true, 5000, 3000, false},
        {true, 5900, 2099, true},
        {true, 5900, 2100, false},
    };
    for (const auto& row : rows) {
        traits.identity = Check(kOneShort);
        traits.identity.wholeSeconds = row.wholeSeconds;
        clock.now = row.startsAt;
        port.onRead = [&] { clock.now = row.startsAt + row.takes; };
        port.Answer(kShortQuestion, {"\x8E"});
        EXPECT_EQ(CheckPrinter(), row.accepted) << row.startsAt << " + " << row.takes;
    }
    port.onRead = nullptr;

    // Nothing at all: it ends by itself.
    const uint64_t before = clock.now;
    EXPECT_FALSE(CheckPrinter());
    EXPECT_LE(clock.now - before, 3000u);

    // Each answer has its own time.
    traits.identity = Check(kShortAndExtended);
    traits.identity.extendedAfterFF = true;
    traits.identity.wholeSeconds = false;
    port.onRead = [&] { clock.now += 1500; };
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01\xA8"});
    EXPECT_TRUE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01", "\xA8"});
    EXPECT_FALSE(CheckPrinter());
}

TEST_F(IdentityTest, TransferFailuresEndTheCheckAtOnce)
{
    traits.identity = Check(kShortAndExtended);
    traits.identity.extendedAfterFF = true;
    const uint64_t before = clock.now;
    port.Answer(kShortQuestion, {std::nullopt, "\xA8"});
    EXPECT_FALSE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.Answer(kExtendedQuestion, {"\x01", std::nullopt, "\xA8"});
    EXPECT_FALSE(CheckPrinter());
    port.failingWrite = 3;
    EXPECT_FALSE(CheckPrinter());
    port.Answer(kShortQuestion, {"\xFF"});
    port.failingWrite = 5;
    EXPECT_FALSE(CheckPrinter());
    EXPECT_EQ(clock.now, before);
}

TEST_F(IdentityTest, WideMechanismDecidesTheRasterWidth)
{
    const std::string wide = "\x06\0\0\0\0\0\x02"s;
    const struct {
        const char* what;
        std::deque<ScriptedPort::Piece> answer;
        bool wide;
    } rows[] = {
        {"wide", {wide}, true},
        {"wide in pieces", {wide.substr(0, 1), wide.substr(1, 4), "", wide.substr(5)}, true},
        {"other bits only", {"\x06\0\0\0\0\0\xFD"s}, false},
        {"longer than announced", {"\x05\0\0\0\0\0\x02"s}, true},
        {"shorter than announced", {"\x07\0\0\0\0\0\x02"s}, false},
        {"five bytes", {"\x04\0\0\0\x02"s}, false},
        {"silence", {}, false},
        {"a failed read", {std::nullopt}, false},
    };
    traits.asksWideMechanism = true;
    traits.rasterWidth = 640;
    const std::string rightAligned[] = {"write \x1B*p640X", "write \x1B*p976X"};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        CPrinterEncoder encoder(traits, clock);
        encoder.AttachPort(&port);
        port.Answer(kMechanismQuestion, row.answer);
        trace.clear();
        encoder.InitialiseAtOpen();
        EXPECT_EQ(trace, (Trace{"write " + kMechanismQuestion, "write \x1B@"}));
        trace.clear();
        BitmapDataStruct nothing{0, 0, opos::PTR_BM_RIGHT, opos::PTR_RP_NORMAL, std::make_unique<uint8_t[]>(0)};
        encoder.PrintBitmap(nothing);
        EXPECT_EQ(trace[1], rightAligned[row.wide ? 1 : 0]);
        encoder.DetachPort();
        port.open = true;
        port.ForgetAnswers();
    }
}

}  // namespace
}  // namespace marbex::printer
