#include <cstdio>

#include "marbex_opos/commands.h"

namespace marbex::tools {

int Complain(const std::string& why)
{
    std::fprintf(stderr, "marbex-opos: %s\n", why.c_str());
    return 1;
}

}  // namespace marbex::tools
