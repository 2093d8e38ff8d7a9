#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "marbex_opos/session/registered_server.h"
#include "marbex_opos/session/server_library.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

// The library to register, by its path; empty, with a reason, when there is none.
std::string Chosen(const std::string& server, std::string& problem)
{
    std::string path = server.empty() ? ServerBesideProgram() : server;
    if (path.empty()) problem = "there is no server library beside this program; name it with --server";
    return path;
}

fs::path PathOf(const std::string& utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

// The server's entry points report success whatever became of their writes, so the registry is asked.
std::size_t CountRegistered(const platform::Registry& registry)
{
    return static_cast<std::size_t>(std::ranges::count_if(kObjectClasses, [&](const ObjectClass& object) {
        return RegisteredServerPath(registry, std::string(object.progId)).has_value();
    }));
}

// All of them, with this library and no other.
bool AreRegistered(const platform::Registry& registry, const std::string& server)
{
    return std::ranges::all_of(kObjectClasses, [&](const ObjectClass& object) {
        const auto path = RegisteredServerPath(registry, std::string(object.progId));
        std::error_code error;
        return path && fs::equivalent(PathOf(platform::NativePath(*path)), PathOf(server), error);
    });
}

int CannotWrite(const std::string& what)
{
    return Complain("the registration could not be " + what + " (" + std::string(RegistryAdvice()) + ")");
}

int ReportRegistered()
{
    const platform::Registry& registry = platform::SystemRegistry();
    for (const ObjectClass& object : kObjectClasses) {
        const auto path = RegisteredServerPath(registry, std::string(object.progId));
        if (path) Print(Padded(object.progId, 38) + " " + *path + "\n");
    }
    return 0;
}

}  // namespace

int RegisterServer(const std::string& server)
{
    platform::Registry& registry = platform::SystemRegistry();
    std::string problem;
    if (!registry.Subkeys("") && !registry.LastProblem().empty()) return Complain(registry.LastProblem());
    const std::string path = Chosen(server, problem);
    const std::unique_ptr<ServerLibrary> library = path.empty() ? nullptr : LoadServer(path, problem);
    if (!library) return Complain(problem);
    library->Register();
    return AreRegistered(registry, path) ? ReportRegistered() : CannotWrite("written");
}

int UnregisterServer(const std::string& server)
{
    platform::Registry& registry = platform::SystemRegistry();
    std::string problem;
    if (!registry.Subkeys("") && !registry.LastProblem().empty()) return Complain(registry.LastProblem());
    const bool wasRegistered = CountRegistered(registry) != 0;
    const std::string path = Chosen(server, problem);
    const std::unique_ptr<ServerLibrary> library = path.empty() ? nullptr : LoadServer(path, problem);
    if (!library && wasRegistered) return Complain(problem);
    // Also when nothing is found: classes may be left whose ProgIDs went with a server of the other width.
    if (library) library->Unregister();
    if (CountRegistered(registry) != 0) return CannotWrite("removed");
    Print(wasRegistered ? "unregistered\n" : "nothing is registered\n");
    return 0;
}

}  // namespace marbex::tools
