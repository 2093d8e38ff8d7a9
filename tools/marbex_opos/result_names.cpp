#include "marbex_opos/result_names.h"

#include "marbex_opos/constant_table.h"
#include "opos/common.h"

namespace marbex::tools {

namespace {

std::string Named(std::string_view prefix, int32_t code)
{
    for (const Constant& constant : Constants()) {
        if (constant.value == code && constant.name.starts_with(prefix)) {
            return std::to_string(code) + " (" + std::string(constant.name) + ")";
        }
    }
    return std::to_string(code);
}

}  // namespace

std::string ResultText(int32_t code, int32_t extended)
{
    if (code == opos::OPOS_SUCCESS) return Named("OPOS_SUCCESS", code);
    std::string text = Named("OPOS_E_", code);
    if (extended != 0) text += ", " + Named("OPOS_EPTR_", extended);
    return text;
}

}  // namespace marbex::tools
