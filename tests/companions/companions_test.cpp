// The two services that hang on the printer, with the log to the letter.

#include <gtest/gtest.h>

#include "common/service_log_capture.h"
#include "common/story.h"
#include "common/wire_text.h"
#include "companions/cash_drawer_driver.h"
#include "companions/line_display_driver.h"
#include "device/process_state.h"
#include "server/fake_device.h"
#include "support/printer_tables.h"

namespace marbex::tests {
namespace {

using companions::MarbexOposCashDrawerDriver;
using companions::MarbexOposLineDisplayDriver;

// "drawer claim", "display claim": the first word is the service, the second what it is asked. What it writes is the
// log, "D" for the drawer's tag and "L" for the display's. "printer" is the device behind them.
class CompanionStory : public StoryTeller {
protected:
    CompanionStory()
    {
        verbs["drawer"] = [this](const Words& w) {
            if (w[0] == "use") return Code(drawer.OpenDrawer());
            if (w[0] == "wait") return Code(drawer.WaitForDrawerClose(1, 2, 3, 4));
            if (w[0] == "clearInput") return Code(drawer.ClearInput());
            if (w[0] == "clearOutput") return Code(drawer.ClearOutput());
            return Ask(drawer, w);
        };
        verbs["display"] = [this](const Words& w) {
            if (w[0] == "use") return Code(display.ClearText());
            if (w[0] == "show") return Code(display.DisplayText(test::FromWireText(w[1]), Int(w[2])));
            if (w[0] == "showAt")
                return Code(display.DisplayTextAt(Int(w[1]), Int(w[2]), test::FromWireText(w[3]), Int(w[4])));
            return Ask(display, w);
        };
        verbs["model"] = [this](const Words& w) { return UsePrinter(Joined(w)), ""; };
        verbs["noPrinter"] = [](const Words&) { return device::TheProcess().SetCurrentDevice(nullptr), ""; };
        verbs["printer"] = [this](const Words& w) { return SetPrinter(w[0], w.size() > 1 ? w[1] : ""), ""; };
        verbs["asked"] = [this](const Words&) {
            std::string all;
            for (const std::string& call : std::exchange(calls, {}))
                all += (all.empty() ? "" : " ") + test::WireText(call);
            return all;
        };
        // The models that have it.
        verbs["served"] = [this](const Words& w) {
            std::string served;
            for (const auto& model : support::PrinterModels()) {
                UsePrinter(model.Name);
                Forget();
                verbs[w[0]]({"freeze"});
                if (Written().back().ends_with("COFreezeEvents End")) served += std::string(model.Name) + ",";
            }
            calls.clear();
            return served;
        };
        // Every method gives 106, an empty text or nothing; the same last line of the log for all (none: no line).
        verbs["refuseAll"] = [this](const Words& w) {
            const std::string reason = Joined(Words(w.begin() + 1, w.end()));
            for (const char* what : {"open", "close", "claim", "release", "freeze", "number 9", "directIO 257 100",
                                     "use", "health", "compare", "update", "reset", "retrieve", "count", "text 1000002",
                                     "setNumber 3 1", "setText 1000002 x"}) {
                Forget();
                Words words;
                std::istringstream said(what);
                for (std::string word; said >> word;)
                    words.push_back(word);
                const std::string answer = verbs[w[0]](words);
                EXPECT_TRUE(answer == "106" || answer == "''" || answer.empty()) << what << ": " << answer;
                EXPECT_EQ(Written().size(), reason.empty() ? 0U : 2U) << what;
                if (!reason.empty()) {
                    EXPECT_EQ(Written().back().substr(2), reason) << what;
                }
            }
            EXPECT_EQ(Joined(calls), "");
            return "";
        };
        // An application releases the printer's service from the event handler that runs while the call waits.
        verbs["useIsOutlivedBy"] = [this](const Words& w) {
            printer->onCall = [this, w](const std::string&) {
                device::TheProcess().SetCurrentDevice(nullptr);
                EXPECT_EQ(verbs[w[0]]({"use"}), "106") << "there is no printer any more";
            };
            return verbs[w[0]]({"use"});
        };
    }
    ~CompanionStory() override
    {
        device::TheProcess().SetCurrentDevice(nullptr);
        device::TheProcess().CurrentModelIndex = 0;
    }

    static std::string Code(int32_t code) { return std::to_string(code); }
    static int32_t Int(const std::string& word) { return std::stoi(word); }

    // What both have.
    template <typename Driver>
    std::string Ask(Driver& driver, const Words& w)
    {
        int32_t data = w[0] == "directIO" && w.size() > 2 ? Int(w[2]) : 0;
        const std::map<std::string, std::function<std::string()>> methods{
            {"open", [&] { return Code(driver.OpenService("any class", "any name", nullptr)); }},
            {"close", [&] { return Code(driver.CloseService()); }},
            {"claim", [&] { return Code(driver.ClaimDevice(1000)); }},
            {"release", [&] { return Code(driver.ReleaseDevice()); }},
            {"freeze", [&] { return Code(driver.COFreezeEvents(true)); }},
            {"number", [&] { return Code(driver.GetPropertyNumber(Int(w[1]))); }},
            {"text",
             [&] {
                 const auto text = driver.GetPropertyString(Int(w[1]));
                 return text ? "'" + *text + "'" : "null";
             }},
            {"setNumber", [&] { return driver.SetPropertyNumber(Int(w[1]), Int(w[2])), ""; }},
            {"setText", [&] { return driver.SetPropertyString(Int(w[1]), w[2]), ""; }},
            {"directIO", [&] { return Code(driver.DirectIO(Int(w[1]), w.size() > 2 ? &data : nullptr, nullptr)); }},
            {"health", [&] { return Code(driver.CheckHealth(1)); }},
            {"compare", [&] { return Code(driver.CompareFirmwareVersion("f", 1)); }},
            {"update", [&] { return Code(driver.UpdateFirmware("f")); }},
            {"reset", [&] { return Code(driver.ResetStatistics("s")); }},
            {"retrieve", [&] { return Code(driver.RetrieveStatistics(&statistics)); }},
            {"count", [&] { return Code(driver.UpdateStatistics("s")); }}};
        // State, Claimed, DeviceEnabled.
        if (w[0] == "state")
            return Joined(
                std::vector{driver.GetPropertyNumber(9), driver.GetPropertyNumber(1), driver.GetPropertyNumber(3)});
        if (w[0] == "ready") {
            for (const char* step : {"open", "claim"})
                methods.at(step)();
            driver.SetPropertyNumber(3, 1);
            Forget();
            return "";
        }
        return methods.at(w[0])();
    }

    // A device of the model that is open, claimed and enabled is the current one.
    void UsePrinter(std::string_view model)
    {
        const auto made = std::make_shared<FakeDevice>("printer", calls);
        made->State = opos::OPOS_S_IDLE;
        made->Claimed = 1;
        made->DeviceEnabled = 1;
        printer = made.get();
        device::TheProcess().SetCurrentDevice(made);
        calls.clear();
        const auto models = support::PrinterModels();
        for (uint32_t index = 0; index < models.size(); ++index) {
            if (model == models[index].Name) device::TheProcess().CurrentModelIndex = index;
        }
    }

    void SetPrinter(const std::string& what, const std::string& to) const
    {
        if (what == "is") printer->State = to == "closed" ? opos::OPOS_S_CLOSED : opos::OPOS_S_ERROR;
        if (what == "claimed") printer->Claimed = to == "on" ? 1 : 0;
        if (what == "enabled") printer->DeviceEnabled = to == "on" ? 1 : 0;
        if (what == "closing") printer->SetClosing(to == "on");
        if (what == "gives") printer->result = Int(to);
        if (what == "says") printer->text = to;
    }

    Words Written() const override
    {
        Words lines = log.Taken();
        for (std::string& line : lines) {
            for (const auto& [tag, letter] : {std::pair<std::string, std::string>{"[MarbexOposCashDrawerDriver]", "D"},
                                              {"[MarbexOposLineDisplayDriver]", "L"}}) {
                if (line.starts_with(tag)) line.replace(0, tag.size(), letter);
            }
        }
        return lines;
    }
    void Forget() override { log.Forget(); }

    const test::ServiceLogCapture log;
    FakeDevice::Calls calls;
    FakeDevice* printer = nullptr;
    std::string statistics = "unchanged";
    MarbexOposCashDrawerDriver drawer;
    MarbexOposLineDisplayDriver display;
};

// The stories of both: the drawer's, and the same of the display.
std::vector<TextCase> Stories()
{
    std::vector<TextCase> stories = TextCasesIn(
#include "companions/companions.txt"
    );
    const std::size_t count = stories.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (!stories[i].name.starts_with("Both")) continue;
        stories.push_back(stories[i]);
        stories.back().name += "Display";
        const std::pair<std::string, std::string> changes[] = {{"drawer", "display"},
                                                               {"| D ", "| L "},
                                                               {"> D ", "> L "},
                                                               {"OpenDrawer", "ClearText"},
                                                               {"CashDrawer", "LineDisplay"},
                                                               {"Kick(100,100)", "ClearText()"},
                                                               {"model PELTO", "model ARGO PC TURBO"},
                                                               {"support Cash Drawer", "support Line Display"}};
        for (std::string& line : stories.back().lines) {
            for (const auto& [from, to] : changes) {
                if (const std::size_t at = line.find(from); at != std::string::npos) line.replace(at, from.size(), to);
            }
        }
    }
    return stories;
}

TEST_P(CompanionStory, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Companions, CompanionStory, testing::ValuesIn(Stories()), StoryName);

}  // namespace
}  // namespace marbex::tests
