#pragma once

// The classes of the server, by the names and identifiers under which they are registered. Neither ever changes.

#ifdef _WIN32
#include <guiddef.h>
#else
#include <marbex/automation.h>
#endif

namespace marbex {

inline constexpr char kPrinterProgId[] = "Service.MarbexOposPrnDriver";
inline constexpr char kCashDrawerProgId[] = "Service.MarbexOposCashDrawerDriver";
inline constexpr char kLineDisplayProgId[] = "Service.MarbexOposLineDisplayDriver";

inline constexpr GUID kPrinterClassId{0xB637B615, 0xC43B, 0x40B8, {0xB9, 0xD8, 0xB6, 0xE2, 0x9E, 0x80, 0xAA, 0x6D}};
inline constexpr GUID kCashDrawerClassId{0xD957B9D0, 0x46FE, 0x4C18, {0x91, 0x36, 0x28, 0x35, 0x70, 0x78, 0xA9, 0x5D}};
inline constexpr GUID kLineDisplayClassId{0x3B9304F2, 0x526B, 0x4F11, {0x9A, 0x2F, 0xD8, 0x5E, 0xE3, 0x6B, 0xD2, 0x09}};

}  // namespace marbex
