#pragma once

// Keys and values under the local-machine hive (HKEY_LOCAL_MACHINE). Paths are relative to it, separated by
// backslashes, compared without regard to case, like value names; the empty path is the hive itself and the empty
// value name a key's default value. Names and text are UTF-8 here.
//
// On POSIX one text file in the .reg format holds the hive. Every operation may be called from any thread.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::platform {

// The registry's value types, by their published numbers.
enum class RegistryType : uint32_t {
    kNone = 0,
    kSz = 1,
    kExpandSz = 2,
    kBinary = 3,
    kDword = 4,
    kDwordBigEndian = 5,
    kLink = 6,
    kMultiSz = 7,
    kQword = 11,
};

struct RegistryValue {
    std::string name;  // empty: the key's default value
    RegistryType type = RegistryType::kNone;
    // Numbers little-endian; text as UTF-8 without its terminating zero, REG_MULTI_SZ with its zeros; the rest as
    // stored.
    std::string data;
};

class Registry {
public:
    virtual ~Registry() = default;

    virtual bool KeyExists(std::string_view path) const = 0;
    // The names of the direct subkeys; none when the key cannot be opened.
    virtual std::optional<std::vector<std::string>> Subkeys(std::string_view path) const = 0;
    // All values of a key, the default value included when it is set; none when the key cannot be opened.
    virtual std::optional<std::vector<RegistryValue>> Values(std::string_view path) const = 0;
    virtual std::optional<RegistryValue> Value(std::string_view path, std::string_view name) const = 0;

    // The following return false when the registry cannot be written (or, for POSIX, its file cannot be parsed).
    virtual bool CreateKey(std::string_view path) = 0;  // with all keys above it; true when it is there already
    virtual bool SetValue(std::string_view path, const RegistryValue& value) = 0;  // false when the key is missing
    virtual bool DeleteValue(std::string_view path, std::string_view name) = 0;    // false when it is not there
    virtual bool DeleteKey(std::string_view path) = 0;  // with all its values and subkeys; false when it is not there

    // Why the last operation of the calling thread failed or the file could not be read, for a person: for POSIX with
    // file and line. Empty when there is nothing to say.
    virtual std::string LastProblem() const = 0;
};

// The registry of this machine. On POSIX the file $MARBEX_OPOS_REGISTRY, else /etc/marbex-opos/registry.reg when it can
// be read, else ~/.config/marbex-opos/registry.reg. Each call looks for the file anew; between two calls its place is
// fixed. Only the application's threads call this: an application may change its environment while ours are running.
Registry& SystemRegistry();

// POSIX paths: a backslash is a separator, and a drive ("C:") is the folder drive_c (one a letter) beside the registry
// file, made when it is missing. A path without a drive, such as one that begins with "/", keeps its place; several
// separators in a row are one. On Windows the path is returned as it is.
std::string NativePath(std::string_view path);

// Whether two names of keys, values or devices are the same: without regard to case in the Latin, Greek and Cyrillic
// alphabets.
bool SameName(std::string_view one, std::string_view other);

}  // namespace marbex::platform
