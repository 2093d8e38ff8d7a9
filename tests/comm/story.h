#pragma once

// Tests of a transport as text: what is done to it, what it answers, and what it writes to the communication log. A
// file of them is C++ source that holds one raw string, and in it
//
//     == Name                 begins a test, on a machine of its own
//     close = 317             does something; behind " = " what it must give
//     closeWrite off          a switch of the machine
//     > CNuComUsb::CloseUsb   the last line of the log
//     * CNuComUsb::CloseUsb   a line of the log
//     | CNuComUsb::CloseUsb   lines like these, one after another, are the whole log since it was last looked at so
//
// A blank at the end is written as \s.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "comm/comm_log_file.h"
#include "comm/test_clock.h"
#include "comm/transport_log.h"
#include "common/text_cases.h"
#include "platform/stop_signal.h"

namespace marbex::tests {

inline std::string StoryName(const testing::TestParamInfo<TextCase>& info)
{
    return info.param.name;
}

// Words with a blank between them.
template <typename Items>
std::string Joined(const Items& items)
{
    std::ostringstream words;
    for (const auto& item : items)
        words << (words.tellp() > 0 ? " " : "") << item;
    return words.str();
}

// The same, and there are none any more.
template <typename Items>
std::string Taken(Items& items)
{
    return Joined(std::exchange(items, {}));
}

class StoryTeller : public testing::TestWithParam<TextCase> {
protected:
    using Words = std::vector<std::string>;

    StoryTeller()
    {
        verbs = {
            {"forget", [this](const Words&) { return log.Forget(), ""; }},
            {"mask", [this](const Words& words) { return log.log.SetMode(comm::kLogToFile, Number(words[0])), ""; }},
            {"wait", [this](const Words& words) { return clock.Sleep(Number(words[0])), ""; }},
            {"closing", [this](const Words& words) { return stop.Set(words[0] == "on"), ""; }}};
    }

    static uint32_t Number(const std::string& word) { return static_cast<uint32_t>(std::stoul(word, nullptr, 0)); }

    void Tell()
    {
        std::string block;
        for (const std::string& line : GetParam().lines) {
            SCOPED_TRACE(line);
            if (line[0] == '|') {
                block += line.substr(2) + "\n";
                continue;
            }
            CheckBlock(block);
            if (line[0] == '>') {
                EXPECT_EQ(Shown().empty() ? "" : Shown().back(), line.substr(2));
            } else if (line[0] == '*') {
                EXPECT_TRUE(std::ranges::count(Shown(), line.substr(2)) != 0) << Joined(Shown());
            } else {
                Do(line);
            }
        }
        CheckBlock(block);
    }

    std::map<std::string, std::function<std::string(const Words&)>> verbs;
    std::map<std::string, bool*> switches;
    TransportLog log;
    TestClock clock;
    platform::StopSignal stop;

private:
    static std::string Marked(std::string line)
    {
        if (line.ends_with(' ')) line.replace(line.size() - 1, 1, "\\s");
        return line;
    }

    Words Shown() const
    {
        Words lines = log.Lines();
        std::ranges::transform(lines, lines.begin(), Marked);
        return lines;
    }

    void CheckBlock(std::string& block)
    {
        if (block.empty()) return;
        std::string text;
        for (const std::string& line : Shown())
            text += line + "\n";
        EXPECT_EQ(text, std::exchange(block, ""));
        log.Forget();
    }

    void Do(const std::string& line)
    {
        const std::size_t equals = line.find(" =");
        std::istringstream said(line.substr(0, equals));
        std::string verb;
        Words words;
        said >> verb;
        for (std::string word; said >> word;)
            words.push_back(word);
        if (const auto found = switches.find(verb); found != switches.end()) {
            *found->second = words.at(0) == "on";
            return;
        }
        ASSERT_TRUE(verbs.contains(verb)) << "nobody knows how to do this";
        const std::string given = verbs[verb](words);
        if (equals == std::string::npos) return;
        EXPECT_EQ(Marked(given), line.size() > equals + 3 ? line.substr(equals + 3) : "");
    }
};

}  // namespace marbex::tests
