// Kicking the cash drawer that hangs on the printer.

#include "device/printer_device.h"
#include "device/super_io_drawer.h"
#include "opos/common.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

// The printer counts the pulse in units of 2 ms, one byte each.
char HalfAsByte(int32_t milliseconds)
{
    return static_cast<char>(static_cast<uint32_t>(milliseconds) / 2U);
}

}  // namespace

int32_t PrinterDevice::External_CashDrawer_OpenDrawer(int32_t OnTime, int32_t OffTime)
{
    const OperationScope scope(*this);
    LogWrite("[%s] External_CashDrawer_OpenDrawer Begin", tag_);
    SetErrorCode(0, 0);
    if (IsClosed()) return Refuse(opos::OPOS_E_CLOSED);
    int32_t result = opos::OPOS_SUCCESS;
    if (model_.drawer == DrawerKick::kSuperIo) {
        if (!OpenSuperIoDrawer(tag_, clock_, OnTime, OffTime)) return Refuse(opos::OPOS_E_ILLEGAL);
    } else {
        // ESC p, connector 0x30, on time, off time.
        const char kick[] = {'\x1B', 'p', '\x30', HalfAsByte(OnTime), HalfAsByte(OffTime)};
        result = RecordSpoolerResult(SendDirectIO({kick, sizeof kick}));
    }
    LogWrite("[%s] External_CashDrawer_OpenDrawer End", tag_);
    return result;
}

}  // namespace marbex::device
