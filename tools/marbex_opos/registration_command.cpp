#include <cstdio>
#include <memory>
#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/object_kind.h"
#include "marbex_opos/registered_server.h"
#include "marbex_opos/server_library.h"

namespace marbex::tools {

namespace {

std::unique_ptr<ServerLibrary> Load(const std::string& server, std::string& problem)
{
    const std::string path = server.empty() ? ServerBesideProgram() : server;
    if (path.empty()) {
        problem = "there is no server library beside this program; name it with --server";
        return nullptr;
    }
    return LoadServer(path, problem);
}

// The server's entry points report success whatever became of their writes, so the registry is asked.
int CountRegistered(const platform::Registry& registry)
{
    int count = 0;
    for (const ObjectClass& object : kObjectClasses) {
        if (RegisteredServerPath(registry, std::string(object.progId))) ++count;
    }
    return count;
}

int ReportRegistered()
{
    const platform::Registry& registry = platform::SystemRegistry();
    for (const ObjectClass& object : kObjectClasses) {
        const auto path = RegisteredServerPath(registry, std::string(object.progId));
        if (path) std::printf("%-38s %s\n", std::string(object.progId).c_str(), path->c_str());
    }
    return 0;
}

}  // namespace

int RegisterServer(const std::string& server)
{
    platform::Registry& registry = platform::SystemRegistry();
    std::string problem;
    if (!registry.Subkeys("") && !registry.LastProblem().empty()) return Complain(registry.LastProblem());
    const std::unique_ptr<ServerLibrary> library = Load(server, problem);
    if (!library) return Complain(problem);
    library->Register();
    if (CountRegistered(registry) == static_cast<int>(kObjectClasses.size())) return ReportRegistered();
    return Complain("the registration could not be written (is the registry writable?)");
}

int UnregisterServer(const std::string& server)
{
    platform::Registry& registry = platform::SystemRegistry();
    std::string problem;
    if (!registry.Subkeys("") && !registry.LastProblem().empty()) return Complain(registry.LastProblem());
    if (CountRegistered(registry) == 0) {
        std::printf("nothing is registered\n");
        return 0;
    }
    const std::unique_ptr<ServerLibrary> library = Load(server, problem);
    if (!library) return Complain(problem);
    library->Unregister();
    if (CountRegistered(registry) != 0)
        return Complain("the registration could not be removed (is the registry writable?)");
    std::printf("unregistered\n");
    return 0;
}

}  // namespace marbex::tools
