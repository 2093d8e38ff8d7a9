#pragma once

// The contents of a .reg file in memory: its keys in the order of the file, all hives together. A key's path here
// begins with its hive ("HKEY_LOCAL_MACHINE\SOFTWARE"). Not locked.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/registry.h"

namespace marbex::platform {

// A value as it stands in a file.
struct RegEntry {
    RegistryValue value;
    std::string literal;  // its text behind the "=", as it was read; empty: to be made from value
    std::string comment;  // the lines above it, each with its line end
};

struct RegSection {
    std::string path;
    std::string comment;
    std::vector<RegEntry> entries;
    std::unordered_map<std::string, std::size_t> places;  // entries by name without regard to case, once they are many
};

enum class RegEncoding { kUtf8, kUtf8WithMark, kUtf16 };

class RegDocument {
public:
    // Whether the key or one below it has a section.
    bool KeyExists(std::string_view path) const;
    std::vector<std::string> Subkeys(std::string_view path) const;
    const RegSection* Find(std::string_view path) const;  // null for a key without a section of its own
    const RegEntry* FindEntry(std::string_view path, std::string_view name) const;

    // The section of a key, made when it is missing: EnsureAtEnd behind all others, Ensure behind those of the nearest
    // key above it.
    RegSection& EnsureAtEnd(std::string_view path);
    RegSection& Ensure(std::string_view path);
    void Set(std::string_view path, RegEntry entry);                 // takes the place of a value of that name
    bool DeleteEntry(std::string_view path, std::string_view name);  // false when it was not there
    bool DeleteKey(std::string_view path);                           // the key above it stays

    const std::vector<RegSection>& Sections() const { return sections_; }
    std::size_t EntryCount() const { return entryCount_; }  // of all sections

    RegEncoding encoding = RegEncoding::kUtf8;
    bool carriageReturns = false;  // lines end with CR LF
    std::string closingComment;    // the lines behind the last section

private:
    std::vector<RegSection> sections_;
    std::size_t entryCount_ = 0;
    std::vector<std::string> folded_;                     // the paths of sections_, without regard to case
    std::unordered_map<std::string, std::size_t> index_;  // folded path to section

    RegSection& Insert(std::size_t place, std::string_view path, std::string foldedPath);
    void Reindex();
};

}  // namespace marbex::platform
