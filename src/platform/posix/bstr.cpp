// BSTR: a byte count of four bytes, the text, and a terminating zero; the pointer is to the text.

#include <marbex/automation.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The count stands at the end of a prefix that keeps the text as aligned as malloc made it for pointers.
constexpr std::size_t kPrefix = 8;
constexpr std::size_t kCountOffset = kPrefix - sizeof(uint32_t);
constexpr UINT kLongest = 0x3FFFFFF0;

}  // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT length)
{
    if (length > kLongest) return nullptr;
    const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
    auto* const block = static_cast<unsigned char*>(std::calloc(1, kPrefix + bytes + sizeof(OLECHAR)));
    if (block == nullptr) return nullptr;
    const auto count = static_cast<uint32_t>(bytes);
    std::memcpy(block + kCountOffset, &count, sizeof count);
    if (text != nullptr) std::memcpy(block + kPrefix, text, bytes);
    return reinterpret_cast<BSTR>(block + kPrefix);
}

BSTR SysAllocString(const OLECHAR* text)
{
    if (text == nullptr) return nullptr;
    return SysAllocStringLen(text, static_cast<UINT>(std::char_traits<OLECHAR>::length(text)));
}

void SysFreeString(BSTR text)
{
    if (text != nullptr) std::free(reinterpret_cast<unsigned char*>(text) - kPrefix);
}

UINT SysStringByteLen(BSTR text)
{
    if (text == nullptr) return 0;
    uint32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const unsigned char*>(text) - sizeof count, sizeof count);
    return count;
}

UINT SysStringLen(BSTR text)
{
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}
