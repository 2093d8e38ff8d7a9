#include "platform/simulated/machine/fibre.h"

#include <cxxabi.h>
#include <sys/mman.h>

#include <cstring>
#include <new>

// The address sanitizer wants to know which stack is in use; these are there only when the program is built with it.
extern "C" {
[[gnu::weak]] void __sanitizer_start_switch_fiber(void** save, const void* bottom, std::size_t size);
[[gnu::weak]] void __sanitizer_finish_switch_fiber(void* save, const void** bottomOld, std::size_t* sizeOld);
}

namespace marbex::simulated {
namespace {

constexpr std::size_t kGuardSize = 4096;
constexpr std::size_t kStackSize = 1 << 20;  // taken from the system page by page as it is used

Fibre* left = nullptr;  // the fibre that was switched away from last

}  // namespace

Fibre::Fibre() = default;

Fibre::Fibre(void (*entry)())
{
    void* const memory = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    mprotect(memory, kGuardSize, PROT_NONE);
    memory_ = static_cast<std::byte*>(memory);
    stack_ = memory_ + kGuardSize;
    stackSize_ = kStackSize;
    getcontext(&context_);
    context_.uc_stack.ss_sp = memory_ + kGuardSize;
    context_.uc_stack.ss_size = kStackSize;
    context_.uc_link = nullptr;
    makecontext(&context_, entry, 0);
}

Fibre::~Fibre()
{
    if (memory_ != nullptr) munmap(memory_, kGuardSize + kStackSize);
}

void Fibre::Begun()
{
    if (__sanitizer_finish_switch_fiber == nullptr) return;
    const void* bottom = nullptr;
    std::size_t size = 0;
    __sanitizer_finish_switch_fiber(nullptr, &bottom, &size);
    // The stack that the program began with is not known before somebody has left it.
    if (left->stack_ == nullptr) {
        left->stack_ = bottom;
        left->stackSize_ = size;
    }
}

void Fibre::SwitchTo(Fibre& next)
{
    auto* const current = reinterpret_cast<Exceptions*>(abi::__cxa_get_globals());
    exceptions_ = *current;
    *current = next.exceptions_;
    left = this;
    if (__sanitizer_start_switch_fiber != nullptr)
        __sanitizer_start_switch_fiber(&sanitizer_, next.stack_, next.stackSize_);
    swapcontext(&context_, &next.context_);
    if (__sanitizer_finish_switch_fiber != nullptr) __sanitizer_finish_switch_fiber(sanitizer_, nullptr, nullptr);
}

}  // namespace marbex::simulated
