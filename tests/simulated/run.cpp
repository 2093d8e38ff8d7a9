#include "run.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "device/model_description.h"
#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/storage.h"
#include "platform/text.h"
#include "script.h"

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
constexpr std::size_t kStamp = 26;  // characters before the text of a line of the service log

// By their numbers in a profile.
enum Link { kSerial, kTcp, kUsb };

std::string ProfileOf(Random& dice, const std::string& model, Link link, bool confirms)
{
    static constexpr int kTimeouts[] = {200, 500, 1000, 3000, 5000, 10000};
    static constexpr int kLogs[] = {0, 1, 1, 1, 3};
    const auto number = [](const char* name, int value) {
        char line[64];
        std::snprintf(line, sizeof line, "\"%s\"=dword:%08x\n", name, static_cast<unsigned>(value));
        return std::string(line);
    };
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n@=\"Service."
           "MarbexOposPrnDriver\"\n\"PrinterModel\"=\"" +
           model + "\"\n" + number("PortType", link) + number("Speed", dice.OneIn(2) ? 9600 : 115200) +
           "\"PrinterName\"=\"Receipt\"\n" + number("TimeoutRX", dice.OneOf(kTimeouts)) +
           number("TimeoutTX", dice.OneOf(kTimeouts)) + number("LogEnabled", dice.OneOf(kLogs)) +
           number("Settings", dice.OneIn(4) ? 2 : 0) + number("ConfirmOutput", confirms ? 1 : 0);
}

simulated::Pace PaceOf(Random& dice)
{
    static constexpr uint32_t kSwitches[] = {2, 5, 20, 100, 1000};
    static constexpr uint32_t kStalls[] = {0, 0, 10000, 2000};
    return {.switchOneIn = dice.OneOf(kSwitches), .stallOneIn = dice.OneOf(kStalls), .longestStall = 3000};
}

// A run and its judgement; lives for one run.
class Run {
public:
    Run(uint64_t seed, bool aloud, void (*finished)(const Outcome&))
        : seed_(seed),
          dice_(seed),
          finished_(finished),
          model_(Model()),
          printer_(model_),
          link_(dice_.OneIn(2) ? kTcp : static_cast<Link>(dice_.Below(3))),
          confirms_(dice_.OneIn(3)),
          cable_(printer_, kSendBuffer[link_], dice_.Next())
    {
        story_.aloud = aloud;
    }

    void Go()
    {
        const std::string profile = ProfileOf(dice_, model_, link_, confirms_);
        if (story_.aloud) std::printf("%s\n", profile.c_str());
        simulated::Storage::LoadRegistry("Windows Registry Editor Version 5.00\n\n" + profile);
        simulated::Wiring& wiring = simulated::TheWiring();
        if (link_ == kTcp) wiring.tcp[{kAddress, kPort}] = &cable_;
        if (link_ == kSerial) wiring.serial["COM1"] = &cable_;
        if (link_ == kUsb) wiring.usb["Receipt"] = &cable_;
        cable_.onChange = [this](const std::string& what) { story_.Tell("# cable: " + what); };
        static constexpr int kLatencies[] = {0, 0, 5, 5, 5, 200, 2000};
        cable_.latency = 1000U * static_cast<unsigned>(dice_.Between(0, dice_.OneOf(kLatencies)));
        simulated::TheStorage().onAppend = [this](std::string_view path, std::string_view line) {
            if (path.find("SOLog") == std::string_view::npos) return story_.Add(line);
            // An address is in this line.
            if (line.find("DoValidateDataW Begin") == std::string_view::npos)
                story_.Tell(line.substr(kStamp, line.find('\r') - kStamp));
        };
        const simulated::Pace pace = PaceOf(dice_);
        Processor().Run(
            dice_.Next(), pace, [this](const std::string& why) { Stuck(why); }, [this] { Play(); });
        if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0)
            complaints_.emplace_back("memory is left behind");
        story_.Add(Wire());
        if (story_.aloud) PrintWire();
        Finish();
    }

private:
    std::string Model()
    {
        if (dice_.OneIn(2)) return "TALIS ETHERNET";
        const auto models = device::ModelDescriptions();
        std::string model(models[dice_.Below(models.size())].name);
        return model == "ARGO PC TURBO" ? "TALIS" : model;  // it has a second cable
    }

    void Play()
    {
        auto till = std::make_unique<Till>(story_, account_, cable_);
        {
            Script script(dice_.Next(), *till, story_, account_, cable_, printer_, link_ == kTcp);
            script.Run();
            script.Settle();
        }
        prints_ = till->Prints();
        complaints_ = till->Complaints();
        till.reset();
        platform::RunWaitingMessages();
        const auto left = [this](const char* what, std::size_t count) {
            if (count != 0) complaints_.push_back(std::to_string(count) + ' ' + what + " left behind");
        };
        left("threads", Processor().LiveThreads() - 1);
        left("windows", platform::LiveWindows());
        left("kernel objects", platform::LiveObjects());
        if (cable_.IsConnected()) complaints_.emplace_back("the connection is left open");
        for (const std::string& complaint :
             account_.Judge({Wire(), cable_.Delivered(), printer_.paper, confirms_, link_ == kSerial}))
            complaints_.push_back(complaint);
    }

    // What a system has taken for a connection it has promised to send; from other links it can be taken back.
    const std::string& Wire() const { return link_ == kTcp ? cable_.Taken() : cable_.Delivered(); }

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

    void Finish()
    {
        for (const std::string& complaint : complaints_)
            std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed_), complaint.c_str());
        std::fflush(stdout);
        finished_({complaints_.empty(), story_.Fingerprint(), static_cast<uint64_t>(prints_), Processor().Points()});
    }

    const uint64_t seed_;
    Random dice_;
    void (*const finished_)(const Outcome&);
    const std::string model_;
    Story story_;
    Account account_;
    PrinterEnd printer_;
    const Link link_;
    const bool confirms_;
    simulated::Cable cable_;
    std::vector<std::string> complaints_;
    int prints_ = 0;
};

}  // namespace

void RunSeed(uint64_t seed, bool aloud, void (*finished)(const Outcome&))
{
    Run(seed, aloud, finished).Go();
}

void WarmUp()
{
    for (const device::ModelDescription& model : device::ModelDescriptions())
        PrinterEnd(model.name).Take("warm \x82\n");
    platform::LoadAnsiCodePage(platform::SystemRegistry());
}

}  // namespace marbex::tests
