#include "run.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "device/model_description.h"
#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/call.h"
#include "platform/simulated/machine/storage.h"
#include "platform/text.h"

// There when the program is built with the address sanitizer.
extern "C" [[gnu::weak]] int __lsan_do_recoverable_leak_check();

namespace marbex::tests {
namespace {

using simulated::Processor;
using simulated::Random;

constexpr uint32_t kAddress = 0xC0A80001;  // 192.168.0.1
constexpr uint16_t kPort = 9100;
// Bytes that a system keeps for a link that does not take them.
constexpr std::size_t kSendBuffer[] = {4096, 16 * 1024, 64};
constexpr const char* kSecondPort = "COM5";  // of the model that has a display of its own
constexpr std::size_t kStamp = 26;           // characters before the text of a line of the service log

std::string ProfileOf(const Setting& setting)
{
    const auto number = [](const char* name, uint32_t value) {
        char line[64];
        std::snprintf(line, sizeof line, "\"%s\"=dword:%08x\n", name, value);
        return std::string(line);
    };
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n@=\"Service."
           "MarbexOposPrnDriver\"\n\"PrinterModel\"=\"" +
           setting.model + "\"\n" + number("PortType", static_cast<uint32_t>(setting.link)) +
           number("Speed", setting.baudRate) + "\"PrinterName\"=\"Receipt\"\n" +
           number("TimeoutRX", setting.receiveTimeout) + number("TimeoutTX", setting.sendTimeout) +
           number("LogEnabled", setting.logEnabled) + number("Settings", setting.settings) +
           number("ConfirmOutput", setting.confirms ? 1 : 0);
}

// A run and its judgement; lives for one run.
class Run {
public:
    Run(const Setting& setting, bool aloud, void (*finished)(const Outcome&), const Play& play)
        : setting_(setting),
          finished_(finished),
          play_(play),
          printer_(setting.model),
          cable_(printer_, kSendBuffer[static_cast<std::size_t>(setting.link)], setting.cableDice)
    {
        story_.aloud = aloud;
    }

    void Go()
    {
        const std::string profile = ProfileOf(setting_);
        if (story_.aloud) std::printf("%s\n", profile.c_str());
        simulated::Storage::LoadRegistry("Windows Registry Editor Version 5.00\n\n" + profile);
        simulated::Wiring& wiring = simulated::TheWiring();
        if (setting_.link == Link::kTcp) wiring.tcp[{kAddress, kPort}] = &cable_;
        if (setting_.link == Link::kSerial) wiring.serial["COM1"] = &cable_;
        wiring.serial[kSecondPort] = &secondCable_;
        if (setting_.link == Link::kUsb) wiring.usb["Receipt"] = &cable_;
        cable_.onChange = [this](const std::string& what) { story_.Tell("# cable: " + what); };
        cable_.latency = setting_.latency;
        simulated::TheStorage().onAppend = [this](std::string_view path, std::string_view line) {
            if (path == "debugger" && line.find("exception") != std::string_view::npos)
                complaints_.emplace_back(line.substr(0, line.find('\n')));
            if (path == kEventFile && till_ != nullptr) till_->OnRecord(line);
            if (path.find("SOLog") == std::string_view::npos) return story_.Add(line);
            // An address is in this line.
            if (line.find("DoValidateDataW Begin") == std::string_view::npos)
                story_.Tell(line.substr(kStamp, line.find('\r') - kStamp));
        };
        Processor().Run(
            setting_.processorDice, setting_.pace, [this](const std::string& why) { Stuck(why); },
            [this] { RunPlay(); });
        if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0)
            complaints_.emplace_back("memory is left behind");
        story_.Add(Wire());
        if (story_.aloud) PrintWire();
        Finish();
    }

private:
    void RunPlay()
    {
        const simulated::Apart apart;
        auto till = std::make_unique<Till>(story_, account_, cable_, setting_.toFile);
        till_ = till.get();
        play_({*till, story_, account_, cable_, printer_, setting_.link});
        prints_ = till->Prints();
        for (const std::string& complaint : till->Complaints())
            complaints_.push_back(complaint);
        till_ = nullptr;
        till.reset();
        platform::RunWaitingMessages();
        const auto left = [this](const char* what, std::size_t count) {
            if (count != 0) complaints_.push_back(std::to_string(count) + ' ' + what + " left behind");
        };
        left("threads", Processor().LiveThreads() - 1);
        left("windows", platform::LiveWindows());
        left("kernel objects", platform::LiveObjects());
        if (cable_.IsConnected() || secondCable_.IsConnected()) complaints_.emplace_back("the connection is left open");
        for (const std::string& complaint :
             account_.Judge({Wire(), cable_.Delivered(), printer_.paper, setting_.confirms,
                             setting_.link == Link::kSerial, setting_.toFile}))
            complaints_.push_back(complaint);
    }

    // What a system has taken for a connection it has promised to send; from other links it can be taken back.
    const std::string& Wire() const { return setting_.link == Link::kTcp ? cable_.Taken() : cable_.Delivered(); }

    void PrintWire() const
    {
        std::printf("the link took:\n");
        for (const char byte : Wire()) {
            if (byte == '\n' || (byte >= ' ' && byte <= '~')) {
                std::putchar(byte);
            } else {
                std::printf("[%02x]", static_cast<unsigned char>(byte));
            }
        }
        std::printf("\n");
    }

    void Stuck(const std::string& why)
    {
        complaints_.push_back(why);
        Finish();
        std::_Exit(1);
    }

    static std::string Failed()
    {
        const std::string& what = simulated::TheMishap().what;
        return what.empty() ? what : " (" + what + ")";
    }

    void Finish()
    {
        for (const std::string& complaint : complaints_)
            std::printf("%s%s: %s\n", setting_.name.c_str(), Failed().c_str(), complaint.c_str());
        std::fflush(stdout);
        finished_({complaints_.empty(), story_.Fingerprint(), static_cast<uint64_t>(prints_), Processor().Points(),
                   simulated::TheMishap().counted});
    }

    const Setting setting_;
    void (*const finished_)(const Outcome&);
    const Play play_;
    Story story_;
    Account account_;
    PrinterEnd printer_;
    simulated::Cable cable_;
    DisplayEnd display_{printer_};
    simulated::Cable secondCable_{display_, kSendBuffer[0], 1};
    Till* till_ = nullptr;  // while there is one
    std::vector<std::string> complaints_;
    int prints_ = 0;
};

}  // namespace

void RunSetting(const Setting& setting, bool aloud, void (*finished)(const Outcome&), const Play& play)
{
    Run(setting, aloud, finished, play).Go();
}

void WarmUp()
{
    for (const device::ModelDescription& model : device::ModelDescriptions())
        PrinterEnd(model.name).Take("warm \x82\n");
    platform::LoadAnsiCodePage(platform::SystemRegistry());
}

}  // namespace marbex::tests
