#pragma once

#include "companions/companion_service.h"

namespace marbex::companions {

// The CashDrawer service object: a drawer on the kick-out connector of the printer. It has no sensor: it always reads
// as closed, and waiting for it to be closed is not supported.
class MarbexOposCashDrawerDriver final : public CompanionService {
public:
    MarbexOposCashDrawerDriver();

    // The printer's answer to the kick.
    int32_t OpenDrawer();

    // 257 (CMD_CASHDRAWER_TIMEON) and 258 (CMD_CASHDRAWER_TIMEOFF) take a pulse time of 50 to 510 ms from *pData; all
    // else is refused, except that a closed drawer and command 0 change nothing. Returns the result code.
    int32_t DirectIO(int32_t Command, int32_t* pData, std::u16string* pString);

    void SetPropertyNumber(int32_t PropIndex, int32_t Number);             // DeviceEnabled only
    void SetPropertyString(int32_t PropIndex, const std::string& String);  // ignored

    // Refused.
    int32_t WaitForDrawerClose(int32_t BeepTimeout, int32_t BeepFrequency, int32_t BeepDuration, int32_t BeepDelay);
    int32_t ClearInput();
    int32_t ClearOutput();

private:
    void StorePulseTime(const char* command, const int32_t* data, int32_t& time);

    int32_t pulseOnTime_ = 100;   // ms
    int32_t pulseOffTime_ = 100;  // ms
};

}  // namespace marbex::companions
