#include <gtest/gtest.h>

#include <string>

#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedClock;
using test::ScriptedPort;
using test::Trace;

const std::string kFullQuestion = "\x10\x04\x14";
const std::string kPrinterQuestion = "\x10\x04\x01";

std::string FullStatus(uint8_t s2, uint8_t s3, uint8_t s4, uint8_t s5)
{
    return "\x10\x0F"s + static_cast<char>(s2) + static_cast<char>(s3) + static_cast<char>(s4) + static_cast<char>(s5);
}

class StatusTest : public testing::Test {
protected:
    int32_t Ask(std::deque<ScriptedPort::Piece> full, std::deque<ScriptedPort::Piece> printer)
    {
        port.ForgetAnswers();
        port.pieces = stale;
        port.Answer(kFullQuestion, std::move(full));
        port.Answer(kPrinterQuestion, std::move(printer));
        CPrinterEncoder encoder(traits, clock);
        encoder.AttachPort(&port);
        status.flags.fill(9);
        const int32_t result = encoder.GetStatus(status, false, &fullStatus);
        inError = encoder.IsInError();
        encoder.DetachPort();
        port.open = true;
        return result;
    }

    // The numbers of the flags that are set.
    std::string Flags() const
    {
        std::string set;
        for (std::size_t i = 0; i < status.flags.size(); ++i) {
            if (status.flags[i] != 0) set += std::to_string(i) + " ";
        }
        return set;
    }

    std::deque<ScriptedPort::Piece> stale;  // what has arrived before the question
    Trace trace;
    ScriptedClock clock;
    ScriptedPort port{trace};
    EncoderTraits traits;
    PrinterStatus status;
    uint32_t fullStatus = 0;
    bool inError = false;
};

TEST_F(StatusTest, EveryBitSetsItsFlags)
{
    const struct {
        uint8_t s2, s3, s4, s5, printer;
        const char *reference, *noDrawer, *brisaHd;
    } rows[] = {
        {0, 0, 0, 0, 0x00, "1 ", "1 ", "1 "},
        {0, 0, 0, 0, 0x04, "0 1 ", "1 ", "1 "},
        {0, 0, 0, 0, 0x08, "5 ", "5 ", "5 "},
        {0, 0x01, 0, 0, 0, "1 2 ", "1 2 ", "1 2 "},
        {0, 0x02, 0, 0, 0, "1 2 ", "1 2 ", "1 2 "},
        {0, 0x20, 0, 0, 0, "1 3 ", "1 3 ", "1 3 "},
        {0, 0x40, 0, 0, 0, "1 3 ", "1 3 ", "1 3 "},
        {0, 0x9C, 0, 0, 0, "1 ", "1 ", "1 "},
        {0x01, 0, 0, 0, 0, "1 4 9 ", "1 4 9 ", "1 4 9 "},
        {0x04, 0, 0, 0, 0, "1 9 ", "1 9 ", "1 9 "},
        {0xFA, 0, 0, 0, 0, "1 ", "1 ", "1 "},
        {0, 0, 0, 0x01, 0, "1 6 7 ", "1 6 7 ", "1 6 7 "},
        {0, 0, 0, 0x04, 0, "1 7 ", "1 7 ", "1 7 "},
        {0, 0, 0, 0x08, 0, "1 7 ", "1 7 ", "1 7 "},
        {0, 0, 0, 0xF2, 0, "1 ", "1 ", "1 "},
        {0, 0, 0x01, 0, 0, "1 8 ", "1 8 ", "1 8 "},
        {0, 0, 0x08, 0, 0, "1 8 ", "1 8 ", "1 8 "},
        {0, 0, 0x20, 0, 0, "1 8 ", "1 8 ", "1 8 "},
        {0, 0, 0x40, 0, 0, "1 ", "1 ", "1 11 "},
        {0, 0, 0x96, 0, 0, "1 ", "1 ", "1 "},
    };
    for (const auto& row : rows) {
        const std::pair<StatusVariant, const char*> variants[] = {
            {StatusVariant::kReference, row.reference},
            {StatusVariant::kReferenceCleansOutput, row.reference},
            {StatusVariant::kNoDrawerFlag, row.noDrawer},
            {StatusVariant::kBrisaHd, row.brisaHd}};
        for (const auto& [variant, expected] : variants) {
            traits.status = variant;
            trace.clear();
            const std::string printer(1, static_cast<char>(row.printer));
            EXPECT_EQ(Ask({FullStatus(row.s2, row.s3, row.s4, row.s5)}, {printer}), 0);
            EXPECT_EQ(Flags(), expected);
            EXPECT_EQ(fullStatus, row.s2 | uint32_t{row.s3} << 8 | uint32_t{row.s4} << 16 | uint32_t{row.s5} << 24);
            // A jam is a failure of the printer although it answered.
            EXPECT_EQ(inError, variant == StatusVariant::kBrisaHd && row.s4 == 0x40);
            const bool output = variant == StatusVariant::kReferenceCleansOutput;
            EXPECT_EQ(trace, (Trace{output ? "clean output" : "clean input", "write " + kFullQuestion,
                                    "write " + kPrinterQuestion, "close"}));
        }
    }
}

// Some models are asked after the output alone is cleaned; one stray byte kept them disconnected for good.
TEST_F(StatusTest, WhatCameTooLateIsNotTakenForTheAnswer)
{
    for (const auto variant : {StatusVariant::kReference, StatusVariant::kReferenceCleansOutput}) {
        traits.status = variant;
        stale = {std::string("\x16")};
        EXPECT_EQ(Ask({FullStatus(0x01, 0, 0, 0)}, {"\x12"}), 0);
    }
}

// A printer on Ethernet was reported as disconnected whenever its six bytes came in two segments.
TEST_F(StatusTest, RepliesMayComeInPieces)
{
    const std::string whole = FullStatus(0x01, 0x02, 0, 0);
    for (std::size_t cut = 1; cut < whole.size(); ++cut) {
        EXPECT_EQ(Ask({whole.substr(0, cut), whole.substr(cut)}, {"\x08"}), 0);
        EXPECT_EQ(Flags(), "2 4 5 9 ");
    }
    std::deque<ScriptedPort::Piece> bytes;
    for (const char byte : whole)
        bytes.push_back(std::string(1, byte));
    EXPECT_EQ(Ask(bytes, {"\x08"}), 0);
}

TEST_F(StatusTest, BadRepliesAreNoResponseAndKeepWhatWasTold)
{
    const struct {
        const char* what;
        std::deque<ScriptedPort::Piece> full, printer;
        const char* flags;
    } rows[] = {
        {"silence", {}, {}, "10 "},
        {"five bytes and silence", {FullStatus(1, 3, 0, 0).substr(0, 5)}, {}, "10 "},
        {"five bytes and a failed read", {FullStatus(1, 3, 0, 0).substr(0, 5), std::nullopt}, {}, "10 "},
        {"a failed read", {std::nullopt}, {}, "10 "},
        {"wrong first byte", {"\x11\x0F\x01\x03"s + "\0\0"s}, {}, "10 "},
        {"wrong second byte", {"\x10\x0E\x01\x03"s + "\0\0"s}, {}, "10 "},
        {"silence after the full status", {FullStatus(1, 3, 0, 0)}, {}, "2 4 9 10 "},
        {"a failed read after the full status", {FullStatus(4, 0, 0, 0)}, {std::nullopt}, "9 10 "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Ask(row.full, row.printer), 1);
        EXPECT_EQ(Flags(), row.flags);
        EXPECT_TRUE(inError);
    }
}

TEST_F(StatusTest, FailedWritesAndClosedPortAreNoResponse)
{
    port.failingWrite = 0;
    EXPECT_EQ(Ask({FullStatus(0, 0, 0, 0)}, {""s}), 1);
    EXPECT_EQ(Flags(), "10 ");
    port.failingWrite = 2;
    EXPECT_EQ(Ask({FullStatus(0, 3, 0, 0)}, {"\x08"}), 1);
    EXPECT_TRUE(status.NoResponse());

    trace.clear();
    port.open = false;
    EXPECT_EQ(Ask({}, {}), 1);
    EXPECT_EQ(Flags(), "10 ");
    EXPECT_TRUE(inError);
    EXPECT_EQ(trace, Trace{"clean input"});
}

// A query that goes well ends an earlier failure.
TEST_F(StatusTest, AnAnswerClearsTheFailureFlag)
{
    CPrinterEncoder encoder(traits, clock);
    encoder.AttachPort(&port);
    port.failingWrite = 0;
    encoder.PrintText("x");
    ASSERT_TRUE(encoder.IsInError());
    port.Answer(kFullQuestion, {FullStatus(0, 0, 0, 0)});
    port.Answer(kPrinterQuestion, {"\x16"});
    EXPECT_EQ(encoder.GetStatus(status, true), 0);
    EXPECT_FALSE(encoder.IsInError());
    EXPECT_EQ(encoder.PrintText("x"), kEncoderOk);
}

}  // namespace
}  // namespace marbex::printer
