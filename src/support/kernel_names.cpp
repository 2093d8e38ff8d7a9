#include "support/kernel_names.h"

#include <cstdint>
#include <cstdio>

namespace marbex::support {

namespace {

std::string NameOf(char kind, const char* stem, const void* owner)
{
    char name[255];
    std::snprintf(name, sizeof name, "%c%s_%08X", kind, stem,
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(owner) & 0xFFFFFFFFu));
    return name;
}

// make(name, existed) creates the object. A name that another kind of object has gives none; that, too, is a stranger.
template <typename Make>
auto CreateUnshared(const std::string& name, Make make)
{
    bool existed = false;
    auto object = make(name, &existed);
    if (object != nullptr && !existed) return object;
    object.reset();
    return make(std::string(), &existed);
}

}  // namespace

std::unique_ptr<platform::Event> CreateOwnedEvent(const char* stem, const void* owner, platform::ResetMode mode,
                                                  bool signalled)
{
    return CreateUnshared(NameOf('E', stem, owner), [=](const std::string& name, bool* existed) {
        return platform::Event::Create(name, mode, signalled, existed);
    });
}

std::unique_ptr<platform::Mutex> CreateOwnedMutex(const char* stem, const void* owner)
{
    return CreateUnshared(NameOf('M', stem, owner), [](const std::string& name, bool* existed) {
        return platform::Mutex::Create(name, existed);
    });
}

std::unique_ptr<platform::Semaphore> CreateOwnedSemaphore(const char* stem, const void* owner, uint32_t initial,
                                                          uint32_t maximum)
{
    return CreateUnshared(NameOf('S', stem, owner), [=](const std::string& name, bool* existed) {
        return platform::Semaphore::Create(name, initial, maximum, existed);
    });
}

}  // namespace marbex::support
