#include "virtual_printer/language/condition.h"

namespace marbex::virtual_printer {
namespace {

constexpr uint8_t kAlwaysSet = 0x12;  // in every one-byte status

uint8_t Bit(bool set, uint8_t bit)
{
    return set ? bit : uint8_t{0};
}

uint8_t Join(uint8_t a, uint8_t b, uint8_t c = 0, uint8_t d = 0)
{
    return static_cast<uint8_t>(a | b | c | d);
}

}  // namespace

Bytes StatusAnswer(const Condition& c, uint8_t kind)
{
    switch (kind) {
        case kPrinterStatus:
            return {Join(kAlwaysSet, Bit(c.drawerSignal, 0x04), Bit(c.Stopped(), 0x08))};
        case kOfflineStatus:
            return {Join(kAlwaysSet, Bit(c.coverOpen, 0x04), Bit(c.paperOut, 0x20), Bit(c.jam, 0x40))};
        default:
            // Paper out implies near end: the sensor of the roll sees no paper either.
            return {0x10,
                    0x0F,
                    Join(Bit(c.paperOut, 0x01), Bit(c.paperLow || c.paperOut, 0x04)),
                    Join(Bit(c.coverOpen, 0x03), Bit(c.printing, 0x04)),
                    Bit(c.jam, 0x40),
                    0x00};
    }
}

}  // namespace marbex::virtual_printer
