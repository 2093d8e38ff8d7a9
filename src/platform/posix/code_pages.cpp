#include <algorithm>
#include <array>
#include <atomic>

#include "platform/code_page.h"
#include "platform/lock.h"
#include "platform/posix/iconv_converter.h"
#include "platform/posix/iconv_handle.h"

namespace marbex::platform {

namespace {

struct KnownPage {
    uint32_t number;
    const char* iconvName;
};

// In the order of their numbers.
constexpr auto kKnownPages = std::to_array<KnownPage>({
    {437, "CP437"},         {720, "CP720"},         {737, "CP737"},         {775, "CP775"},
    {850, "CP850"},         {852, "CP852"},         {855, "CP855"},         {857, "CP857"},
    {858, "CP858"},         {860, "CP860"},         {861, "CP861"},         {862, "CP862"},
    {863, "CP863"},         {864, "CP864"},         {865, "CP865"},         {866, "CP866"},
    {869, "CP869"},         {874, "WINDOWS-874"},   {932, "CP932"},         {936, "CP936"},
    {949, "UHC"},           {950, "CP950"},         {1250, "CP1250"},       {1251, "CP1251"},
    {1252, "CP1252"},       {1253, "CP1253"},       {1254, "CP1254"},       {1255, "CP1255"},
    {1256, "CP1256"},       {1257, "CP1257"},       {1258, "CP1258"},       {1361, "CP1361"},
    {10000, "MACINTOSH"},   {10007, "CP10007"},     {20127, "US-ASCII"},    {20866, "KOI8-R"},
    {21866, "KOI8-U"},      {28591, "ISO-8859-1"},  {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},  {28595, "ISO-8859-5"},  {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},  {28599, "ISO-8859-9"},  {28600, "ISO-8859-10"}, {28601, "ISO-8859-11"},
    {28603, "ISO-8859-13"}, {28604, "ISO-8859-14"}, {28605, "ISO-8859-15"}, {28606, "ISO-8859-16"},
    {51932, "EUC-JP"},      {51936, "EUC-CN"},      {51949, "EUC-KR"},      {54936, "GB18030"},
    {65001, nullptr},
});

// Lead bytes of Windows that the C library takes for undefined: of the characters that users define. What they begin is
// a character nobody knows, not two others.
bool BeginsUsersCharacter(uint32_t number, unsigned byte)
{
    return (number == 949 || number == 950) && byte >= 0x81 && byte <= 0xFE;
}

std::unique_ptr<CodePage> MakeIconvPage(const KnownPage& page)
{
    IconvHandle toUtf16("UTF-16LE", page.iconvName);
    if (!toUtf16.IsOpen()) return nullptr;
    char16_t single[256];
    bool hasLeadBytes = false;
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<unsigned char>(value);
        char16_t room[4];
        std::size_t used = 0;
        const int error = toUtf16.Convert(&byte, 1, room, sizeof room, used);
        const bool isCharacter = error == 0 && used == sizeof(char16_t);
        const bool isLead = error == EINVAL || (!isCharacter && BeginsUsersCharacter(page.number, value));
        hasLeadBytes = hasLeadBytes || isLead;
        single[value] = isCharacter ? room[0] : isLead ? kLeadUnit : kUndefinedUnit;
    }
    return hasLeadBytes ? MakeMultiBytePage(MakeIconvConverter(page.iconvName), single) : MakeSingleBytePage(single);
}

std::unique_ptr<CodePage> MakePage(const KnownPage& page)
{
    if (page.number == kUtf8Number) return MakeUtf8Page();
    if (page.number == kWesternNumber) return MakeWesternPage();
    return MakeIconvPage(page);
}

struct Slot {
    std::atomic<const CodePage*> page{nullptr};
    std::atomic<bool> tried{false};  // set after page
};

}  // namespace

const CodePage* FindCodePage(uint32_t number)
{
    static std::array<Slot, kKnownPages.size()> slots;
    static Lock making;

    const auto known = std::lower_bound(kKnownPages.begin(), kKnownPages.end(), number,
                                        [](const KnownPage& page, uint32_t wanted) { return page.number < wanted; });
    if (known == kKnownPages.end() || known->number != number) return nullptr;
    Slot& slot = slots[static_cast<std::size_t>(known - kKnownPages.begin())];
    if (!slot.tried.load(std::memory_order_acquire)) {
        const LockHold hold(making);
        if (!slot.tried.load(std::memory_order_relaxed)) {
            slot.page.store(MakePage(*known).release(), std::memory_order_relaxed);
            slot.tried.store(true, std::memory_order_release);
        }
    }
    return slot.page.load(std::memory_order_relaxed);
}

}  // namespace marbex::platform
