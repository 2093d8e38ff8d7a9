#pragma once

// Tests as text: what is done to something, what it answers, and what it writes or sends. Each begins with nothing
// done.
//
//     close = 317             does something; behind " = " what it must give
//     closeWrite off          a switch
//     > CNuComUsb::CloseUsb   the last line written
//     * CNuComUsb::CloseUsb   a line written
//     | CNuComUsb::CloseUsb   lines like these, one after another, are all that was written since it was last looked at
//     so
//
// A blank at the end is written as \s.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/text_cases.h"

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

    virtual Words Written() const = 0;
    virtual void Forget() = 0;

    static uint32_t Number(const std::string& word) { return static_cast<uint32_t>(std::stoul(word, nullptr, 0)); }

    void Tell()
    {
        Words block;
        for (const std::string& line : GetParam().lines) {
            SCOPED_TRACE(line);
            if (line[0] == '|') {
                block.push_back(line.substr(2));
                continue;
            }
            CheckBlock(block);
            if (line[0] == '>') {
                EXPECT_EQ(Shown().empty() ? "" : Shown().back(), line.substr(2));
            } else if (line[0] == '*') {
                EXPECT_NE(std::ranges::count(Shown(), line.substr(2)), 0) << Joined(Shown());
            } else {
                Do(line);
            }
        }
        CheckBlock(block);
    }

    std::map<std::string, std::function<std::string(const Words&)>> verbs{
        {"forget", [this](const Words&) { return Forget(), ""; }}};
    std::map<std::string, bool*> switches;

private:
    static std::string Marked(std::string line)
    {
        if (line.ends_with(' ')) line.replace(line.size() - 1, 1, "\\s");
        return line;
    }

    Words Shown() const
    {
        Words lines = Written();
        std::ranges::transform(lines, lines.begin(), Marked);
        return lines;
    }

    void CheckBlock(Words& block)
    {
        if (block.empty()) return;
        EXPECT_EQ(Shown(), std::exchange(block, {}));
        Forget();
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
