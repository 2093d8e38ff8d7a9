#include <marbex/result.h>

#include "opos/common.h"
#include "opos/printer.h"

namespace {

struct ResultText {
    int32_t code;
    const char* name;
    const char* advice;
};

constexpr ResultText kTexts[] = {
    {opos::OPOS_SUCCESS, "OPOS_SUCCESS", "All is well."},
    {opos::OPOS_E_CLOSED, "OPOS_E_CLOSED", "The device is not open: open it first."},
    {opos::OPOS_E_CLAIMED, "OPOS_E_CLAIMED",
     "The device is claimed already: claim it once, release it before the next."},
    {opos::OPOS_E_NOTCLAIMED, "OPOS_E_NOTCLAIMED", "Claim the device before it is enabled or used."},
    {opos::OPOS_E_NOSERVICE, "OPOS_E_NOSERVICE",
     "The service object could not be made, or the event handlers of its control object are not all there."},
    {opos::OPOS_E_DISABLED, "OPOS_E_DISABLED", "Enable the device before it is used."},
    {opos::OPOS_E_ILLEGAL, "OPOS_E_ILLEGAL",
     "An argument is not allowed, or the printer has no such thing. A drawer and a display need a printer that has "
     "them "
     "and is open, claimed and enabled."},
    {opos::OPOS_E_NOHARDWARE, "OPOS_E_NOHARDWARE",
     "The printer does not answer: see whether it is on and connected, and whether PrinterModel in its profile is the "
     "model that is there (marbex-opos devices show)."},
    {opos::OPOS_E_OFFLINE, "OPOS_E_OFFLINE", "The printer is offline: see what its panel says."},
    {opos::OPOS_E_NOEXIST, "OPOS_E_NOEXIST", "There is no such file, or it may not be read."},
    {opos::OPOS_E_EXISTS, "OPOS_E_EXISTS", "The file is there already."},
    {opos::OPOS_E_FAILURE, "OPOS_E_FAILURE",
     "The link could not be opened or the printer failed: see whether the device has this name (marbex-opos devices "
     "list), where its profile looks for the printer, and what the log says (LogEnabled=3)."},
    {opos::OPOS_E_TIMEOUT, "OPOS_E_TIMEOUT",
     "The device did not become free in time: something else has claimed it, output is under way, or an error waits "
     "for its answer."},
    {opos::OPOS_E_BUSY, "OPOS_E_BUSY",
     "Another call has not returned, or this one was made inside an error handler: let it return, then try again."},
    {opos::OPOS_E_EXTENDED, "OPOS_E_EXTENDED", "The extended result code says more."},
    {opos::OPOS_EPTR_COVER_OPEN, "OPOS_EPTR_COVER_OPEN", "The printer's cover is open: close it."},
    {opos::OPOS_EPTR_REC_EMPTY, "OPOS_EPTR_REC_EMPTY", "The paper is out: put in a new roll."},
};

constexpr ResultText kUnknown{-1, "unknown", "The server gives no such result."};

const ResultText& TextOf(int32_t code)
{
    for (const ResultText& text : kTexts) {
        if (text.code == code) return text;
    }
    return kUnknown;
}

}  // namespace

const char* MarbexResultName(int32_t code)
{
    return TextOf(code).name;
}

const char* MarbexResultAdvice(int32_t code)
{
    return TextOf(code).advice;
}
