#include "marbex_opos/log/log_reader.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

#include "marbex_opos/log/log_reasons.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostAtOnce = 1 << 20;  // bytes
constexpr std::size_t kStampLength = 24;      // "2026/11/23 21:24:55:0142"

// Lines of the communication log that only frame what others tell.
constexpr std::string_view kFrames[] = {"Calling function in",
                                        "Communication ID will be setted",
                                        "a different com type has been setted",
                                        "Clean not supported",
                                        "bytes to write:",
                                        "Receive buffer size:"};

fs::path PathOf(const std::string& utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

uint64_t SizeOf(const std::string& path)
{
    std::error_code error;
    const uintmax_t size = fs::file_size(PathOf(path), error);
    return error ? 0 : size;
}

std::string_view Trimmed(std::string_view text)
{
    while (text.ends_with('\r') || text.ends_with('\n') || text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

}  // namespace

LogReader::LogReader(std::string path, LogOrigin origin) : path_(std::move(path)), origin_(origin)
{
    inFormer_ = SizeOf(path_ + ".1") > 0;
}

bool LogReader::IsThere() const
{
    return inFormer_ || SizeOf(path_) > 0;
}

bool LogReader::Fill()
{
    if (inFormer_) {
        if (FillFrom(path_ + ".1")) return true;
        inFormer_ = false;
        offset_ = 0;
    } else if (SizeOf(path_) < offset_) {
        // It has been set aside: what was written to it last comes first.
        inFormer_ = true;
        return Fill();
    }
    return FillFrom(path_);
}

bool LogReader::FillFrom(const std::string& path)
{
    std::ifstream file(PathOf(path), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset_));
    std::string bytes(kMostAtOnce, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    if (bytes.empty()) return false;
    offset_ += bytes.size();
    unfinished_ += bytes;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = unfinished_.find('\n', begin)) != std::string::npos; begin = end + 1)
        TakeLine(Trimmed(std::string_view(unfinished_).substr(begin, end - begin)));
    unfinished_.erase(0, begin);
    return true;
}

void LogReader::Add(const std::string& stamp, LogOrigin origin, std::string text)
{
    LogEntry entry{stamp, origin, std::move(text), false, {}};
    Explain(entry);
    entries_.push_back(std::move(entry));
}

void LogReader::TakeLine(std::string_view line)
{
    const bool hasStamp = line.size() > kStampLength + 1 && line[0] == '[' && line[kStampLength + 1] == ']';
    if (!hasStamp) {
        // The rest of a text that held a line end.
        if (!line.empty() && !entries_.empty()) entries_.back().text += " | " + std::string(line);
        return;
    }
    const std::string stamp(line.substr(1, kStampLength));
    std::string_view text = line.substr(kStampLength + 2);
    if (origin_ == LogOrigin::kService) return Add(stamp, origin_, std::string(text));
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    TakeLinkLine(stamp, text);
}

void LogReader::TakeLinkLine(const std::string& stamp, std::string_view text)
{
    const auto numberAfter = [&text](std::string_view before) {
        const std::size_t at = text.find(before);
        unsigned number = 0;
        const bool isThere = at != std::string_view::npos &&
                             std::sscanf(std::string(text.substr(at + before.size(), 12)).c_str(), "%x", &number) == 1;
        return isThere ? static_cast<int>(number) : -1;
    };
    const bool isSent = text.find("SendBuffer[") != std::string_view::npos;
    if (isSent || text.find("ReceiveBuffer[") != std::string_view::npos) {
        const LogOrigin direction = isSent ? LogOrigin::kSent : LogOrigin::kReceived;
        if (!isGathering_ || direction_ != direction) EndTransfer();
        if (!isGathering_) transferStamp_ = stamp;
        isGathering_ = true;
        direction_ = direction;
        bytes_ += static_cast<char>(numberAfter("]="));
        return;
    }
    // Between the bytes of a transfer stand only the lines that announce them.
    const bool isFrame =
        std::ranges::any_of(kFrames, [&](std::string_view part) { return text.find(part) != std::string_view::npos; });
    const std::size_t sent = text.find("Bytes to send: ");
    const std::size_t read = text.find(" bytes read:");
    if (isFrame && text.find("bytes to write:") != std::string_view::npos) return;
    EndTransfer();
    if (isFrame) return;
    if (sent == std::string_view::npos && read == std::string_view::npos) return Add(stamp, origin_, std::string(text));
    const bool isWrite = sent != std::string_view::npos;
    isGathering_ = true;
    direction_ = isWrite ? LogOrigin::kSent : LogOrigin::kReceived;
    transferStamp_ = stamp;
    const std::size_t number = isWrite ? sent + 15 : text.find_last_of(' ', read - 1) + 1;
    announced_ = static_cast<std::size_t>(std::max(0, std::atoi(std::string(text.substr(number, 10)).c_str())));
}

void LogReader::EndTransfer()
{
    if (!isGathering_) return;
    isGathering_ = false;
    const std::string bytes = std::exchange(bytes_, {});
    const std::size_t announced = std::exchange(announced_, 0);
    if (bytes.empty()) {
        if (announced > 0) Add(transferStamp_, direction_, std::to_string(announced) + " bytes");
    } else if (direction_ == LogOrigin::kReceived) {
        Add(transferStamp_, direction_, namer_.Received(bytes));
    } else {
        for (std::string& line : namer_.Sent(bytes))
            Add(transferStamp_, direction_, std::move(line));
    }
}

}  // namespace marbex::tools
