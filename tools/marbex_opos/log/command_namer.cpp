#include "marbex_opos/log/command_namer.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "marbex_opos/check/identity.h"
#include "marbex_opos/nearest.h"
#include "printer/status_query.h"
#include "virtual_printer/record/command_name.h"

namespace marbex::tools {

namespace {

using virtual_printer::Command;
using virtual_printer::Op;

constexpr const char* kFullStatus = "DLE EOT 20";
constexpr const char* kPrinterStatus = "DLE EOT 1";
constexpr const char* kIdentity = "GS I";
constexpr std::size_t kMostQuestions = 16;

std::string Hex(std::string_view bytes)
{
    constexpr std::size_t kMost = 16;
    std::string text;
    for (const char byte : bytes.substr(0, kMost)) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%s%02X", text.empty() ? "" : " ", static_cast<unsigned char>(byte));
        text += hex;
    }
    return text + (bytes.size() > kMost ? " ..." : "");
}

std::string FullStatusText(std::string_view answer)
{
    uint32_t status = 0;
    for (std::size_t at = answer.size(); at-- > 2;)
        status = status << 8 | static_cast<unsigned char>(answer[at]);
    std::vector<std::string> words;
    if ((status & printer::kFullStatusCover) != 0) words.emplace_back("cover open");
    if ((status & printer::kFullStatusPaperEnd) != 0) words.emplace_back("no paper");
    if ((status & printer::kFullStatusPaperEnd) == 0 && (status & printer::kFullStatusNearEnd) != 0)
        words.emplace_back("paper running out");
    if ((status & printer::kFullStatusPrinting) != 0) words.emplace_back("printing");
    if ((status & printer::kFullStatusJam) != 0) words.emplace_back("jammed");
    return words.empty() ? "ready" : Joined(words);
}

std::string Meaning(const std::string& question, std::string_view bytes)
{
    if (bytes.size() == 6 && bytes.starts_with("\x10\x0F")) return "status: " + FullStatusText(bytes);
    if (question == kPrinterStatus && bytes.size() == 1) {
        return std::string("status: ") + ((bytes[0] & 0x08) != 0 ? "offline" : "online") +
               ((bytes[0] & 0x04) != 0 ? ", drawer signal high" : ", drawer signal low");
    }
    if (question == kIdentity && bytes.size() <= 2) {
        uint16_t identifier = 0;
        for (const char byte : bytes)
            identifier = static_cast<uint16_t>(identifier << 8 | static_cast<unsigned char>(byte));
        if (bytes == "\xFF") return "identity: a long one follows";
        const std::vector<std::string> models = ModelsOf(identifier);
        return "identity: " + (models.empty() ? "none of the models" : Joined(models));
    }
    return {};
}

std::string Shown(const virtual_printer::Bytes& text)
{
    std::string shown;
    for (const uint8_t byte : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02X", byte);
        shown += byte >= 0x20 && byte < 0x7F ? std::string(1, static_cast<char>(byte)) : hex;
    }
    return shown;
}

}  // namespace

CommandNamer::CommandNamer()
    : input_({.command = [this](const Command& command) { Take(command); },
              .statusRequest =
                  [this](uint8_t kind) {
                      EndRun();
                      const std::string code = "DLE EOT " + std::to_string(kind);
                      lines_.push_back(code + "  asks for the " + (code == kFullStatus ? "whole status" : "status"));
                      Asked(code);
                  },
              .recoverRequest =
                  [this](int) {
                      EndRun();
                      lines_.emplace_back("DLE ENQ 2  recover: throw away what waits");
                  },
              .givenUp = [](int) {},
              .stopped = [] { return false; }})
{
}

void CommandNamer::Asked(const std::string& question)
{
    questions_.push_back(question);
    if (questions_.size() > kMostQuestions) questions_.pop_front();
}

void CommandNamer::EndRun()
{
    if (runOp_ == Op::kCharacter && !run_.empty()) lines_.push_back("text  \"" + Shown(run_) + "\"");
    if (runOp_ == Op::kRasterRow && rows_ > 0)
        lines_.push_back("ESC * b W  " + std::to_string(rows_) + (rows_ == 1 ? " row" : " rows") + " of a picture");
    run_.clear();
    rows_ = 0;
    runOp_ = Op::kUnknown;
}

void CommandNamer::Take(const Command& command)
{
    if (command.op != runOp_) EndRun();
    runOp_ = command.op;
    if (command.op == Op::kCharacter) {
        run_.insert(run_.end(), command.bytes.begin(), command.bytes.end());
    } else if (command.op == Op::kRasterRow) {
        ++rows_;
    } else if (command.op == Op::kUnknown) {
        lines_.push_back("?  " + Hex({reinterpret_cast<const char*>(command.bytes.data()), command.bytes.size()}));
    } else {
        const virtual_printer::CommandName name = virtual_printer::NameOf(command.op, command.bytes);
        lines_.push_back(name.code + "  " + name.meaning);
        if (command.op == Op::kIdentity) Asked(kIdentity);
    }
}

std::vector<std::string> CommandNamer::Sent(std::string_view bytes)
{
    for (const char byte : bytes)
        input_.Put(static_cast<uint8_t>(byte));
    EndRun();
    return std::exchange(lines_, {});
}

std::string CommandNamer::Received(std::string_view bytes)
{
    const std::string question = questions_.empty() ? std::string() : questions_.front();
    if (!questions_.empty()) questions_.pop_front();
    const std::string meaning = Meaning(question, bytes);
    return Hex(bytes) + (meaning.empty() ? "" : "  " + meaning);
}

}  // namespace marbex::tools
