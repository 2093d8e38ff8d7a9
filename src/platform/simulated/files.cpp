#include "platform/files.h"

#include <algorithm>
#include <cerrno>

#include "platform/debugger.h"
#include "platform/registry.h"
#include "platform/simulated/machine/call.h"
#include "platform/simulated/machine/storage.h"

namespace marbex::platform {
namespace {

using simulated::Call;
using simulated::Storage;
using simulated::TheStorage;

// Whether something can be put into the file, which is made when it is missing.
bool Writable(const std::string& path)
{
    const Call call("open of a file");
    Storage& storage = TheStorage();
    if (call.Fails() || storage.taken == path || (storage.full && !storage.files.contains(path))) return false;
    storage.files[path];
    return true;
}

bool AppendTo(const std::string& path, std::string_view bytes)
{
    const Call call("write to a file");
    Storage& storage = TheStorage();
    if (call.Fails() || storage.full) return false;
    if (storage.onAppend) storage.onAppend(path, bytes);
    storage.files[path].append(bytes);
    return true;
}

class SimulatedFile final : public AppendFile {
public:
    explicit SimulatedFile(std::string path) : path_(std::move(path)) {}
    bool Append(std::string_view bytes) override { return AppendTo(path_, bytes); }
    uint64_t Size() const override { return TheStorage().files[path_].size(); }

private:
    const std::string path_;
};

}  // namespace

std::string NativePath(std::string_view path)
{
    std::string native;
    for (const char c : path) {
        const char separated = c == '\\' ? '/' : c;
        if (separated != '/' || !native.ends_with('/')) native += separated;
    }
    return native;
}

std::unique_ptr<AppendFile> OpenForAppend(const std::string& path, OtherWriters)
{
    const std::string native = NativePath(path);
    if (!Writable(native)) return nullptr;
    return std::make_unique<SimulatedFile>(native);
}

bool FileExists(const std::string& path)
{
    const Call call("look for a file");
    return !call.Fails() && TheStorage().files.contains(NativePath(path));
}

bool CreateEmptyFile(const std::string& path)
{
    const std::string native = NativePath(path);
    if (!Writable(native)) return false;
    TheStorage().files[native].clear();
    return true;
}

bool CreateNewFile(const std::string& path)
{
    const std::string native = NativePath(path);
    return !TheStorage().files.contains(native) && Writable(native);
}

bool AppendExclusively(const std::string& path, std::string_view bytes)
{
    const std::string native = NativePath(path);
    return Writable(native) && AppendTo(native, bytes);
}

std::optional<std::string> ReadWholeFile(const std::string& path, uint64_t limit)
{
    const Call call("read of a file");
    const auto found = TheStorage().files.find(NativePath(path));
    if (call.Fails() || found == TheStorage().files.end()) {
        errno = ENOENT;
        return std::nullopt;
    }
    if (found->second.size() > limit) return std::nullopt;
    return found->second;
}

void WriteToDebugger(std::string_view text)
{
    AppendTo("debugger", text);
}

}  // namespace marbex::platform

namespace marbex::simulated {

Storage& TheStorage()
{
    static auto& storage = *new Storage;
    return storage;
}

}  // namespace marbex::simulated
