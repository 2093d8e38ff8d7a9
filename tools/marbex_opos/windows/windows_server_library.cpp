#include <windows.h>
// After windows.h.
#include <objbase.h>

#include <bit>
#include <filesystem>

#include "marbex_opos/check/system_facts.h"
#include "marbex_opos/session/registered_server.h"
#include "marbex_opos/session/server_library.h"
#include "platform/kernel.h"
#include "platform/version.h"
#include "platform/window.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* kLibraryName = L"MarbexOpos.dll";

struct EntryPoints {
    decltype(&DllGetClassObject) getClassObject = nullptr;
    HRESULT(STDAPICALLTYPE* registerServer)() = nullptr;
    HRESULT(STDAPICALLTYPE* unregisterServer)() = nullptr;
};

// The thread that loads the server is the apartment of its objects.
class Apartment {
public:
    Apartment() : isEntered_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~Apartment()
    {
        if (isEntered_) CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

private:
    bool isEntered_;
};

class WindowsServerLibrary final : public ServerLibrary {
public:
    explicit WindowsServerLibrary(const EntryPoints& entryPoints) : entry_(entryPoints) {}

    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) override
    {
        return entry_.getClassObject(classId, interfaceId, object);
    }
    HRESULT Register() override { return entry_.registerServer(); }
    HRESULT Unregister() override { return entry_.unregisterServer(); }
    int MessageDescriptor() override { return -1; }

    int32_t RunMessages(int32_t timeout) override
    {
        platform::WaitForAnyOrMessages({}, static_cast<uint32_t>(timeout));
        return static_cast<int32_t>(platform::RunWaitingMessages());
    }

private:
    Apartment apartment_;
    EntryPoints entry_;
};

template <typename Function>
bool Find(HMODULE library, const char* name, Function& function, std::string& missing)
{
    function = std::bit_cast<Function>(GetProcAddress(library, name));
    if (function == nullptr) missing = std::string("it has no ") + name;
    return function != nullptr;
}

std::string Words(DWORD error)
{
    if (error == ERROR_BAD_EXE_FORMAT) {
        return std::string("no library for a program of ") + (sizeof(void*) == 8 ? "64" : "32") + " bits";
    }
    return SystemWords(error);
}

// A library that lacks another one is a message on the console, not a box on a screen that nobody watches.
HMODULE LoadQuietly(const fs::path& path, DWORD& error)
{
    DWORD before = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before);
    const HMODULE library = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    error = GetLastError();
    SetThreadErrorMode(before, nullptr);
    return library;
}

fs::path ProgramFolder()
{
    return fs::path(platform::WideFromUtf8(platform::ModulePath())).parent_path();
}

}  // namespace

std::unique_ptr<ServerLibrary> LoadServer(const std::string& path, std::string& problem)
{
    // A name without a folder would be looked for in the system's folders.
    std::error_code ignored;
    DWORD error = 0;
    const HMODULE library = LoadQuietly(fs::absolute(platform::WideFromUtf8(path), ignored), error);
    if (library == nullptr) {
        problem = path + ": " + Words(error);
        return nullptr;
    }
    EntryPoints entry;
    decltype(&DllCanUnloadNow) canUnloadNow = nullptr;
    std::string missing;
    const bool isServer = Find(library, "DllGetClassObject", entry.getClassObject, missing) &&
                          Find(library, "DllCanUnloadNow", canUnloadNow, missing) &&
                          Find(library, "DllRegisterServer", entry.registerServer, missing) &&
                          Find(library, "DllUnregisterServer", entry.unregisterServer, missing);
    if (!isServer) {
        problem = path + " is not the server: " + missing;
        FreeLibrary(library);
        return nullptr;
    }
    return std::make_unique<WindowsServerLibrary>(entry);
}

std::string ServerBesideProgram()
{
    const fs::path beside = ProgramFolder() / kLibraryName;
    std::error_code error;
    return fs::is_regular_file(beside, error) ? platform::Utf8FromWide(beside.native()) : std::string();
}

std::string FindServer(const platform::Registry& registry, const std::string& progId, std::string& problem)
{
    const std::optional<std::string> registered = RegisteredServerPath(registry, progId);
    if (registered) return *registered;
    problem = registry.LastProblem();
    std::string beside = ServerBesideProgram();
    if (beside.empty()) {
        problem = progId + " is not registered and there is no " + platform::Utf8FromWide(kLibraryName) +
                  " beside this program" + (problem.empty() ? "" : " (" + problem + ")");
    }
    return beside;
}

}  // namespace marbex::tools
