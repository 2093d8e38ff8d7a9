// Requests for which there is no memory. Not under the thread sanitizer, which keeps the allocation to itself.

#ifndef __has_feature
#define __has_feature(feature) 0
#endif
#if !__has_feature(thread_sanitizer)

#include <gtest/gtest.h>

#include <new>

#include "common/jumping_clock.h"
#include "common/service_log_capture.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "spooler/print_spooler.h"

namespace {

bool memoryIsOut = false;

}  // namespace

// What asks for memory and can do without it; whatever else asks gets it.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return memoryIsOut ? nullptr : ::operator new(size);
}

namespace marbex::spooler {
namespace {

using namespace opos;

TEST(NoMemory, TheLogTellsWhichRequestFailed)
{
    const test::ServiceLogCapture log;
    test::JumpingClock clock;
    ApplicationThread plain;
    const SpoolerTraits traits{};
    CPrintSpooler spooler{traits, clock, plain};
    std::atomic<int32_t> id{0};

    memoryIsOut = true;
    const int32_t barcode =
        spooler.PrintBarCode(PTR_S_RECEIPT, "4006381333931", PTR_BCS_EAN13, 80, 2, PTR_BC_LEFT, PTR_BC_TEXT_NONE, &id);
    const int32_t picture = spooler.PrintBitmap(PTR_S_RECEIPT, "logo.bmp", 100, PTR_BM_LEFT, PTR_RP_NORMAL, &id);
    memoryIsOut = false;
    EXPECT_EQ(barcode, OPOS_E_ILLEGAL);
    EXPECT_EQ(picture, OPOS_E_ILLEGAL);
    EXPECT_EQ(log.Taken(), (std::vector<std::string>{
                               "[CPrintSpoolerTalis] --- PrintBarCode Begin",
                               "[CPrintSpoolerTalis] --- PrintBarCode - BarcodeDataStruct Allocation failure",
                               "[CPrintSpoolerTalis] --- PrintBitmap Begin",
                               "[CPrintSpoolerTalis] --- PrintBitmap - FileName logo.bmp",
                               "[CPrintSpoolerTalis] --- PrintBitmap - BitmapDataStruct Allocation failure",
                           }));
}

}  // namespace
}  // namespace marbex::spooler

#endif
