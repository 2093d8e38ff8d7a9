// The hive as this process sees it: a 32-bit process on a 64-bit Windows is led to its own view, where the control
// objects of its width look as well.
//
// Keys are opened with the least right that an operation needs, so that whoever may read the hive can use the driver,
// and only those who change it need to be allowed to.

#include <windows.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

#include "platform/registry.h"
#include "platform/windows/per_thread.h"
#include "platform/windows/wide_text.h"

namespace marbex::platform {

namespace {

constexpr DWORD kLongestKeyName = 255;      // characters, as published
constexpr DWORD kLongestValueName = 16383;  // characters, as published
constexpr std::size_t kUsualData = 256;     // bytes; a longer value is read twice

struct Problem {
    std::string text;
};

PerThread<Problem>& LastProblemOfThread()
{
    static PerThread<Problem> problem;
    return problem;
}

void ForgetProblem()
{
    if (Problem* const last = LastProblemOfThread().Find()) last->text.clear();
}

struct KeyCloser {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

std::string_view Trimmed(std::string_view path)
{
    while (path.starts_with('\\'))
        path.remove_prefix(1);
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    return path;
}

std::string FullPath(std::string_view path)
{
    std::string full = "HKEY_LOCAL_MACHINE";
    if (!Trimmed(path).empty()) full.append("\\").append(Trimmed(path));
    return full;
}

// The functions take names that end with a zero: behind one that has a zero inside, another key would answer.
bool IsName(std::string_view name)
{
    return name.find('\0') == std::string_view::npos;
}

std::string SystemMessage(LSTATUS error)
{
    std::wstring text(512, L'\0');
    text.resize(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                               static_cast<DWORD>(error), 0, text.data(), static_cast<DWORD>(text.size()), nullptr));
    while (text.ends_with(L'\n') || text.ends_with(L'\r') || text.ends_with(L' '))
        text.pop_back();
    return Utf8FromWide(text) + " (error " + std::to_string(error) + ")";
}

bool Refuse(std::string problem)
{
    if (Problem* const last = LastProblemOfThread().FindOrMake()) last->text = std::move(problem);
    return false;
}

bool Refuse(std::string_view path, const char* what, LSTATUS error)
{
    return Refuse(FullPath(path) + ": " + what + ": " + SystemMessage(error));
}

bool RefuseMissing(std::string_view path)
{
    return Refuse("there is no key " + FullPath(path));
}

bool IsMissing(LSTATUS error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

LSTATUS Open(std::string_view path, REGSAM rights, UniqueKey& key)
{
    if (!IsName(path)) return ERROR_FILE_NOT_FOUND;
    HKEY opened = nullptr;
    const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, WideFromUtf8(Trimmed(path)).c_str(), 0, rights, &opened);
    if (error == ERROR_SUCCESS) key.reset(opened);
    return error;
}

// For reading; a key that is missing is no problem, one that may not be read is.
UniqueKey OpenToRead(std::string_view path)
{
    UniqueKey key;
    const LSTATUS error = Open(path, KEY_READ, key);
    if (error != ERROR_SUCCESS && !IsMissing(error)) Refuse(path, "cannot be opened", error);
    return key;
}

bool IsText(RegistryType type)
{
    return type == RegistryType::kSz || type == RegistryType::kExpandSz || type == RegistryType::kMultiSz;
}

// Text as stored. It need not end with a zero, nor with a whole character; drivers leave rubbish behind the zero.
std::string TextOf(RegistryType type, std::string_view bytes)
{
    std::u16string wide;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        wide +=
            static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    if (type != RegistryType::kMultiSz) wide.erase(std::min(wide.find(u'\0'), wide.size()));
    return Utf8FromUtf16(wide);
}

std::string StoredForm(const RegistryValue& value)
{
    if (!IsText(value.type)) return value.data;
    std::u16string wide = Utf16FromUtf8(value.data);
    if (value.type != RegistryType::kMultiSz) wide += u'\0';
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char16_t)};
}

LSTATUS ReadValue(HKEY key, const std::wstring& name, RegistryValue& value)
{
    std::string bytes(kUsualData, '\0');
    DWORD type = REG_NONE;
    LSTATUS error = ERROR_MORE_DATA;
    // Again, for it may grow between two readings.
    while (error == ERROR_MORE_DATA) {
        auto size = static_cast<DWORD>(bytes.size());
        error = RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
        bytes.resize(size);
    }
    if (error != ERROR_SUCCESS) return error;
    value.name = Utf8FromWide(name);
    value.type = static_cast<RegistryType>(type);
    value.data = IsText(value.type) ? TextOf(value.type, bytes) : std::move(bytes);
    return ERROR_SUCCESS;
}

std::vector<std::wstring> ValueNames(HKEY key)
{
    std::vector<std::wstring> names;
    std::wstring name(kLongestValueName + 1, L'\0');
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS error = RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (error != ERROR_SUCCESS) return names;
        names.push_back(name.substr(0, length));
    }
}

class WindowsRegistry final : public Registry {
public:
    bool KeyExists(std::string_view path) const override
    {
        ForgetProblem();
        return OpenToRead(path) != nullptr;
    }

    std::optional<std::vector<std::string>> Subkeys(std::string_view path) const override
    {
        ForgetProblem();
        const UniqueKey key = OpenToRead(path);
        if (key == nullptr) return std::nullopt;
        std::vector<std::string> names;
        std::wstring name(kLongestKeyName + 1, L'\0');
        for (DWORD index = 0;; ++index) {
            auto length = static_cast<DWORD>(name.size());
            const LSTATUS error =
                RegEnumKeyExW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
            if (error != ERROR_SUCCESS) return names;
            names.push_back(Utf8FromWide(std::wstring_view(name).substr(0, length)));
        }
    }

    std::optional<std::vector<RegistryValue>> Values(std::string_view path) const override
    {
        ForgetProblem();
        const UniqueKey key = OpenToRead(path);
        if (key == nullptr) return std::nullopt;
        std::vector<RegistryValue> values;
        for (const std::wstring& name : ValueNames(key.get())) {
            RegistryValue value;
            // One that was deleted since it was named is not there.
            if (ReadValue(key.get(), name, value) == ERROR_SUCCESS) values.push_back(std::move(value));
        }
        return values;
    }

    std::optional<RegistryValue> Value(std::string_view path, std::string_view name) const override
    {
        ForgetProblem();
        const UniqueKey key = OpenToRead(path);
        if (key == nullptr || !IsName(name)) return std::nullopt;
        RegistryValue value;
        const LSTATUS error = ReadValue(key.get(), WideFromUtf8(name), value);
        if (error == ERROR_SUCCESS) return value;
        if (!IsMissing(error)) Refuse(path, "cannot be read", error);
        return std::nullopt;
    }

    bool CreateKey(std::string_view path) override
    {
        ForgetProblem();
        if (!IsName(path) || Trimmed(path).find("\\\\") != std::string_view::npos)
            return Refuse("a key cannot be named \"" + std::string(path) + "\"");
        UniqueKey existing;
        if (Open(path, KEY_READ, existing) == ERROR_SUCCESS) return true;
        HKEY created = nullptr;
        const LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, WideFromUtf8(Trimmed(path)).c_str(), 0, nullptr,
                                              REG_OPTION_NON_VOLATILE, KEY_QUERY_VALUE, nullptr, &created, nullptr);
        if (error != ERROR_SUCCESS) return Refuse(path, "cannot be created", error);
        RegCloseKey(created);
        return true;
    }

    bool SetValue(std::string_view path, const RegistryValue& value) override
    {
        ForgetProblem();
        if (!IsName(value.name)) return Refuse("a value cannot have a zero in its name");
        UniqueKey key;
        LSTATUS error = Open(path, KEY_SET_VALUE, key);
        if (IsMissing(error)) return RefuseMissing(path);
        if (error == ERROR_SUCCESS) {
            const std::string bytes = StoredForm(value);
            error = RegSetValueExW(key.get(), WideFromUtf8(value.name).c_str(), 0, static_cast<DWORD>(value.type),
                                   reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
        }
        return error == ERROR_SUCCESS || Refuse(path, "cannot be written", error);
    }

    bool DeleteValue(std::string_view path, std::string_view name) override
    {
        ForgetProblem();
        UniqueKey key;
        LSTATUS error = IsName(name) ? Open(path, KEY_SET_VALUE, key) : ERROR_FILE_NOT_FOUND;
        if (error == ERROR_SUCCESS) error = RegDeleteValueW(key.get(), WideFromUtf8(name).c_str());
        if (IsMissing(error)) return Refuse("there is no value \"" + std::string(name) + "\" in " + FullPath(path));
        return error == ERROR_SUCCESS || Refuse(path, "cannot be written", error);
    }

    bool DeleteKey(std::string_view path) override
    {
        ForgetProblem();
        if (Trimmed(path).empty()) return Refuse("the hive itself cannot be deleted");
        UniqueKey key;
        LSTATUS error = Open(path, DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE, key);
        if (IsMissing(error)) return RefuseMissing(path);
        if (error == ERROR_SUCCESS) error = RegDeleteTreeW(key.get(), nullptr);
        if (error == ERROR_SUCCESS) error = RegDeleteKeyW(HKEY_LOCAL_MACHINE, WideFromUtf8(Trimmed(path)).c_str());
        return error == ERROR_SUCCESS || Refuse(path, "cannot be deleted", error);
    }

    std::string LastProblem() const override
    {
        const Problem* const last = LastProblemOfThread().Find();
        return last != nullptr ? last->text : std::string();
    }
};

}  // namespace

Registry& SystemRegistry()
{
    // Never destroyed: a thread that outlives main may still ask.
    static WindowsRegistry& registry = *new WindowsRegistry;
    return registry;
}

}  // namespace marbex::platform
