#include "marbex_opos/output.h"

namespace marbex::tools {

std::string Padded(std::string_view text, std::size_t width)
{
    std::string padded(text);
    if (padded.size() < width) padded.append(width - padded.size(), ' ');
    return padded;
}

}  // namespace marbex::tools
