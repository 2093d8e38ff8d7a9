#include "events/event_record.h"

#include "support/kernel_names.h"

namespace marbex::events {

ErrorEventRecord::ErrorEventRecord(int32_t code, int32_t extended, int32_t locus, int32_t response, ErrorOrigin from)
    : EventRecord(WM_SO_ERROR_EVENT_MESSAGE),
      resultCode(code),
      resultCodeExtended(extended),
      errorLocus(locus),
      origin(from),
      errorResponse(response),
      ErrorResponseReturned(
          support::CreateOwnedEvent("ErrorResponseReturned", this, platform::ResetMode::kManual, false))
{
}

bool ErrorEventRecord::Resolve(int32_t answer)
{
    if (taken_.test_and_set()) return false;
    answer_ = answer;
    resolved_ = true;
    ErrorResponseReturned->Set();
    return true;
}

}  // namespace marbex::events
