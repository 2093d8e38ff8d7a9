#pragma once

// What the check of a till has found, step by step.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace marbex::tools {

enum class StepState : uint8_t { kFine, kWarning, kWrong };

struct Step {
    std::string name;  // what was looked at: "registry", "port"
    StepState state = StepState::kFine;
    std::string text;  // what was found
    std::string next;  // of what is not fine: the command to type or the thing to do
};

// Steps in the order in which they were taken.
class Steps {
public:
    void Fine(const std::string& name, const std::string& text) { list_.push_back({name, StepState::kFine, text, {}}); }
    void Warn(const std::string& name, const std::string& text, const std::string& next)
    {
        list_.push_back({name, StepState::kWarning, text, next});
    }
    void Wrong(const std::string& name, const std::string& text, const std::string& next)
    {
        list_.push_back({name, StepState::kWrong, text, next});
    }

    const std::vector<Step>& List() const { return list_; }
    StepState Worst() const
    {
        StepState worst = StepState::kFine;
        for (const Step& step : list_)
            worst = std::max(worst, step.state);
        return worst;
    }

private:
    std::vector<Step> list_;
};

}  // namespace marbex::tools
