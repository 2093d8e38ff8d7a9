#include "device/super_io_drawer.h"

#include <algorithm>

#include "platform/library.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

using ReadRegister = int (*)(int logicalDevice, int configurationRegister);
using WriteRegister = void (*)(int logicalDevice, int configurationRegister, int value);

constexpr int kGlobal = 0;  // global registers are the same in every logical device
constexpr int kGpio = 6;    // the logical device of the drawer's output
constexpr int kOutput = 0xF1;
constexpr int kDrawerBit = 0x08;

class SuperIo {
public:
    SuperIo(ReadRegister read, WriteRegister write) : read_(read), write_(write) {}

    void And(int device, int index, int mask) const { write_(device, index, read_(device, index) & mask); }
    void Or(int device, int index, int bits) const { write_(device, index, read_(device, index) | bits); }
    void AndOr(int device, int index, int mask, int bits) const
    {
        write_(device, index, (read_(device, index) & mask) | bits);
    }

private:
    ReadRegister read_;
    WriteRegister write_;
};

void PrepareDrawerOutput(const SuperIo& chip)
{
    chip.And(kGlobal, 0x27, 0xF3);
    chip.Or(kGlobal, 0x2C, 0x1C);
    chip.And(kGpio, kOutput, 0xF7);
    chip.AndOr(kGpio, 0xF0, 0xFB, 0x18);
    chip.AndOr(kGpio, 0xF3, 0xFB, 0x18);
}

}  // namespace

bool OpenSuperIoDrawer(const char* tag, platform::Clock& clock, int32_t onTime, int32_t offTime)
{
    LogWrite("[%s] Opening LpcSio.dll...", tag);
    const auto library = platform::DynamicLibrary::Load("LpcSio.dll");
    if (!library) {
        LogWrite("[%s] file LpcSio.dll not available", tag);
        return false;
    }
    const auto read = reinterpret_cast<ReadRegister>(library->Symbol("_CRRead"));
    const auto write = reinterpret_cast<WriteRegister>(library->Symbol("_CRWrite"));
    if (read == nullptr || write == nullptr) {
        LogWrite("[%s] functions on LpcSio.dll not available", tag);
        return false;
    }
    const SuperIo chip(read, write);
    PrepareDrawerOutput(chip);
    LogWrite("[%s] Opening Cash Drawer...", tag);
    chip.Or(kGpio, kOutput, kDrawerBit);
    clock.Sleep(static_cast<uint32_t>(std::max(onTime, 0)));
    chip.And(kGpio, kOutput, ~kDrawerBit & 0xFF);
    clock.Sleep(static_cast<uint32_t>(std::max(offTime, 0)));
    LogWrite("[%s] Finish open Cash Drawer...", tag);
    return true;
}

}  // namespace marbex::device
