#include "account/story.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

namespace marbex::soak {
namespace {

constexpr std::size_t kLongest = 50'000;  // lines
constexpr std::size_t kTold = 70;
constexpr std::size_t kBefore = 6;
constexpr std::size_t kAfter = 20;
constexpr std::array kLogs{"SOLogFile1.txt", "COposComm1.log"};

// As the logs write the time of day.
std::string Now()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%04d", local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(ms));
    return text.data();
}

bool Has(const std::string& line, const std::string& part)
{
    return line.find(part) != std::string::npos;
}

// From a little before the first line that is meant to a little after the last one, those left out that are noise.
std::string Around(const std::vector<std::string>& lines, const std::function<bool(const std::string&)>& meant,
                   const std::function<bool(const std::string&)>& noise)
{
    std::vector<std::string> clear;
    std::size_t first = SIZE_MAX;
    std::size_t last = 0;
    for (const std::string& line : lines) {
        if (meant(line)) {
            first = std::min(first, clear.size());
            last = clear.size();
        } else if (noise(line)) {
            continue;
        }
        clear.push_back(line);
    }
    std::string text;
    const std::size_t from =
        first == SIZE_MAX ? clear.size() - std::min(clear.size(), kTold) : first - std::min(first, kBefore);
    const std::size_t to = first == SIZE_MAX ? clear.size() : std::min(last + kAfter, clear.size());
    for (std::size_t i = from; i < to; ++i) {
        if (i - from == kTold / 2 && to - from > kTold) {
            text += "    ...\n";
            i = to - kTold / 2;
        }
        text += "    " + clear[i] + "\n";
    }
    return text;
}

}  // namespace

void Story::Begin()
{
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

void Story::Note(const std::string& what)
{
    const std::lock_guard lock(mutex_);
    if (lines_.size() == kLongest) {
        lines_.pop_front();
    }
    lines_.push_back(Now() + " " + what);
}

std::string Story::Excerpt(uint32_t receipt, const std::string& till) const
{
    std::array<char, 16> mark{};
    std::snprintf(mark.data(), mark.size(), "<%05u.", receipt);
    const std::string call = "call " + std::to_string(receipt) + " ";
    const std::string gave = "gave " + std::to_string(receipt) + " ";
    std::vector<std::string> told;
    {
        const std::lock_guard lock(mutex_);
        told.assign(lines_.begin(), lines_.end());
    }
    const std::string happened = Around(
        told, [&](const std::string& line) { return Has(line, mark.data()) || Has(line, call) || Has(line, gave); },
        [](const std::string& line) { return Has(line, "\"text\"") || Has(line, " call ") || Has(line, " gave "); });
    std::vector<std::string> logged;
    std::ifstream log(till + "/" + kLogs[0], std::ios::binary);
    for (std::string line; std::getline(log, line);) {
        line.erase(line.find_last_not_of('\r') + 1);
        logged.push_back(line);
    }
    const std::string log0 = Around(
        logged, [&](const std::string& line) { return Has(line, mark.data()); },
        [](const std::string& line) {
            return !Has(line, "DoJob") && !Has(line, "CB_") && !Has(line, "Transaction") &&
                   !Has(line, "FireErrorEvent Begin");
        });
    return happened + "    and in the service log:\n" + log0;
}

void Story::Keep(const std::string& till, const std::string& folder) const
{
    std::filesystem::create_directories(folder);
    std::ofstream file(folder + "/story.txt");
    {
        const std::lock_guard lock(mutex_);
        for (const std::string& line : lines_) {
            file << line << '\n';
        }
    }
    for (const char* log : kLogs) {
        std::error_code ignored;
        std::filesystem::rename(till + "/" + log, folder + "/" + log, ignored);
    }
}

void Story::Forget(const std::string& till) const
{
    for (const char* log : kLogs) {
        std::filesystem::remove(till + "/" + log);
    }
}

}  // namespace marbex::soak
