#include <dlfcn.h>
#include <poll.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "marbex/message_pump.h"
#include "marbex_opos/session/registered_server.h"
#include "marbex_opos/session/server_library.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kLibraryName = "libmarbexopos.so";

struct EntryPoints {
    decltype(&DllGetClassObject) getClassObject = nullptr;
    decltype(&DllRegisterServer) registerServer = nullptr;
    decltype(&DllUnregisterServer) unregisterServer = nullptr;
    decltype(&MarbexRunMessages) runMessages = nullptr;
    decltype(&MarbexMessageDescriptor) messageDescriptor = nullptr;
};

class PosixServerLibrary final : public ServerLibrary {
public:
    explicit PosixServerLibrary(const EntryPoints& entryPoints) : entry_(entryPoints) {}

    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) override
    {
        return entry_.getClassObject(classId, interfaceId, object);
    }
    HRESULT Register() override { return entry_.registerServer(); }
    HRESULT Unregister() override { return entry_.unregisterServer(); }
    int MessageDescriptor() override { return entry_.messageDescriptor(); }

    int32_t RunMessages(int32_t timeout) override
    {
        const int32_t alreadyWaiting = entry_.runMessages(0);
        if (alreadyWaiting > 0 || timeout == 0) return alreadyWaiting;
        pollfd wanted{MessageDescriptor(), POLLIN, 0};
        poll(&wanted, 1, timeout);  // a descriptor of -1 is ignored: the whole time passes, then messages run
        return entry_.runMessages(0);
    }

private:
    EntryPoints entry_;
};

template <typename Function>
bool Find(void* library, const char* name, Function& function, std::string& problem)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) problem = std::string("it has no ") + name;
    return function != nullptr;
}

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace

std::unique_ptr<ServerLibrary> LoadServer(const std::string& path, std::string& problem)
{
    // A name without a folder would be looked for on the system's library path.
    void* library = dlopen(fs::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        problem = dlerror();
        return nullptr;
    }
    EntryPoints entry;
    std::string missing;
    const bool isServer = Find(library, "DllGetClassObject", entry.getClassObject, missing) &&
                          Find(library, "DllRegisterServer", entry.registerServer, missing) &&
                          Find(library, "DllUnregisterServer", entry.unregisterServer, missing) &&
                          Find(library, "MarbexRunMessages", entry.runMessages, missing) &&
                          Find(library, "MarbexMessageDescriptor", entry.messageDescriptor, missing);
    if (!isServer) {
        problem = path + " is not the server: " + missing;
        dlclose(library);
        return nullptr;
    }
    return std::make_unique<PosixServerLibrary>(entry);
}

std::string ServerBesideProgram()
{
    const fs::path folder = ProgramFolder();
    for (const fs::path& candidate : {folder / kLibraryName, folder / ".." / "lib" / "marbex-opos" / kLibraryName}) {
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) return fs::weakly_canonical(candidate, error).string();
    }
    return {};
}

std::string FindServer(const platform::Registry& registry, const std::string& progId, std::string& problem)
{
    const std::optional<std::string> registered = RegisteredServerPath(registry, progId);
    if (registered) return platform::NativePath(*registered);
    problem = registry.LastProblem();
    if (!problem.empty()) return {};
    std::string beside = ServerBesideProgram();
    if (beside.empty())
        problem = progId + " is not registered and there is no " + kLibraryName + " beside this program";
    return beside;
}

}  // namespace marbex::tools
