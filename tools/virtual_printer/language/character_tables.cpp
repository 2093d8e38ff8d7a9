#include "virtual_printer/language/character_tables.h"

#include <iconv.h>

#include <map>
#include <mutex>
#include <string>

namespace marbex::virtual_printer {
namespace {

constexpr std::string_view kKatakana = "katakana";  // JIS X 0201, upper half

struct TableCode {
    uint8_t number;
    std::string_view charset;
};

constexpr TableCode kTables[] = {
    {0, "CP437"},   {1, kKatakana}, {2, "CP850"},   {3, "CP860"},   {4, "CP863"},   {5, "CP865"},
    {13, "CP857"},  {14, "CP737"},  {17, "CP866"},  {18, "CP852"},  {19, "CP858"},  {20, "CP874"},
    {34, "CP855"},  {36, "CP862"},  {37, "CP864"},  {45, "CP1252"}, {46, "CP1251"}, {47, "CP1253"},
    {48, "CP1254"}, {49, "CP1255"}, {50, "CP1256"}, {51, "CP1257"}, {52, "CP1258"},
};

// One open converter to UTF-32, reset before each use. A character set that composes (CP1255, CP1258) keeps a base
// letter back until it is flushed.
class Converter {
public:
    explicit Converter(std::string_view charset) : handle_(iconv_open("UTF-32LE", std::string(charset).c_str())) {}
    ~Converter()
    {
        if (Usable()) {
            iconv_close(handle_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    std::optional<char32_t> Convert(std::string_view bytes)
    {
        if (!Usable()) {
            return std::nullopt;
        }
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        std::string source(bytes);
        char* in = source.data();
        std::size_t inLeft = source.size();
        std::array<char, 16> target{};
        char* out = target.data();
        std::size_t outLeft = target.size();
        if (iconv(handle_, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) || inLeft != 0 ||
            iconv(handle_, nullptr, nullptr, &out, &outLeft) == static_cast<std::size_t>(-1) ||
            target.size() - outLeft != 4) {
            return std::nullopt;
        }
        char32_t character = 0;
        for (std::size_t i = 4; i-- > 0;) {
            character = (character << 8) | static_cast<unsigned char>(target[i]);
        }
        return character;
    }

private:
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says that it failed
    bool Usable() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t handle_;
};

CharacterTable MakeTable(std::string_view charset)
{
    CharacterTable table;
    table.fill(kNoCharacter);
    for (unsigned i = 0x20; i < 0x7F; ++i) {
        table[i] = static_cast<char32_t>(i);  // the lower half is ASCII in every table of the printer
    }
    if (charset == kKatakana) {
        for (unsigned i = 0xA1; i <= 0xDF; ++i) {
            table[i] = static_cast<char32_t>(0xFF61 + (i - 0xA1));
        }
        return table;
    }
    Converter converter(charset);
    for (unsigned i = 0x80; i <= 0xFF; ++i) {
        const char byte = static_cast<char>(i);
        table[i] = converter.Convert({&byte, 1}).value_or(kNoCharacter);
    }
    return table;
}

}  // namespace

const CharacterTable& SingleByteTable(std::string_view charset)
{
    static std::mutex mutex;
    static std::map<std::string, CharacterTable, std::less<>> tables;
    const std::lock_guard lock(mutex);
    const auto found = tables.find(charset);
    return found != tables.end() ? found->second : tables.emplace(charset, MakeTable(charset)).first->second;
}

const CharacterTable* PrinterTable(uint8_t number)
{
    for (const TableCode& table : kTables) {
        if (table.number == number) {
            return &SingleByteTable(table.charset);
        }
    }
    return nullptr;
}

std::optional<char32_t> Decode(std::string_view charset, std::string_view bytes)
{
    return Converter(charset).Convert(bytes);
}

DoubleByteAssembler::Result DoubleByteAssembler::Put(uint8_t byte)
{
    bytes_.push_back(static_cast<char>(byte));
    if (bytes_.size() == 1) {
        if (byte < 0x80) {
            bytes_.clear();
            return {true, byte};
        }
        return byte == 0x80 || byte == 0xFF ? Result{true, kNoCharacter} : Result{};
    }
    const bool fourBytes = mode_ == DoubleByteMode::kGb18030 && bytes_[1] >= '0' && bytes_[1] <= '9';
    if (bytes_.size() < (fourBytes ? 4U : 2U)) {
        return {};
    }
    const auto decoded = Decode(mode_ == DoubleByteMode::kGb18030 ? "GB18030" : "CP949", bytes_);
    if (decoded) {
        bytes_.clear();
    }
    return {true, decoded.value_or(kNoCharacter)};
}

void AppendUtf8(std::string& text, char32_t character)
{
    const auto tail = [&text, character](int shift) {
        text.push_back(static_cast<char>(0x80 | ((character >> shift) & 0x3F)));
    };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0 | (character >> 6)));
        tail(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0 | (character >> 12)));
        tail(6);
        tail(0);
    } else {
        text.push_back(static_cast<char>(0xF0 | (character >> 18)));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace marbex::virtual_printer
