#include <algorithm>
#include <filesystem>
#include <fstream>

#include "marbex_opos/check/check.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/session/registered_server.h"
#include "marbex_opos/session/server_library.h"

namespace marbex::tools {

namespace {

constexpr int kBitsHere = sizeof(void*) * 8;
constexpr const char* kRegister = "marbex-opos register";

// For programs of how many bits a library is, by the headers that ELF and PE, Linux's and Windows' formats,
// begin with; 0 when it is neither.
int BitsOf(const std::string& path)
{
    std::string header(4096, '\0');
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    file.read(header.data(), static_cast<std::streamsize>(header.size()));
    const auto byte = [&](std::size_t at) { return at < header.size() ? static_cast<unsigned char>(header[at]) : 0u; };
    if (header.starts_with("\x7F"
                           "ELF")) {
        return byte(4) == 1 ? 32 : byte(4) == 2 ? 64 : 0;
    }
    const std::size_t pe = byte(0x3C) | byte(0x3D) << 8;
    if (!header.starts_with("MZ") || byte(pe) != 'P' || byte(pe + 1) != 'E') return 0;
    const unsigned machine = byte(pe + 4) | byte(pe + 5) << 8;
    return machine == 0x8664 ? 64 : machine == 0x014C ? 32 : 0;
}

void CheckRegistration(const platform::Registry& registry, Steps& steps)
{
    std::string missing;
    std::string path;
    bool isOnePath = true;
    for (const ObjectClass& object : kObjectClasses) {
        const auto registered = RegisteredServerPath(registry, std::string(object.progId));
        if (!registered) {
            missing += (missing.empty() ? "" : ", ") + std::string(object.progId);
            continue;
        }
        isOnePath = isOnePath && (path.empty() || platform::SameName(path, *registered));
        path = *registered;
    }
    if (path.empty()) {
        steps.Wrong("registration", "the service objects are not registered: no control object finds them", kRegister);
    } else if (!missing.empty()) {
        steps.Wrong("registration", "not registered: " + missing, kRegister);
    } else if (!isOnePath) {
        steps.Wrong("registration", "the service objects are registered to different libraries", kRegister);
    } else {
        steps.Fine("registration", "all three service objects");
    }
}

}  // namespace

void CheckServer(const std::string& server, Steps& steps)
{
    const platform::Registry& registry = platform::SystemRegistry();
    CheckRegistration(registry, steps);

    std::string problem;
    const std::string path =
        server.empty() ? FindServer(registry, std::string(kObjectClasses[0].progId), problem) : server;
    std::error_code error;
    const bool isThere =
        !path.empty() && std::filesystem::exists(std::filesystem::path(std::u8string(path.begin(), path.end())), error);
    const int bits = isThere ? BitsOf(path) : 0;
    if (path.empty()) {
        steps.Wrong("library", problem, "marbex-opos register --server FILE");
    } else if (!isThere) {
        steps.Wrong("library", path + " is registered and is not there", kRegister);
    } else if (bits == 0) {
        steps.Wrong("library", path + " is no library of this system", kRegister);
    } else if (bits != kBitsHere) {
        steps.Wrong(
            "library",
            path + " is for programs of " + std::to_string(bits) + " bits, this one is of " + std::to_string(kBitsHere),
            kRegister);
    } else if (!LoadServer(path, problem)) {
        steps.Wrong("library", problem, kRegister);
    } else {
        steps.Fine("library", path + ", for programs of " + std::to_string(bits) + " bits");
    }
}

}  // namespace marbex::tools
