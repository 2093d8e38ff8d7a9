#pragma once

// Kernel objects with the names of this system: a kind letter, a stem and the owner's address, "E%s_%08X" for events,
// "M%s_%08X" for mutexes, "S%s_%08X" for semaphores; the address is its low 32 bits. When an object of that name exists
// already (another process, an address twin), the object is made without a name: nothing is ever shared by accident.

#include <memory>

#include "platform/kernel.h"

namespace marbex::support {

std::unique_ptr<platform::Event> CreateOwnedEvent(const char* stem, const void* owner, platform::ResetMode mode,
                                                  bool signalled);
std::unique_ptr<platform::Mutex> CreateOwnedMutex(const char* stem, const void* owner);
std::unique_ptr<platform::Semaphore> CreateOwnedSemaphore(const char* stem, const void* owner, uint32_t initial,
                                                          uint32_t maximum);

}  // namespace marbex::support
