#include "platform/windows/window_class.h"

#include <map>

#include "platform/lock.h"
#include "platform/windows/module.h"

namespace marbex::platform {
namespace {

// How many windows use each class; 0 for one that could not be unregistered because its last window was still busy with
// its own destruction. Never destroyed: windows may live longer than anything of static storage.
struct ClassTable {
    Lock lock;
    std::map<std::string, int> uses MARBEX_GUARDED_BY(lock);
};

ClassTable& Classes()
{
    static auto& table = *new ClassTable;
    return table;
}

void UnregisterUnused(ClassTable& table) MARBEX_REQUIRES(table.lock)
{
    std::erase_if(table.uses, [](const auto& entry) {
        return entry.second == 0 && UnregisterClassA(entry.first.c_str(), ThisModule()) != FALSE;
    });
}

// What is left when the module goes.
struct LastChance {
    ~LastChance()
    {
        ClassTable& table = Classes();
        const LockHold hold(table.lock);
        UnregisterUnused(table);
    }
};

}  // namespace

WindowClassUse::WindowClassUse(const char* className, WNDPROC procedure) : name_(className)
{
    static const LastChance lastChance;
    ClassTable& table = Classes();
    const LockHold hold(table.lock);
    UnregisterUnused(table);
    ++table.uses[name_];

    WNDCLASSA windowClass{};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = ThisModule();
    windowClass.lpszClassName = name_.c_str();
    registered_ = RegisterClassA(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

WindowClassUse::~WindowClassUse()
{
    ClassTable& table = Classes();
    const LockHold hold(table.lock);
    --table.uses[name_];
    UnregisterUnused(table);
}

}  // namespace marbex::platform
