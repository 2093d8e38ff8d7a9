#include "marbex_opos/check/check.h"
#include "marbex_opos/process_settings.h"

namespace marbex::tools {

void CheckRegistry(Steps& steps)
{
    const std::string missing = MissingRegistry();
    const std::string problem = missing.empty() ? DeviceStore().RegistryProblem() : missing;
    if (problem.empty()) {
        steps.Fine("registry", RegistryPlace());
    } else {
        steps.Wrong("registry", problem, RegistryReadAdvice());
    }
}

}  // namespace marbex::tools
