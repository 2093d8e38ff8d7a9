#include "platform/simulated/machine/call.h"

namespace marbex::simulated {

Mishap& TheMishap()
{
    static Mishap mishap;  // made without an allocation, which would ask for it
    return mishap;
}

bool CallFails(const char* what)
{
    Mishap& mishap = TheMishap();
    if (mishap.kind != Mishap::Kind::kCall || !Processor().IsRunning() || ++mishap.counted != mishap.when) return false;
    mishap.what = what;
    return true;
}

bool AllocationFails()
{
    Mishap& mishap = TheMishap();
    if (mishap.kind != Mishap::Kind::kAllocation || !Processor().IsRunning() || Processor().IsActing()) return false;
    if (Processor().Current().apart != 0 || ++mishap.counted != mishap.when) return false;
    const Apart apart;
    mishap.what = "allocation of " + Processor().Current().name;
    return true;
}

}  // namespace marbex::simulated
