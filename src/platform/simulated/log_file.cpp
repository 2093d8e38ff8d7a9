#include "platform/log_file.h"

#include "platform/files.h"
#include "platform/registry.h"
#include "platform/simulated/machine/call.h"
#include "platform/simulated/machine/storage.h"

namespace marbex::platform {

using simulated::TheStorage;

bool AppendShared(const std::string& path, std::string_view bytes, uint64_t limit)
{
    if (limit != 0) SetAside(path, limit);
    const auto file = OpenForAppend(path, OtherWriters::kAdmitted);
    return file != nullptr && file->Append(bytes);
}

bool SetAside(const std::string& path, uint64_t limit)
{
    const simulated::Call call("renaming a file");
    auto& files = TheStorage().files;
    const std::string native = NativePath(path);
    const auto found = files.find(native);
    if (found == files.end() || found->second.size() < limit) return true;
    if (call.Fails() || TheStorage().taken == native) return false;
    files[native + ".1"] = std::move(found->second);
    files.erase(native);
    return true;
}

}  // namespace marbex::platform
