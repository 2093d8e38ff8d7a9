#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/process_settings.h"
#include "platform/posix/registry_location.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

std::string namedRegistry;  // on the command line

}  // namespace

std::vector<std::string> CommandLineWords(int argc, char** argv)
{
    return {argv, argv + argc};
}

bool UseRegistryFile(const std::string& path)
{
    namedRegistry = path;
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return !error && setenv("MARBEX_OPOS_REGISTRY", absolute.c_str(), 1) == 0;
}

std::string ToType(std::string command)
{
    const std::size_t begin = command.find("marbex-opos ");
    if (namedRegistry.empty() || begin == std::string::npos || command.find(" models", begin) != std::string::npos)
        return command;
    // What follows is no longer the command.
    const std::size_t end = std::min({command.find(", ", begin), command.find("; ", begin), command.size()});
    command.insert(end, " --registry " + ShellWord(namedRegistry));
    return command;
}

std::string RegistryPlace()
{
    platform::SystemRegistry();  // takes notice
    return platform::RegistryFilePath();
}

std::string MissingRegistry()
{
    const std::string path = RegistryPlace();
    return access(path.c_str(), F_OK) == 0 ? std::string() : path + ": " + std::strerror(errno);
}

std::string_view RegistryAdvice()
{
    return "is the registry file writable?";
}

std::string RegistryReadAdvice()
{
    const std::string path = RegistryPlace();
    std::error_code error;
    if (access(path.c_str(), R_OK) == 0) {
        return std::filesystem::is_regular_file(path, error) ? "mend that line with an editor"
                                                             : "name a registry file with --registry";
    }
    if (errno == ENOENT) return "marbex-opos devices add Till1 PrinterModel=MODEL";
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const bool isFile = access(path.c_str(), F_OK) == 0;
    return isFile ? "sudo chmod a+r " + ShellWord(path) : "sudo chmod a+x " + ShellWord(folder);
}

bool InputIsTerminal()
{
    return isatty(STDIN_FILENO) != 0;
}

bool OutputIsTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

bool OutputTakesColours()
{
    const char* terminal = std::getenv("TERM");
    const char* refused = std::getenv("NO_COLOR");
    return OutputIsTerminal() && terminal != nullptr && std::strcmp(terminal, "dumb") != 0 &&
           (refused == nullptr || *refused == '\0');
}

std::string HistoryFile()
{
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    std::filesystem::path folder;
    if (state != nullptr && *state == '/') {
        folder = state;
    } else if (home != nullptr && *home == '/') {
        folder = std::filesystem::path(home) / ".local" / "state";
    } else {
        return {};
    }
    std::error_code error;
    std::filesystem::create_directories(folder / "marbex-opos", error);
    return error ? std::string() : (folder / "marbex-opos" / "history").string();
}

}  // namespace marbex::tools
