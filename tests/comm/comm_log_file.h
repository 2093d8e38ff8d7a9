#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "temp_folder.h"

namespace marbex::tests {

// A folder of the test's own, gone at its end.
class TemporaryFolder {
public:
    TemporaryFolder() : path_(MakeTemporaryFolder()) {}
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    std::string Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Whether a line begins with a time stamp and a blank, milliseconds in four digits.
inline bool HasStamp(std::string_view line)
{
    constexpr std::string_view kShape = "[dddd/dd/dd dd:dd:dd:0ddd] ";
    if (line.size() < kShape.size()) return false;
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        const bool digit = line[i] >= '0' && line[i] <= '9';
        if (kShape[i] == 'd' ? !digit : line[i] != kShape[i]) return false;
    }
    return true;
}

// The lines of a communication log without their time stamps, each of which is checked to be one.
inline std::vector<std::string> ReadLogLines(const std::string& path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(HasStamp(line) ? line.substr(27) : "NO STAMP: " + line);
    return lines;
}

inline std::string ReadLog(const std::string& path)
{
    std::string text;
    for (const std::string& line : ReadLogLines(path))
        text += line + "\n";
    return text;
}

}  // namespace marbex::tests
