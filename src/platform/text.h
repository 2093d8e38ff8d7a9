#pragma once

// Code pages. Numbers are those of Windows; 65001 is UTF-8. No conversion substitutes a "best fit" character.
// Any thread.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace marbex::platform {

// The system's ANSI code page: on Windows the system's own; on POSIX the one that LoadAnsiCodePage read last, which the
// first use of this and the ANSI conversions calls with the system's registry.
uint32_t AnsiCodePage();

// POSIX: takes the value "ACP" (REG_SZ, decimal) of SYSTEM\CurrentControlSet\Control\Nls\CodePage; a missing value or a
// code page that the C library does not know gives 1252. Windows: nothing.
void LoadAnsiCodePage(const Registry& registry);

// Bytes in the ANSI code page to UTF-16. Bytes that a single-byte page leaves undefined become the C1 control of the
// same value; malformed multi-byte sequences become U+FFFD.
std::u16string WidenAnsi(std::string_view text);

// The same, appended to wide. Made for the short runs between ASCII text, one accented letter at a time: for the
// single-byte pages and UTF-8 a call, after the first, takes no lock and asks nothing of the system.
void WidenAnsi(std::string_view text, std::u16string& wide);

// UTF-16 to the ANSI code page; every unit that it does not hold becomes "?", two for a character above U+FFFF. The C1
// controls that stand for undefined bytes become these bytes again.
std::string NarrowAnsi(std::u16string_view text);

std::string Utf8FromUtf16(std::u16string_view text);  // unpaired surrogates become U+FFFD
std::u16string Utf16FromUtf8(std::string_view text);  // malformed sequences become U+FFFD

enum class CodePageResult { kOk, kUnmappable, kUnknownCodePage };

// Appends one run of UTF-16 to bytes in a code page, strictly: anything the page does not hold gives kUnmappable and
// leaves bytes alone. Below 100 ns a character, so that it can be asked one character at a time.
CodePageResult ToCodePage(uint32_t codePage, std::u16string_view text, std::string& bytes);

}  // namespace marbex::platform
