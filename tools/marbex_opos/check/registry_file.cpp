#include "marbex_opos/check/check.h"
#include "marbex_opos/process_settings.h"

namespace marbex::tools {

void CheckRegistry(Steps& steps)
{
    const std::string missing = MissingRegistry();
    const std::string problem = missing.empty() ? DeviceStore().RegistryProblem() : std::string();
    if (!missing.empty()) {
        steps.Wrong("registry", missing, "marbex-opos devices add Till1 PrinterModel=MODEL");
    } else if (!problem.empty()) {
        steps.Wrong("registry", problem, RegistryReadAdvice());
    } else {
        steps.Fine("registry", RegistryPlace());
    }
}

}  // namespace marbex::tools
