// The program's allocations, of which one can fail on demand.

#include <cstdlib>
#include <new>

#include "platform/simulated/machine/call.h"

void* operator new(std::size_t size)
{
    if (marbex::simulated::AllocationFails()) throw std::bad_alloc();
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
