#include "marbex_opos/check/check.h"
#include "marbex_opos/devices/profile_check.h"
#include "platform/registry.h"

namespace marbex::tools {

void CheckValues(const DeviceView& device, Steps& steps)
{
    const std::vector<ProfileFinding> findings = CheckProfile(platform::SystemRegistry(), device.name);
    for (const ProfileFinding& finding : findings) {
        const std::string text = finding.value + " " + finding.shown + " " + finding.what;
        if (finding.isWrong) {
            steps.Wrong("values", text, finding.remedy);
        } else {
            steps.Warn("values", text, finding.remedy);
        }
    }
    if (findings.empty()) steps.Fine("values", "all of them can be used");
}

std::string SetCommand(const DeviceView& device, const std::string& assignments)
{
    return "marbex-opos devices set " + ShellWord(device.name) + " " + assignments;
}

}  // namespace marbex::tools
