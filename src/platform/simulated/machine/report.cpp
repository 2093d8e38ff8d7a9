// What a run that has failed tells of its threads.

#include <sstream>

#include "platform/simulated/kernel_state.h"

namespace marbex::simulated {

std::string Scheduler::Report() const
{
    std::ostringstream report;
    report << "at " << now_ / 1000 << " ms, after " << points_ << " calls of the platform layer:\n";
    for (const auto& task : tasks_) {
        if (task->state == Task::State::kEnded) continue;
        report << "  thread " << task->id << " (" << task->name << ")";
        if (task->reason != nullptr && task->state == Task::State::kWaiting) {
            report << " waits for ";
            task->reason->Tell(report);
            if (task->wakeAt != kNever) report << " until " << task->wakeAt / 1000 << " ms";
        } else {
            report << (task.get() == current_ ? " runs" : " could go on");
        }
        const char* join = "; owns ";
        for (const platform::NativeObject* mutex : task->owned) {
            report << join;
            mutex->Tell(report);
            join = ", ";
        }
        if (task->queue && !task->queue->messages.empty())
            report << "; " << task->queue->messages.size() << " messages wait for it";
        report << '\n';
    }
    return report.str();
}

}  // namespace marbex::simulated
