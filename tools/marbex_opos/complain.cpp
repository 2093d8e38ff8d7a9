#include "marbex_opos/commands.h"
#include "marbex_opos/output.h"

namespace marbex::tools {

int Complain(const std::string& why)
{
    PrintError("marbex-opos: " + why + "\n");
    return 1;
}

}  // namespace marbex::tools
