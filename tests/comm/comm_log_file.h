#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace marbex::tests {

// A folder of the test's own, gone at its end.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "marbex_comm_XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    std::string Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// The lines of a communication log without their time stamps, each of which is checked to be one.
inline std::vector<std::string> ReadLogLines(const std::string& path)
{
    static const std::regex stamp(R"(^\[\d{4}/\d\d/\d\d \d\d:\d\d:\d\d:0\d{3}\] (.*)$)");
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        lines.push_back(std::regex_match(line, match, stamp) ? match[1].str() : "NO STAMP: " + line);
    }
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
