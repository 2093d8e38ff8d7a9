#include <windows.h>

#include "platform/text.h"

namespace marbex::platform {

uint32_t AnsiCodePage()
{
    return GetACP();
}

void LoadAnsiCodePage(const Registry&) {}

}  // namespace marbex::platform
