#include "virtual_printer/operator/script.h"

#include <fstream>
#include <optional>
#include <sstream>

namespace marbex::virtual_printer {
namespace {

constexpr double kLongestWait = 3600;  // seconds

// "wait 2 s", "wait 250 ms".
std::optional<std::chrono::milliseconds> WaitIn(const std::string& line)
{
    std::istringstream stream(line);
    std::string word;
    std::string unit;
    double number = -1;
    const bool read = static_cast<bool>(stream >> word >> number >> unit) && (stream >> std::ws).eof();
    const double seconds = unit == "ms" ? number / 1000 : number;
    if (!read || (unit != "s" && unit != "ms") || !(seconds >= 0 && seconds <= kLongestWait)) {
        return std::nullopt;
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

std::vector<ScriptStep> ReadScript(const std::string& file,
                                   const std::function<std::string(const std::string& command)>& wrong)
{
    std::ifstream in(file);
    std::vector<ScriptStep> steps;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const std::size_t begin = line.find_first_not_of(" \t\r");
        if (begin == std::string::npos || line[begin] == '#') {
            continue;
        }
        line = line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
        const auto complain = [&](const std::string& problem) {
            throw BadScript(file + ", line " + std::to_string(number) + ": " + line + ": " + problem);
        };
        if (line.substr(0, line.find_first_of(" \t")) == "wait") {
            const auto time = WaitIn(line);
            time ? steps.push_back({number, {}, *time}) : complain("seconds (s) or milliseconds (ms) expected");
            continue;
        }
        const std::string problem = wrong(line);
        problem.empty() ? steps.push_back({number, line, {}}) : complain(problem);
    }
    if (!in.eof()) {
        throw BadScript(file + " cannot be read");
    }
    return steps;
}

}  // namespace marbex::virtual_printer
