// Events, mutexes and semaphores: the system's own, names included.

#include <windows.h>

#include "platform/kernel.h"
#include "platform/windows/native_object.h"
#include "platform/windows/unique_handle.h"

namespace marbex::platform {
namespace {

const char* NameOrNone(const std::string& name)
{
    return name.empty() ? nullptr : name.c_str();
}

// What a Create function has just returned, before which no error was set. A name that belongs to another kind of
// object gives none.
template <typename Interface, typename Implementation>
std::unique_ptr<Interface> Made(HANDLE handle, bool* existed)
{
    const DWORD error = GetLastError();
    if (existed != nullptr) *existed = handle != nullptr && error == ERROR_ALREADY_EXISTS;
    UniqueHandle owned(handle);
    if (!owned) return nullptr;
    return std::make_unique<Implementation>(std::move(owned));
}

template <typename Interface>
class Object : public Interface {
public:
    explicit Object(UniqueHandle handle) : handle_(std::move(handle)) {}
    NativeObject* Native() const final { return AsNative(handle_.Get()); }

protected:
    const UniqueHandle handle_;
};

class WindowsEvent final : public Object<Event> {
public:
    using Object::Object;
    void Set() override { SetEvent(handle_.Get()); }
    void Reset() override { ResetEvent(handle_.Get()); }
};

class WindowsMutex final : public Object<Mutex> {
public:
    using Object::Object;
    bool Release() override MARBEX_NO_THREAD_SAFETY_ANALYSIS { return ReleaseMutex(handle_.Get()) != FALSE; }
};

class WindowsSemaphore final : public Object<Semaphore> {
public:
    using Object::Object;
    bool Release(uint32_t count) override
    {
        // A count beyond the range of the system is negative there, and refused.
        return count != 0 && ReleaseSemaphore(handle_.Get(), static_cast<LONG>(count), nullptr) != FALSE;
    }
};

}  // namespace

std::unique_ptr<Event> Event::Create(const std::string& name, ResetMode mode, bool signalled, bool* existed)
{
    SetLastError(ERROR_SUCCESS);
    const HANDLE handle = CreateEventA(nullptr, mode == ResetMode::kManual, signalled, NameOrNone(name));
    return Made<Event, WindowsEvent>(handle, existed);
}

std::unique_ptr<Mutex> Mutex::Create(const std::string& name, bool* existed)
{
    SetLastError(ERROR_SUCCESS);
    const HANDLE handle = CreateMutexA(nullptr, FALSE, NameOrNone(name));
    return Made<Mutex, WindowsMutex>(handle, existed);
}

std::unique_ptr<Semaphore> Semaphore::Create(const std::string& name, uint32_t initial, uint32_t maximum, bool* existed)
{
    if (existed != nullptr) *existed = false;
    if (maximum == 0 || initial > maximum) return nullptr;
    SetLastError(ERROR_SUCCESS);
    const HANDLE handle =
        CreateSemaphoreA(nullptr, static_cast<LONG>(initial), static_cast<LONG>(maximum), NameOrNone(name));
    return Made<Semaphore, WindowsSemaphore>(handle, existed);
}

}  // namespace marbex::platform
