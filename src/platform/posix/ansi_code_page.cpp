#include <atomic>
#include <charconv>

#include "platform/code_page.h"
#include "platform/text.h"

namespace marbex::platform {

namespace {

constexpr const char* kCodePageKey = "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";

std::atomic<uint32_t> ansiCodePage{0};  // 0: not read yet

}  // namespace

uint32_t AnsiCodePage()
{
    const uint32_t number = ansiCodePage.load(std::memory_order_relaxed);
    if (number != 0) return number;
    LoadAnsiCodePage(SystemRegistry());
    return ansiCodePage.load(std::memory_order_relaxed);
}

void LoadAnsiCodePage(const Registry& registry)
{
    uint32_t number = 0;
    const auto value = registry.Value(kCodePageKey, "ACP");
    if (value && value->type == RegistryType::kSz) {
        const char* end = value->data.data() + value->data.size();
        const auto read = std::from_chars(value->data.data(), end, number);
        if (read.ec != std::errc() || read.ptr != end) number = 0;
    }
    ansiCodePage.store(FindCodePage(number) != nullptr ? number : kWesternNumber, std::memory_order_relaxed);
}

}  // namespace marbex::platform
