#pragma once

// Executes statements and prints what they and the events give. One line of output is one write, flushed.

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "marbex_opos/console/statement.h"
#include "marbex_opos/session/object_session.h"

namespace marbex::tools {

struct ConsoleSwitches {
    bool echo = false;   // print each statement before its result
    bool stop = false;   // end at the first complaint
    bool names = false;  // show the standard's names of numbers
};

class Console {
public:
    // print receives whole lines without their end.
    Console(std::string serverPath, ConsoleSwitches switches, std::function<void(std::string_view)> print);

    // One line of input.
    void Execute(std::string_view line);

    // No more lines are wanted.
    bool HasEnded() const { return hasQuit_ || (switches_.stop && hasComplained_); }
    int ExitStatus() const { return hasComplained_ ? 2 : 0; }

    // For whoever waits for input meanwhile.
    ObjectSession& Session() { return session_; }

private:
    void Run(const Nothing&) {}
    void Run(const CallMethod& call);
    void Run(const ReadProperty& read);
    void Run(const WriteProperty& write);
    void Run(const Wait& wait);
    void Run(const Expect& expect);
    void Run(const Answer& answer);
    void Run(const ReleaseObject& release);
    void Run(const Quit&);
    void Run(const Help& help);

    void OnEvent(const Event& event);
    bool TakeArrived(const Expect& expect);
    ServiceObject* Need(ObjectKind kind);
    // Prints what a call gave, and complains when that is not allowed. names: where its result has a name.
    void Report(const CallOutcome& outcome, const NameSets& names = {}, const Allowed& allowed = {});
    void PrintDone() { print_("="); }
    void Complain(std::string_view why);

    std::function<void(std::string_view)> print_;
    std::deque<EventKind> arrived_;  // events that no expect has been satisfied by, oldest first
    ObjectSession session_;
    ConsoleSwitches switches_;
    bool hasQuit_ = false;
    bool hasComplained_ = false;
    int lineNumber_ = 0;
};

}  // namespace marbex::tools
