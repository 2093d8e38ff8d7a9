// What a technician is told of the faults that a till can have: each names its cause and what to do next.

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "loopback_server.h"
#include "marbex_opos/check/check.h"
#include "platform/posix/local_printer.h"
#include "platform/posix/pseudo_terminal.h"
#include "tools/posix/program.h"
#include "tools/till.h"
#include "virtual_printer/server.h"

namespace marbex::tools {
namespace {

using namespace std::string_literals;
using tests::PseudoTerminal;
using virtual_printer::PaperState;
using virtual_printer::TcpPrinterServer;

constexpr const char* kClasses = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\";
const std::string kReady = "\x10\x0F\0\0\0\0"s;  // the answer to DLE EOT 0x14 of a printer that can print

// What listens on a port and answers every byte, or every third one, with the same. Without an answer it hangs up.
class Answering {
public:
    explicit Answering(std::optional<std::string> answer, std::size_t every = 1)
        : thread_([this, answer, every] { Serve(answer, every); })
    {
    }
    ~Answering() { thread_.join(); }
    uint16_t Port() const { return server_.Port(); }

private:
    void Serve(const std::optional<std::string>& answer, std::size_t every)
    {
        tests::LoopbackPeer peer = server_.Accept();
        try {
            while (answer && !peer.Read(every).empty())
                peer.Send(*answer);
        } catch (const std::runtime_error&) {  // the check has heard enough
        }
    }

    tests::LoopbackServer server_;
    std::thread thread_;
};

int ConnectTo(uint16_t port, int flags = 0)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(tests::kLoopback);
    const int caller = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
    connect(caller, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return caller;
}

// A port whose queue of callers is full: whoever connects waits in vain.
class BlackHole {
public:
    BlackHole()
    {
        for (int& caller : callers_)
            caller = ConnectTo(server_.Port(), SOCK_NONBLOCK);
    }
    ~BlackHole()
    {
        for (const int caller : callers_)
            close(caller);
    }
    uint16_t Port() const { return server_.Port(); }

private:
    tests::LoopbackServer server_{0, 0};
    std::array<int, 4> callers_{};
};

// A printer on a serial cable that hears one speed only.
class SerialPrinter {
public:
    explicit SerialPrinter(speed_t speed) : thread_([this, speed] { Serve(speed); }) {}
    ~SerialPrinter()
    {
        isOver_ = true;
        thread_.join();
        close(held_);
    }
    const std::string& Path() const { return cable_.Path(); }

private:
    void Serve(speed_t speed)
    {
        while (!isOver_) {
            pollfd item{cable_.Master(), POLLIN, 0};
            if (poll(&item, 1, 20) <= 0) continue;
            const bool isQuestion = cable_.Read(3) == "\x10\x04\x14";
            const termios settings = cable_.Settings();
            if (isQuestion && cfgetospeed(&settings) == speed) cable_.Send(kReady);
        }
    }

    PseudoTerminal cable_;
    int held_ = open(cable_.Path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);  // so that closing is no end
    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};

// Another program that keeps to itself what it has taken.
class Holder {
public:
    explicit Holder(const std::function<bool()>& take)
    {
        int ready[2];
        if (pipe(ready) != 0) throw std::runtime_error("no pipe");
        process_ = fork();
        if (process_ == 0) {
            const bool isHeld = take() && write(ready[1], "x", 1) == 1;
            while (isHeld)
                pause();
            _exit(1);
        }
        char byte = 0;
        close(ready[1]);
        if (read(ready[0], &byte, 1) != 1) throw std::runtime_error("not held");
        close(ready[0]);
    }
    ~Holder()
    {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

private:
    pid_t process_ = -1;
};

constexpr gid_t kDialout = 20;  // of Debian

// While it lives the superuser has no more rights than others; where there are no others, it has.
class CommonUser {
public:
    CommonUser() : wasSuperuser_(geteuid() == 0)
    {
        constexpr uid_t kNobody = 65534;
        isCommon_ = !wasSuperuser_ || seteuid(kNobody) == 0;
    }
    ~CommonUser()
    {
        if (wasSuperuser_ && seteuid(0) != 0) std::abort();
    }
    CommonUser(const CommonUser&) = delete;
    CommonUser& operator=(const CommonUser&) = delete;
    bool IsCommon() const { return isCommon_; }

private:
    const bool wasSuperuser_;
    bool isCommon_ = false;
};

// A till with one fault; what the fault needs lives as long.
struct Scene {
    tests::TempRegistry registry;
    std::string profile = "\"Com\"=dword:000000FF\n";  // lines of Till1
    std::string more;                                  // keys
    std::string server = MARBEX_SERVER_FILE;
    std::vector<std::shared_ptr<void>> kept;
    bool byCommonUser = false;

    template <class T, class... Arguments>
    T& Keep(Arguments&&... arguments)
    {
        const auto made = std::make_shared<T>(std::forward<Arguments>(arguments)...);
        kept.push_back(made);
        return *made;
    }
    TcpPrinterServer& Printer(const std::string& model = "TALIS ETHERNET", const std::string& configured = "")
    {
        auto& printer = Keep<TcpPrinterServer>(model);
        profile = Till::EthernetProfile(printer.Port(), configured.empty() ? model : configured);
        return printer;
    }
    void Listens(uint16_t port) { profile = Till::EthernetProfile(port); }
    void Serial(const std::string& path)
    {
        profile = "\"PrinterModel\"=\"TALIS\"\n";
        more += "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" + path + "\"=\"COM1\"\n";
    }
    // A cable on COM1; its path.
    std::string SerialCable()
    {
        const std::string path = Keep<PseudoTerminal>().Path();
        Serial(path);
        return path;
    }
    void Logs(const std::string& folder)
    {
        Printer();
        profile += Till::Number("LogEnabled", 1) + "\"LogPath\"=\"" + folder + "\"\n";
    }
    std::string MakeFile(const std::string& name, const std::string& contents) const
    {
        std::ofstream(registry.Folder() + "/" + name, std::ios::binary) << contents;
        return registry.Folder() + "/" + name;
    }

    std::vector<Step> Check()
    {
        registry.Write(kClasses + "POSPrinter\\Till1]\n@=\"Service.MarbexOposPrnDriver\"\n"s + profile + kClasses +
                       "CashDrawer\\Till1]\n@=\"Service.MarbexOposCashDrawerDriver\"\n" + more);
        std::optional<CommonUser> user;
        if (byCommonUser) {
            chmod(registry.Folder().c_str(), 0755);
            user.emplace();
        }
        Steps machine;
        CheckRegistry(machine);
        CheckServer(server, machine);
        std::vector<Step> steps = CheckDevice("Till1").List();
        steps.insert(steps.begin(), machine.List().begin(), machine.List().end());
        return steps;
    }
};

struct Fault {
    const char* name;
    std::function<void(Scene&)> arrange;
    const char* step;
    StepState state;
    const char* cause;  // each is part of what is said
    const char* next;
};

void Say(Scene& scene, const std::string& line)
{
    scene.Printer();
    scene.profile += line + "\n";
}

constexpr auto kWrong = StepState::kWrong;
constexpr auto kWarning = StepState::kWarning;

const Fault kFaults[] = {
    {"Misspelt", [](Scene& s) { Say(s, "\"PrinterModle\"=\"TALIS\""); }, "values", kWrong,
     "PrinterModle \"TALIS\" is unknown: did you mean PrinterModel?",
     "devices set Till1 PrinterModel=TALIS --default PrinterModle"},
    {"IllTyped", [](Scene& s) { Say(s, "\"TimeoutTX\"=\"5000\""); }, "values", kWrong, "REG_SZ, not REG_DWORD",
     "devices set Till1 TimeoutTX=5000"},
    {"OutOfRange", [](Scene& s) { s.Serial("/dev/none"), s.profile += Till::Number("Speed", 14400); }, "values", kWrong,
     "Speed 14400 is not one of 1200", "--default Speed"},
    {"UnknownModel", [](Scene& s) { s.Printer("TALIS ETHERNET", "TALLIS ETHERNET"); }, "values", kWrong,
     "not one of TALIS, TALIS ETHERNET", "\"PrinterModel=TALIS ETHERNET\""},
    {"ModelWithoutThatPort", [](Scene& s) { s.Printer("PELTO"); }, "values", kWarning, "PELTO has only: serial, usb",
     "devices set Till1 PortType=serial"},
    {"NoTimeToReceive", [](Scene& s) { Say(s, "\"TimeoutRX\"=dword:00000000"); }, "values", kWrong,
     "must not be 0 on ethernet: opening gives 111", "--default TimeoutRX"},
    {"NoAddress", [](Scene& s) { Say(s, "\"IPAddress\"=\"192.168.0.300\""); }, "port", kWrong,
     "192.168.0.300:", "IPAddress=ADDRESS"},
    {"Refused", [](Scene& s) { s.Listens(s.Keep<tests::DeafPort>().Number()); }, "port", kWrong,
     "refuses the connection: nothing listens on that port", "Port=9100"},
    {"BlackHole", [](Scene& s) { s.Listens(s.Keep<BlackHole>().Port()); }, "port", kWrong,
     "no answer from 127.0.0.1:", "ping 127.0.0.1"},
    {"Silent", [](Scene& s) { s.Printer().SetMute(true); }, "printer", kWrong, "nothing answers", "Port=9100"},
    {"ServesAnotherTill",
     [](Scene& s) {
         const uint16_t port = s.Keep<tests::LoopbackServer>().Port();
         s.Keep<Holder>([port] { return ConnectTo(port) >= 0; });
         s.Listens(port);
     },
     "printer", kWrong,
     "nothing answers: the printer is off, busy with another till, or it is no printer; connected to it: tools_test (",
     "Port=9100"},
    {"HangsUp", [](Scene& s) { s.Listens(s.Keep<Answering>(std::nullopt).Port()); }, "printer", kWrong,
     "ends the connection at once", "Port=9100"},
    {"Rubbish", [](Scene& s) { s.Listens(s.Keep<Answering>("\xFF\x01rub").Port()); }, "printer", kWrong,
     "not as one of these printers: FF 01 72 75 62", "Port=9100"},
    {"WebServer", [](Scene& s) { s.Listens(s.Keep<Answering>("HTTP/1.1 400 Bad Request\r\n\r\n").Port()); }, "printer",
     kWrong, "a web server answers (HTTP/1.1 400 Bad Request)", "Port=9100"},
    {"OtherModel", [](Scene& s) { s.Printer("DORIN", "TALIS ETHERNET"); }, "model", kWrong,
     "the printer is a DORIN, and PrinterModel is TALIS ETHERNET", "devices set Till1 PrinterModel=DORIN"},
    {"NoneOfTheModels", [](Scene& s) { s.Listens(s.Keep<Answering>(kReady, 3).Port()); }, "model", kWrong,
     "tells its status and not its model", "switch the printer off and on"},
    {"CoverOpen", [](Scene& s) { s.Printer().SetCover(true); }, "cover", kWrong, "open: nothing is printed",
     "close it"},
    {"PaperOut", [](Scene& s) { s.Printer().SetPaper(PaperState::kOut); }, "paper", kWrong, "there is none",
     "put a roll in"},
    {"PaperLow", [](Scene& s) { s.Printer().SetPaper(PaperState::kLow); }, "paper", kWarning, "running out",
     "have a new roll ready"},
    {"Jam", [](Scene& s) { s.Printer("BRISA-HD").SetJam(true); }, "paper", kWrong, "jammed",
     "take the jammed paper out"},
    {"NoComPort", [](Scene& s) { s.Serial("/dev/none"), s.profile += Till::Number("Com", 3); }, "port", kWrong,
     "there is no COM3; there are: COM1 (/dev/none)", "devices set Till1 Com=1"},
    {"NoNode", [](Scene& s) { s.Serial("/dev/none"); }, "port", kWrong,
     "COM1 (/dev/none) is not there: No such file or directory", "plug the adapter in"},
    {"NoTerminal", [](Scene& s) { s.Serial("/dev/null"); }, "port", kWrong, "COM1 (/dev/null) is no serial port",
     "Com=NUMBER"},
    {"Held",
     [](Scene& s) {
         const std::string path = s.SerialCable();
         s.Keep<Holder>([path] { return flock(open(path.c_str(), O_RDWR | O_NOCTTY), LOCK_EX) == 0; });
     },
     "port", kWrong, "is held by tools_test (", "close it"},
    {"NoPermission",
     [](Scene& s) {
         chmod(s.SerialCable().c_str(), 0);
         s.byCommonUser = true;
     },
     "port", kWrong, "Permission denied; it is for no group", "sudo tee /etc/udev/rules.d/60-marbex-opos.rules"},
    {"NotInTheGroup",
     [](Scene& s) {
         const std::string path = s.SerialCable();
         if (chown(path.c_str(), 0, kDialout) != 0 || chmod(path.c_str(), 0660) != 0) throw std::runtime_error(path);
         s.byCommonUser = true;
     },
     "port", kWrong, "it is for the group dialout, and nobody is not in it", "sudo usermod -aG dialout nobody"},
    {"OtherSpeed", [](Scene& s) { s.Serial(s.Keep<SerialPrinter>(B38400).Path()); }, "printer", kWrong,
     "answers at 38400 baud, and Speed is 9600", "devices set Till1 Speed=38400"},
    {"NoSpeed", [](Scene& s) { s.SerialCable(); }, "printer", kWrong, "nothing answers at any speed", "Com=NUMBER"},
    {"NoUsbPrinter", [](Scene& s) { s.profile = "\"PortType\"=dword:00000002\n\"PrinterName\"=\"Nobody\"\n"; }, "port",
     kWrong, "there is no USB printer \"Nobody\"", "devices set Till1 PrinterName="},
    {"OtherUsbPrinter",
     [](Scene& s) {
         s.profile = "\"PortType\"=dword:00000002\n\"PrinterName\"=\"Nobody\"\n";
         s.more = tests::UsbPrinterLines("/dev/usb/none");
     },
     "port", kWrong, "there is no USB printer \"Nobody\"; there are: Receipt Printer",
     "\"PrinterName=Receipt Printer\""},
    {"UsbPrinterGone",
     [](Scene& s) {
         s.profile = "\"PortType\"=dword:00000002\n\"PrinterName\"=\"Receipt Printer\"\n";
         s.more = tests::UsbPrinterLines("/dev/usb/none");
     },
     "port", kWrong, "/dev/usb/none: No such file or directory", "switch the printer on, plug its cable in"},
    {"OtherMakersPrinter", [](Scene& s) { s.profile = "@=\"Other.Driver\"\n"; }, "device", kWrong,
     "belongs to another maker's service object, Other.Driver", "devices add OTHER-NAME"},
    {"OtherMakersDrawer",
     [](Scene& s) { s.Printer(), s.more = kClasses + "CashDrawer\\Till1]\n@=\"Other.Driver\"\n"s; }, "device", kWarning,
     "the cash drawer Till1 belongs to another maker's service object", "devices add OTHER-NAME"},
    {"NoDisplayEntry", [](Scene& s) { s.Printer("NESTO"); }, "device", kWarning,
     "the line display of the printer has no entry", "devices set Till1 PrinterModel=NESTO"},
    {"NoLogFolder", [](Scene& s) { s.Logs(s.registry.Folder() + "/logs"); }, "logs", kWarning, "is not there",
     "mkdir -p"},
    {"LogFolderIsAFile", [](Scene& s) { s.Logs(s.MakeFile("logs", "x")); }, "logs", kWarning, "is no folder",
     "LogPath=FOLDER"},
    {"LogBehindALink",
     [](Scene& s) {
         const std::string folder = s.registry.Folder() + "/shared";
         std::filesystem::create_directory(folder);
         chmod(folder.c_str(), 0777);
         std::filesystem::create_symlink("/etc/hostname", folder + "/SOLogFile1.txt");
         s.Logs(folder);
     },
     "logs", kWarning, "is there and the driver does not write to it", "LogPath=FOLDER"},
    {"LargeLog",
     [](Scene& s) {
         std::filesystem::resize_file(s.MakeFile("COposComm1.log", "x"), 101 << 20);
         s.Logs(s.registry.Folder());
     },
     "logs", kWarning, "COposComm1.log has grown to 101 MB and has no limit", "devices set Till1 LogLimit=20"},
    {"Unregistered", [](Scene&) {}, "registration", kWrong, "not registered: no control object finds them",
     "marbex-opos register"},
    {"NoLibrary", [](Scene& s) { s.server = "/nowhere.so"; }, "library", kWrong, "/nowhere.so is registered and is not",
     "marbex-opos register"},
    {"NoServerAtAll", [](Scene& s) { s.server = s.MakeFile("text.so", "text"); }, "library", kWrong,
     "is no library of this system", "marbex-opos register"},
    {"OtherWidth",
     [](Scene& s) {
         s.server = s.MakeFile("narrow.so",
                               "\x7F"
                               "ELF\x01");
     },
     "library", kWrong, "is for programs of 32 bits, this one is of 64", "marbex-opos register"},
    {"NotTheServer", [](Scene& s) { s.server = "libm.so.6"; }, "library", kWrong, "", "marbex-opos register"},
};

void PrintTo(const Fault& fault, std::ostream* to)
{
    *to << fault.name;
}

class CheckFault : public ::testing::TestWithParam<Fault> {};

TEST_P(CheckFault, IsNamedWithItsCauseAndTheNextStep)
{
    if (GetParam().name == std::string_view("NotInTheGroup") && geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a device to a group";
    Scene scene;
    GetParam().arrange(scene);
    if (scene.byCommonUser && !CommonUser().IsCommon()) GTEST_SKIP() << "there is nobody but the superuser";
    const std::vector<Step> steps = scene.Check();
    const auto found = std::ranges::find_if(
        steps, [](const Step& one) { return one.name == GetParam().step && one.state == GetParam().state; });
    std::string all;
    for (const Step& step : steps)
        all += std::to_string(static_cast<int>(step.state)) + " " + step.name + ": " + step.text + " -> " + step.next +
               "\n";
    ASSERT_NE(found, steps.end()) << all;
    EXPECT_NE(found->text.find(GetParam().cause), std::string::npos) << all;
    EXPECT_NE(found->next.find(GetParam().next), std::string::npos) << all;
}

INSTANTIATE_TEST_SUITE_P(All, CheckFault, ::testing::ValuesIn(kFaults), [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace marbex::tools
