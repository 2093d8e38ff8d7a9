#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "platform/code_page.h"
#include "platform/reg_file.h"
#include "platform/text.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

constexpr std::string_view kVersion5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kVersion4 = "REGEDIT4";
constexpr std::string_view kBlanks = " \t\r";

// Far above what a branch of a till's registry holds, so that reading takes seconds at the most and not all the memory.
constexpr std::size_t kMostKeys = 100'000;
constexpr std::size_t kMostValues = 400'000;
constexpr std::size_t kMostDeletions = 100;  // a file that only says what there is has none
constexpr std::size_t kDeepestKey = 512;     // parts, as for Windows

struct HiveName {
    std::string_view name, full;
};
constexpr std::array<HiveName, 10> kHives{{
    {"HKEY_LOCAL_MACHINE", "HKEY_LOCAL_MACHINE"},
    {"HKLM", "HKEY_LOCAL_MACHINE"},
    {"HKEY_CLASSES_ROOT", "HKEY_CLASSES_ROOT"},
    {"HKCR", "HKEY_CLASSES_ROOT"},
    {"HKEY_CURRENT_USER", "HKEY_CURRENT_USER"},
    {"HKCU", "HKEY_CURRENT_USER"},
    {"HKEY_USERS", "HKEY_USERS"},
    {"HKU", "HKEY_USERS"},
    {"HKEY_CURRENT_CONFIG", "HKEY_CURRENT_CONFIG"},
    {"HKCC", "HKEY_CURRENT_CONFIG"},
}};

std::string_view TrimLeft(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string_view TrimRight(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return lower;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsText(RegistryType type)
{
    return type == RegistryType::kSz || type == RegistryType::kExpandSz || type == RegistryType::kMultiSz;
}

// Text ends with its first zero; drivers leave rubbish behind it.
void DropTerminator(std::string& text)
{
    text.erase(std::min(text.find('\0'), text.size()));
}

// The older version is written in the ANSI code page of the machine it comes from. Which one that is, the file does not
// tell, and the page of this machine may be what the file is read for.
std::string Utf8FromWestern(std::string_view bytes)
{
    std::u16string wide;
    FindCodePage(1252)->Widen(bytes, wide);
    return Utf8FromUtf16(wide);
}

// The bytes of a text value as hex(N) tells them, in the form RegistryValue wants.
std::string TextOf(RegistryType type, const std::string& bytes, bool ansi)
{
    std::string text;
    if (ansi) {
        text = Utf8FromWestern(bytes);
    } else {
        std::u16string wide;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8);
        }
        text = Utf8FromUtf16(wide);
    }
    if (type != RegistryType::kMultiSz) DropTerminator(text);
    return text;
}

// One pass over the text of a file. The first problem ends it.
class Parser {
public:
    Parser(std::string_view text, bool ansi, RegDocument& document) : rest_(text), ansi_(ansi), document_(document) {}

    std::optional<RegParseProblem> Run()
    {
        while (!problem_ && NextLine()) {
            const std::string_view line = TrimLeft(line_);
            if (line.empty() || line.front() == ';') {
                // One empty line before a section is how the file is set out, not a comment.
                if (!line.empty()) comment_ += std::string(TrimRight(line)) + "\n";
            } else if (line.front() == '[') {
                ReadSection(line);
            } else if (line.front() == '"' || line.front() == '@') {
                ReadValue(line);
            } else {
                Fail("neither a key in brackets nor a value that begins with a quote or @");
            }
        }
        document_.closingComment = std::move(comment_);
        return std::move(problem_);
    }

private:
    std::string_view rest_;
    bool ansi_;
    RegDocument& document_;
    std::size_t lineNumber_ = 1;  // of the line that comes next; the first line was the header
    std::size_t entryLine_ = 1;
    std::string_view line_;
    std::string comment_;
    std::optional<std::string> section_;  // none before the first key; empty below a deleted one
    std::size_t deletions_ = 0;
    std::optional<RegParseProblem> problem_;

    void Fail(std::string message)
    {
        if (!problem_) problem_ = RegParseProblem{entryLine_, std::move(message)};
    }

    // Takes a line without its end into line_.
    bool TakeLine()
    {
        if (rest_.empty()) return false;
        const std::size_t end = rest_.find('\n');
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        if (line_.ends_with('\r')) line_.remove_suffix(1);
        ++lineNumber_;
        return true;
    }

    bool NextLine()
    {
        entryLine_ = lineNumber_ + 1;
        return TakeLine();
    }

    void ReadSection(std::string_view line)
    {
        const std::size_t end = line.rfind(']');
        if (end == std::string_view::npos) return Fail("a key without its closing bracket");
        const std::string_view behind = TrimLeft(line.substr(end + 1));
        if (!behind.empty() && behind.front() != ';') return Fail("text behind a key's closing bracket");
        std::string_view path = line.substr(1, end - 1);
        const bool deleted = path.starts_with('-');
        if (deleted) path.remove_prefix(1);
        while (path.ends_with('\\'))
            path.remove_suffix(1);

        const std::size_t hiveEnd = std::min(path.find('\\'), path.size());
        const auto hive = std::find_if(kHives.begin(), kHives.end(), [&](const HiveName& known) {
            return SameName(known.name, path.substr(0, hiveEnd));
        });
        if (hive == kHives.end()) return Fail("a key that does not begin with a hive such as HKEY_LOCAL_MACHINE");
        const std::string full = std::string(hive->full) + std::string(path.substr(hiveEnd));
        if (full.find("\\\\") != std::string::npos) return Fail("a key with an empty part");

        if (std::count(full.begin(), full.end(), '\\') > static_cast<std::ptrdiff_t>(kDeepestKey))
            return Fail("a key of more than 512 parts");

        if (deleted) {
            if (++deletions_ > kMostDeletions) return Fail("more than 100 deletions");
            document_.DeleteKey(full);
            section_ = std::string();
            comment_.clear();
            return;
        }
        document_.EnsureAtEnd(full).comment += std::exchange(comment_, {});
        if (document_.Sections().size() > kMostKeys) return Fail("more than 100000 keys");
        section_ = full;
    }

    void ReadValue(std::string_view line)
    {
        if (!section_) return Fail("a value before the first key");
        RegEntry entry;
        std::string_view text = line;
        if (text.front() == '@') {
            text.remove_prefix(1);
        } else if (!ReadQuoted(text, entry.value.name, false)) {
            return Fail("a name without its closing quote");
        }
        text = TrimLeft(text);
        if (!text.starts_with('=')) return Fail("a name without a = behind it");
        text = TrimLeft(text.substr(1));
        entry.comment = std::exchange(comment_, {});

        if (text.starts_with('-')) {
            RequireEnd(text.substr(1), "text behind the - that deletes a value");
            if (++deletions_ > kMostDeletions) return Fail("more than 100 deletions");
            if (!problem_ && !section_->empty()) document_.DeleteEntry(*section_, entry.value.name);
            return;
        }
        ReadData(text, entry);
        if (!problem_ && !section_->empty()) document_.Set(*section_, std::move(entry));
        if (document_.EntryCount() > kMostValues) Fail("more than 400000 values");
    }

    void ReadData(std::string_view text, RegEntry& entry)
    {
        const char* start = text.data();
        const std::string kind = Lower(text.substr(0, text.find(':')));
        if (text.starts_with('"')) {
            entry.value.type = RegistryType::kSz;
            if (!ReadQuoted(text, entry.value.data, true)) return Fail("a text without its closing quote");
            DropTerminator(entry.value.data);
            RequireEnd(text, "text behind the closing quote");
        } else if (text.size() > kind.size() && kind == "dword") {
            entry.value.type = RegistryType::kDword;
            ReadDword(text.substr(kind.size() + 1), entry.value.data);
        } else if (text.size() > kind.size() && kind.starts_with("hex")) {
            if (!ReadHexKind(kind, entry.value.type)) return Fail("a kind that is not hex:, nor hex(...):");
            text.remove_prefix(kind.size() + 1);
            if (!ReadBytes(text, entry.value.data))
                return Fail("bytes that are not pairs of hexadecimal digits with commas");
            if (IsText(entry.value.type)) entry.value.data = TextOf(entry.value.type, entry.value.data, ansi_);
        } else {
            return Fail("a value that is neither text in quotes, nor dword:, nor hex:");
        }
        // What the older version tells with bytes of the ANSI code page has to be told anew.
        if (!ansi_ && !problem_) {
            entry.literal = TrimRight({start, static_cast<std::size_t>(line_.data() + line_.size() - start)});
        }
    }

    // Reads a quoted text, which may run over several lines when mayContinue is set, and leaves text behind its closing
    // quote.
    bool ReadQuoted(std::string_view& text, std::string& result, bool mayContinue)
    {
        text.remove_prefix(1);
        for (;;) {
            if (text.empty()) {
                if (!mayContinue || !TakeLine()) return false;
                result += document_.carriageReturns ? "\r\n" : "\n";
                text = line_;
            } else if (text.front() == '"') {
                text.remove_prefix(1);
                return true;
            } else if (text.starts_with("\\\\") || text.starts_with("\\\"")) {
                // Nothing else is an escape: a path typed with single backslashes stays a path.
                result += text[1];
                text.remove_prefix(2);
            } else {
                result += text.front();
                text.remove_prefix(1);
            }
        }
    }

    void RequireEnd(std::string_view text, const char* complaint)
    {
        text = TrimLeft(text);
        if (!text.empty() && text.front() != ';') Fail(complaint);
    }

    void ReadDword(std::string_view text, std::string& data)
    {
        text = TrimLeft(text);
        uint32_t number = 0;
        std::size_t digits = 0;
        for (; digits < text.size() && HexDigit(text[digits]) >= 0; ++digits) {
            number = number << 4 | static_cast<uint32_t>(HexDigit(text[digits]));
        }
        if (digits == 0 || digits > 8) return Fail("dword: without one to eight hexadecimal digits");
        RequireEnd(text.substr(digits), "text behind the digits of dword:");
        for (int shift = 0; shift < 32; shift += 8)
            data += static_cast<char>(number >> shift & 0xFF);
    }

    static bool ReadHexKind(std::string_view kind, RegistryType& type)
    {
        if (kind == "hex") {
            type = RegistryType::kBinary;
            return true;
        }
        if (!kind.starts_with("hex(") || !kind.ends_with(')')) return false;
        const std::string_view digits = kind.substr(4, kind.size() - 5);
        uint32_t number = 0;
        for (const char c : digits) {
            if (HexDigit(c) < 0) return false;
            number = number << 4 | static_cast<uint32_t>(HexDigit(c));
        }
        type = static_cast<RegistryType>(number);
        return !digits.empty() && digits.size() <= 8;
    }

    bool ReadBytes(std::string_view text, std::string& data)
    {
        bool separated = true;
        for (;;) {
            text = TrimLeft(text);
            if (text.empty() || text.front() == ';') return true;
            if (text.front() == '\\') {
                if (!TrimLeft(text.substr(1)).empty() || !TakeLine()) return false;
                text = line_;
            } else if (text.front() == ',') {
                if (separated) return false;
                separated = true;
                text.remove_prefix(1);
            } else {
                if (!separated) return false;
                separated = false;
                int byte = HexDigit(text.front());
                if (byte < 0) return false;
                text.remove_prefix(1);
                if (!text.empty() && HexDigit(text.front()) >= 0) {
                    byte = byte * 16 + HexDigit(text.front());
                    text.remove_prefix(1);
                }
                data += static_cast<char>(byte);
            }
        }
    }
};

// The file as UTF-8 without byte order mark.
std::string Decode(std::string_view bytes, RegEncoding& encoding)
{
    const auto utf16 = [bytes](unsigned lowAt) {
        std::u16string wide;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i + lowAt]) |
                                          static_cast<unsigned char>(bytes[i + 1 - lowAt]) << 8);
        }
        return Utf8FromUtf16(wide);
    };
    encoding = RegEncoding::kUtf16;
    if (bytes.starts_with("\xFF\xFE")) return utf16(0);
    if (bytes.starts_with("\xFE\xFF")) return utf16(1);
    encoding = bytes.starts_with("\xEF\xBB\xBF") ? RegEncoding::kUtf8WithMark : RegEncoding::kUtf8;
    return std::string(bytes.substr(encoding == RegEncoding::kUtf8WithMark ? 3 : 0));
}

std::size_t LineOfFirstMalformed(std::string_view text)
{
    std::size_t line = 1;
    while (!text.empty()) {
        const Utf8Character character = DecodeUtf8(text);
        if (!character.wellFormed) break;
        if (character.value == '\n') ++line;
        text.remove_prefix(character.length);
    }
    return line;
}

}  // namespace

std::variant<RegDocument, RegParseProblem> ParseRegFile(std::string_view bytes)
{
    RegDocument document;
    std::string text = Decode(bytes, document.encoding);
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) return document;

    const std::size_t end = std::min(text.find('\n'), text.size());
    document.carriageReturns = end > 0 && text[end - 1] == '\r';
    const std::string header(TrimRight(std::string_view(text).substr(0, end)));
    const bool ansi = header == kVersion4;
    if (!ansi && header != kVersion5) {
        return RegParseProblem{1, "the first line is not \"" + std::string(kVersion5) + "\""};
    }
    if (!IsUtf8(text)) {
        if (!ansi) return RegParseProblem{LineOfFirstMalformed(text), "text that is neither UTF-8 nor UTF-16"};
        text = Utf8FromWestern(text);
    }
    // The header is ASCII, so it ends where it did.
    Parser parser(std::string_view(text).substr(std::min(end + 1, text.size())), ansi, document);
    if (auto problem = parser.Run()) return std::move(*problem);
    return document;
}

}  // namespace marbex::platform
