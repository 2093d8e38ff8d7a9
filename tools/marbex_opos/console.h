#pragma once

// Executes statements and prints what they and the events give. One line of output is one write, flushed.

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "marbex_opos/object_session.h"
#include "marbex_opos/statement.h"

namespace marbex::tools {

class Console {
public:
    // print receives whole lines without their end.
    Console(std::string serverPath, bool echo, std::function<void(std::string_view)> print);

    // One line of input.
    void Execute(std::string_view line);

    bool HasQuit() const { return hasQuit_; }
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

    void OnEvent(const Event& event);
    bool TakeArrived(const Expect& expect);
    ServiceObject* Need(ObjectKind kind);
    void PrintOutcome(const CallOutcome& outcome);
    void PrintDone() { print_("="); }
    void Complain(std::string_view why);

    std::function<void(std::string_view)> print_;
    std::deque<EventKind> arrived_;  // events that no expect has been satisfied by, oldest first
    ObjectSession session_;
    bool echo_;
    bool hasQuit_ = false;
    bool hasComplained_ = false;
    int lineNumber_ = 0;
};

}  // namespace marbex::tools
