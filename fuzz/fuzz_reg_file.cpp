// Any bytes are either refused or read; what was read and written must read the same.

#include <cstdlib>

#include "platform/reg_file.h"

using marbex::platform::ParseRegFile;
using marbex::platform::RegDocument;
using marbex::platform::WriteRegFile;

namespace {

bool Same(const RegDocument& one, const RegDocument& other)
{
    if (one.Sections().size() != other.Sections().size()) return false;
    for (std::size_t i = 0; i < one.Sections().size(); ++i) {
        const auto& a = one.Sections()[i];
        const auto& b = other.Sections()[i];
        if (a.path != b.path || a.entries.size() != b.entries.size()) return false;
        for (std::size_t j = 0; j < a.entries.size(); ++j) {
            const auto& x = a.entries[j].value;
            const auto& y = b.entries[j].value;
            if (x.name != y.name || x.type != y.type || x.data != y.data) return false;
        }
    }
    return true;
}

RegDocument Reread(const RegDocument& document)
{
    auto again = ParseRegFile(WriteRegFile(document));
    auto* read = std::get_if<RegDocument>(&again);
    if (read == nullptr) std::abort();
    return std::move(*read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto result = ParseRegFile({reinterpret_cast<const char*>(data), size});
    const auto* document = std::get_if<RegDocument>(&result);
    if (document == nullptr) return 0;
    if (!Same(*document, Reread(*document))) std::abort();

    // The same values without their literals, as a program would have set them.
    RegDocument made;
    for (const auto& section : document->Sections()) {
        made.EnsureAtEnd(section.path);
        for (const auto& entry : section.entries)
            made.Set(section.path, {entry.value, {}, {}});
    }
    if (!Same(made, Reread(made))) std::abort();

    // Deleting a key leaves no trace of it, and the file readable.
    if (!document->Sections().empty()) {
        const std::string victim = document->Sections().front().path;
        made.DeleteKey(victim);
        if (made.KeyExists(victim)) std::abort();
        Reread(made);
    }
    return 0;
}
