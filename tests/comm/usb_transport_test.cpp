#include "comm/usb_transport.h"

#include "comm/scripted_usb.h"
#include "comm/transport_story.h"

namespace marbex::comm {
namespace {

using platform::UsbStatus;
using platform::UsbTransfer;
using tests::ScriptedUsb;

const std::map<std::string, UsbStatus> kStatuses{{"done", UsbStatus::kDone},
                                                 {"timedOut", UsbStatus::kTimedOut},
                                                 {"gone", UsbStatus::kGone},
                                                 {"waitFailed", UsbStatus::kWaitFailed},
                                                 {"noResult", UsbStatus::kNoResult}};

// "timedOut 0", "done all": what transfers come to; "timedOut 0 from 4", "gone 0 at 2": some of them, of the next ones.
// The others move all.
std::function<UsbTransfer(int, std::size_t)> Answers(const std::vector<std::string>& words, std::size_t done)
{
    const UsbStatus status = kStatuses.at(words.at(0));
    const bool all = words.at(1) == "all";
    const std::size_t count = all ? 0 : std::stoul(words[1]);
    const bool at = words.size() > 2 && words[2] == "at";
    const int first = words.size() > 2 ? std::stoi(words[3]) + static_cast<int>(done) : 0;
    return [=](int call, std::size_t size) {
        if (at ? call != first : call < first) return UsbTransfer{UsbStatus::kDone, size};
        return UsbTransfer{status, all ? size : count};
    };
}

// A printer named Talis, and whatever else a test installs. "P:" is the key of the printers, "E:" that of the devices.
class UsbStory : public tests::TransportStory {
protected:
    UsbStory()
    {
        switches = {{"openWrite", &usb.canOpenWrite},     {"openRead", &usb.canOpenRead},
                    {"cancelWrite", &usb.canCancelWrite}, {"cancelRead", &usb.canCancelRead},
                    {"closeWrite", &usb.canCloseWrite},   {"closeRead", &usb.canCloseRead}};
        verbs["init"] = [this](const Words& w) { return Code(transport.InitPrinter(w[0].c_str())); };
        verbs["timeouts"] = [this](const Words& w) { return Code(transport.SetTimeout(Number(w[0]), Number(w[1]))); };
        verbs["packets"] = [this](const Words& w) { return Code(transport.SetPacketUsb(Number(w[0]), Number(w[1]))); };
        verbs["open"] = [this](const Words&) { return Code(transport.OpenUsb()); };
        verbs["opened"] = [this](const Words&) {
            transport.InitPrinter("Talis");
            transport.SetTimeout(3000, 2000);
            transport.SetPacketUsb(1024, 64);
            const uint32_t result = transport.OpenUsb();
            Forget();
            return Code(result);
        };
        verbs["close"] = [this](const Words&) { return Code(transport.CloseUsb()); };
        verbs["clean"] = [this](const Words& w) { return Code(transport.CleanUsb(w[0] == "out", w.back() == "in")); };
        verbs["write"] = [this](const Words& w) {
            const std::vector<uint8_t> bytes(Number(w[0]), 'x');
            return Code(transport.WriteUsb(bytes.data(), Number(w[0])));
        };
        verbs["read"] = [this](const Words& w) {
            uint32_t count = 99;
            std::vector<uint8_t> room(Number(w[0]));
            const uint32_t code = transport.ReadUsb(room.data(), Number(w[0]), &count);
            return Code(code) + " " + Code(count);
        };
        verbs["moveNothing"] = [this](const Words&) {
            uint32_t count = 9;
            uint8_t byte = 0;
            return tests::Joined(std::vector{transport.WriteUsb(nullptr, 5), transport.WriteUsb(&byte, 0),
                                             transport.ReadUsb(nullptr, 5, &count), transport.ReadUsb(&byte, 0, &count),
                                             count});
        };
        verbs["readWithin"] = [this](const Words& w) {
            uint32_t count = 99;
            std::vector<uint8_t> room(16);
            const LinkRead read = transport.ReadUsbWithin(room.data(), 16, Number(w[0]), &count);
            return (read == LinkRead::kArrived ? "arrived " : "nothing ") + Code(count);
        };
        verbs["writes"] = [this](const Words& w) { return Answer(usb.write, usb.writes, w); };
        verbs["reads"] = [this](const Words& w) { return Answer(usb.read, usb.reads, w); };
        verbs["readsTake"] = [this](const Words& w) {
            usb.read = [this, ms = Number(w[0])](int, std::size_t) {
                clock.Sleep(ms);
                return UsbTransfer{UsbStatus::kDone, 1};
            };
            return "";
        };
        verbs["emptyReads"] = [this](const Words& w) {
            usb.read = [=](int call, std::size_t) {
                return UsbTransfer{UsbStatus::kDone, call <= std::stoi(w[0]) ? 0U : 6U};
            };
            return "";
        };
        verbs["readCount"] = [this](const Words&) { return std::to_string(usb.reads.size()); };
        verbs["lastLimit"] = [this](const Words&) { return Code(usb.timeouts.back()); };
        verbs["limits"] = [this](const Words&) { return tests::Taken(usb.timeouts); };
        verbs["cancels"] = [this](const Words&) { return tests::Taken(usb.cancels); };
        verbs["paths"] = [this](const Words&) { return tests::Taken(usb.openedPaths); };
        verbs["pipes"] = [this](const Words&) { return std::to_string(usb.opened); };
        verbs["written"] = [this](const Words&) { return Code(transport.Use().BytesWritten()); };
        verbs["systemError"] = [this](const Words&) { return Code(transport.LastSystemError()); };
        verbs["install"] = [this](const Words& w) { return usb.Install(w[0], w[1], w[2], w[3]), ""; };
        verbs["unreadable"] = [this](const Words& w) { return usb.unreadable = {w.begin(), w.end()}, Keys(), ""; };
        verbs["text"] = [this](const Words& w) { return usb.texts[Key(w[0])] = w.size() > 1 ? w[1] : "", ""; };
        verbs["noText"] = [this](const Words& w) { return usb.texts.erase(Key(w[0])), ""; };
        // Interfaces by their numbers, or as they are; "many 127" for so many of another kind.
        verbs["present"] = [this](const Words& w) { return Present(w), ""; };
        verbs["unusable"] = [this](const Words& w) { return usb.unusable = {w.begin(), w.end()}, ""; };
    }

    static std::string Code(uint32_t code) { return std::to_string(code); }
    static std::string Key(const std::string& key)
    {
        if (key.starts_with("P:")) return ScriptedUsb::kPrinters + key.substr(2);
        return key.starts_with("E:") ? ScriptedUsb::kEnumeration + key.substr(2) : key;
    }
    void Keys()
    {
        std::set<std::string> keys;
        for (const std::string& key : usb.unreadable)
            keys.insert(Key(key));
        usb.unreadable = keys;
    }

    // Without words: the sizes of the transfers since this was last asked.
    static std::string Answer(std::function<UsbTransfer(int, std::size_t)>& how, std::vector<std::size_t>& sizes,
                              const Words& words)
    {
        if (words.empty()) return tests::Taken(sizes);
        how = Answers(words, sizes.size());
        return "";
    }

    void Present(const Words& words)
    {
        if (installed.empty() || usb.interfaces.size() > installed.size()) installed = usb.interfaces;
        usb.interfaces.clear();
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (words[i] == "many") {
                usb.interfaces.insert(usb.interfaces.end(), Number(words[++i]), "\\\\?\\usb#vid_0000&pid_0000#x#{}");
            } else {
                usb.interfaces.push_back(words[i].size() == 1 ? installed.at(Number(words[i])) : words[i]);
            }
        }
    }

    ScriptedUsb usb;
    std::vector<std::string> installed;  // all interfaces that have been present at once
    CNuComUsb transport{log, usb, clock, stop};
};

const std::string kStories =
#include "comm/stories/usb_transport.story"
    ;

TEST_P(UsbStory, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Transport, UsbStory, testing::ValuesIn(tests::TextCasesIn(kStories)), tests::StoryName);

}  // namespace
}  // namespace marbex::comm
