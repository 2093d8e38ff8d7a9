#pragma once

// One T for every thread that asks for it, destroyed as the thread exits.
//
// Not thread_local: the compiler's emulation of it frees the memory of a thread before it runs the destructors that are
// to tidy it up. The system calls back in time, for threads of every origin, and while their windows still exist.

#include <windows.h>

#include <memory>
#include <utility>

namespace marbex::platform {

// Of static storage, and one for each T. When it goes, with the module or the process, what threads still have is left
// alone: they may be gone, or about to find their code gone.
template <typename T>
class PerThread {
public:
    PerThread() : index_(FlsAlloc(ThreadEnds)) {}
    ~PerThread()
    {
        leaving_ = true;
        FlsFree(std::exchange(index_, FLS_OUT_OF_INDEXES));
    }
    PerThread(const PerThread&) = delete;
    PerThread& operator=(const PerThread&) = delete;

    // The calling thread's; null when it has none.
    T* Find() const { return static_cast<T*>(FlsGetValue(index_)); }

    // The same, made when it is missing; null when the system has no room for it.
    T* FindOrMake()
    {
        if (T* const found = Find()) return found;
        auto made = std::make_unique<T>();
        if (!FlsSetValue(index_, made.get())) return nullptr;
        return made.release();
    }

private:
    static void WINAPI ThreadEnds(void* value)
    {
        if (!leaving_) delete static_cast<T*>(value);
    }

    static inline bool leaving_ = false;
    DWORD index_;
};

}  // namespace marbex::platform
