#pragma once

// A flow of control with a stack of its own, within one thread of the real system. Whoever gives the processor away
// says to whom. The exceptions that a fibre is handling stay its own.

#include <ucontext.h>

#include <cstddef>

namespace marbex::simulated {

class Fibre {
public:
    Fibre();  // what is running now
    // A new one, which begins with entry when it is first switched to. entry never returns. Throws std::bad_alloc.
    explicit Fibre(void (*entry)());
    ~Fibre();  // of one that does not run
    Fibre(const Fibre&) = delete;
    Fibre& operator=(const Fibre&) = delete;

    // Returns when somebody switches back to this one, which must be the one that runs.
    void SwitchTo(Fibre& next);
    // To be called first thing in entry.
    static void Begun();

private:
    // What the C++ runtime keeps of a thread's exceptions (Itanium C++ ABI, 2.2.2).
    struct Exceptions {
        void* caught = nullptr;
        unsigned uncaught = 0;
    };

    ucontext_t context_{};
    std::byte* memory_ = nullptr;  // the guard page and the stack
    Exceptions exceptions_;
    void* sanitizer_ = nullptr;  // its own stack for this fibre's variables
    const void* stack_ = nullptr;
    std::size_t stackSize_ = 0;
};

}  // namespace marbex::simulated
