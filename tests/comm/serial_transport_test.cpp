#include "comm/serial_transport.h"

#include "comm/scripted_serial.h"
#include "comm/transport_story.h"

namespace marbex::comm {
namespace {

using platform::SerialTransfer;
using platform::SystemVersion;
using tests::ScriptedSerial;

const std::map<std::string, SystemVersion::Family> kFamilies{{"9x", SystemVersion::Family::kWindows9x},
                                                             {"nt", SystemVersion::Family::kWindowsNt},
                                                             {"other", SystemVersion::Family::kOther}};
const std::map<std::string, ScriptedSerial::LinkState> kLinks{{"present", ScriptedSerial::LinkState::kPresent},
                                                              {"missing", ScriptedSerial::LinkState::kMissing},
                                                              {"error", ScriptedSerial::LinkState::kError}};

// What is not as a line of ours always is comes in words.
std::string Describe(const platform::LineSettings& line)
{
    static constexpr const char* kParities[] = {"none", "odd", "even"};
    static constexpr const char* kControls[] = {"disabled", "enabled", "handshake"};
    std::ostringstream text;
    text << line.baudRate << ' ' << int{line.byteSize} << ' ' << kParities[static_cast<int>(line.parity)] << ' '
         << (line.stopBits == platform::StopBits::kTwo ? 2 : 1) << " dtr " << kControls[static_cast<int>(line.dtr)]
         << " rts " << kControls[static_cast<int>(line.rts)];
    const std::pair<bool, const char*> flags[] = {
        {line.parityCheck, "parityCheck"},      {line.ctsOutputFlow, "cts"},    {line.dsrOutputFlow, "dsr"},
        {line.dsrSensitivity, "dsrSensitive"},  {line.xonXoffOutput, "xonOut"}, {line.xonXoffInput, "xonIn"},
        {line.replaceErrors, "replace"},        {line.stripNul, "strip"},       {line.abortOnError, "abort"},
        {!line.continueAfterXoff, "stopsXoff"}, {!line.binary, "text"}};
    for (const auto& [set, name] : flags)
        text << (set ? std::string(" ") + name : "");
    text << " limits " << line.xonLimit << ' ' << line.xoffLimit << " characters " << int{line.xonCharacter} << ' '
         << int{line.xoffCharacter} << ' ' << int{line.eventCharacter};
    return text.str();
}

// A machine with one serial port.
class SerialStory : public tests::TransportStory {
protected:
    SerialStory()
    {
        switches = {{"canOpen", &serial.canOpen},
                    {"canDefine", &serial.canDefine},
                    {"canGet", &serial.canGet},
                    {"canApply", &serial.canApply},
                    {"canLimit", &serial.canSetTimeouts},
                    {"canSetLines", &serial.canSetLines},
                    {"canPurge", &serial.canPurge},
                    {"canClose", &serial.canClose},
                    {"gone", &serial.gone},
                    {"mapReadable", &serial.mapReadable},
                    {"parityCheck", &serial.settings.parityCheck}};
        verbs["init"] = [this](const Words& w) {
            return Code(
                transport.InitPort(w[0].c_str(), Number(w[1]), Number(w[2]), Number(w[3]), Number(w[4]), Number(w[5])));
        };
        verbs["open"] = [this](const Words&) { return Code(transport.OpenSerial()); };
        verbs["opened"] = [this](const Words& w) {
            transport.InitPort("COM1", 9600, 0, 8, 0, w.empty() ? 0 : Number(w[0]));
            const uint32_t result = transport.OpenSerial();
            Forget();
            return Code(result);
        };
        verbs["close"] = [this](const Words&) { return Code(transport.CloseSerial()); };
        verbs["dtr"] = [this](const Words& w) { return Code(transport.SetDTR(w[0] == "on")); };
        verbs["rts"] = [this](const Words& w) { return Code(transport.SetRTS(w[0] == "on")); };
        verbs["timeouts"] = [this](const Words& w) {
            return Code(transport.SetTimeout(Number(w[0]), Number(w[1]), Number(w[2]), Number(w[3]), Number(w[4])));
        };
        verbs["packets"] = [this](const Words& w) {
            return Code(transport.SetPacketSerial(Number(w[0]), Number(w[1])));
        };
        verbs["write"] = [this](const Words& w) {
            const std::vector<uint8_t> bytes(Number(w[0]), 'x');
            return Code(transport.WriteSerial(bytes.data(), Number(w[0])));
        };
        verbs["read"] = [this](const Words& w) {
            uint32_t count = 99;
            std::vector<uint8_t> room(Number(w[0]));
            const uint32_t code = transport.ReadSerial(room.data(), Number(w[0]), &count);
            return Code(code) + " " + Code(count);
        };
        verbs["moveNothing"] = [this](const Words&) {
            uint32_t count = 9;
            uint8_t byte = 0;
            return tests::Joined(std::vector{transport.WriteSerial(nullptr, 5), transport.WriteSerial(&byte, 0),
                                             transport.ReadSerial(nullptr, 5, &count),
                                             transport.ReadSerial(&byte, 0, &count), count});
        };
        verbs["clean"] = [this](const Words& w) {
            return Code(transport.CleanSerial(w[0] == "out", w.back() == "in"));
        };
        verbs["isPort"] = [this](const Words& w) {
            return Code(transport.CheckCom(w.empty() ? "" : w[0].c_str()) != 0);
        };
        verbs["enumerate"] = [this](const Words& w) {
            std::vector<char> list(Number(w[0]));
            const uint32_t code = transport.EnumPorts(list);
            return Code(code) + " " + list.data();
        };
        verbs["ports"] = [this](const Words& w) {
            serial.ports.clear();
            for (std::size_t i = 0; i < w.size(); i += 2)
                serial.ports.push_back({w[i], w[i + 1]});
            return "";
        };
        verbs["version"] = [this](const Words& w) {
            serial.version.reset();
            if (w[0] == "none") return std::string();
            serial.version = SystemVersion{kFamilies.at(w[0]), Number(w[1]), Number(w[2])};
            uint32_t code = 1, error = 0;
            EXPECT_EQ(transport.GetSystemVersion(code, error), 1);
            return Code(code);
        };
        verbs["link"] = [this](const Words& w) { return serial.link = kLinks.at(w[0]), ""; };
        // "fails 0" or "moves 2": every write from now on; "at 2": only that one, all others move all.
        verbs["writes"] = [this](const Words& w) { return Writes(w); };
        verbs["reads"] = [this](const Words& w) { return serial.read = {w[0] == "moves", Number(w[1])}, ""; };
        verbs["path"] = [this](const Words&) { return serial.openedPath; };
        verbs["links"] = [this](const Words&) { return tests::Taken(serial.links); };
        verbs["lines"] = [this](const Words&) { return tests::Taken(serial.lines); };
        verbs["purges"] = [this](const Words&) { return tests::Taken(serial.purges); };
        verbs["settings"] = [this](const Words&) { return Describe(serial.settings); };
        verbs["limits"] = [this](const Words&) {
            const auto& t = serial.timeouts;
            return tests::Joined(
                std::vector{t.readInterval, t.readConstant, t.readMultiplier, t.writeConstant, t.writeMultiplier});
        };
        verbs["handles"] = [this](const Words&) { return std::to_string(serial.opened); };
        verbs["written"] = [this](const Words&) { return Code(transport.Use().BytesWritten()); };
        verbs["systemError"] = [this](const Words&) { return Code(transport.LastSystemError()); };
    }

    static std::string Code(uint32_t code) { return std::to_string(code); }

    std::string Writes(const Words& words)
    {
        if (words.empty()) return tests::Taken(serial.writes);
        const int only = words.size() > 2 ? std::stoi(words[3]) : 0;
        serial.write = [=, moves = words[0] == "moves", count = words[1]](int call, std::size_t size) {
            if (count == "all" || (only != 0 && call != only)) return SerialTransfer{true, size};
            return SerialTransfer{moves, count == "less" ? size - 1 : std::stoul(count)};
        };
        return "";
    }

    ScriptedSerial serial;
    CNuComSerial transport{log, serial, clock, stop};
};

const std::string kStories =
#include "comm/stories/serial_transport.story"
    ;

TEST_P(SerialStory, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Transport, SerialStory, testing::ValuesIn(tests::TextCasesIn(kStories)), tests::StoryName);

}  // namespace
}  // namespace marbex::comm
