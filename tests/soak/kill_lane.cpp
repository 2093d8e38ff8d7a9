#include "kill_lane.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

namespace marbex::soak {
namespace {

namespace vp = virtual_printer;
using std::chrono::milliseconds;

constexpr auto kOpening = std::chrono::seconds(10);
constexpr uint32_t kMostBytes = 6000;  // of the load before the kill
constexpr uint32_t kMostOpeningMs = 700;
constexpr milliseconds kMostLoad{500};
constexpr uint32_t kFirstReceipt = 50'000;  // the killed ones do not come so far
constexpr const char* kLogs[] = {"SOLogFile1.txt", "COposComm1.log"};

std::string Contents(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool IsLocked(const std::string& file)
{
    const int fd = ::open(file.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool locked = ::flock(fd, LOCK_EX | LOCK_NB) != 0;
    ::close(fd);
    return locked;
}

bool IsExclusive(const std::string& terminal)
{
    const int fd = ::open(terminal.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    int exclusive = 0;
    const bool asked = fd >= 0 && ::ioctl(fd, TIOCGEXCL, &exclusive) == 0;
    ::close(fd);
    return !asked || exclusive != 0;
}

}  // namespace

KillLane::KillLane(int number, Cable cable, uint64_t seed, std::string folder, Tally& tally)
    : tally_(tally),
      seed_(seed),
      dice_(seed),
      paper_(Station::ModelOf(number, cable), seed, true),
      station_(number, cable, true, std::move(folder),
               [this](const vp::VirtualPrinter&, const vp::Happening& happening) { paper_.Happened(happening); })
{
}

void KillLane::Run(uint32_t rounds)
{
    for (uint32_t number = 1; number <= rounds && Round(number); ++number) {
    }
    // What a writer that was killed had not put in the registry's place yet.
    uint64_t temporaries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(station_.Folder())) {
        const std::string name = entry.path().filename();
        temporaries += name.starts_with("registry.reg.") && name != "registry.reg.lock" ? 1 : 0;
    }
    tally_.Left(temporaries);
}

bool KillLane::Round(uint32_t number)
{
    const bool net = dice_.Percent(25);
    const std::string title = "round " + std::to_string(number) + (net ? " with an event file" : "");
    try {
        TillProcess till(station_.Folder());
        const bool printing =
            KillSometime(till, std::string(net ? "net " : "") + "load " + std::to_string(seed_ + number));
        if (till.Reap() != -SIGKILL) {
            Fail(title, "the till ended by itself");
            return false;
        }
        LookForLeftovers(title);
        tally_.Killed(printing, PrintNext(number, net, title));
    } catch (const std::system_error& error) {
        Fail(title, error.what());
        return false;
    }
    return true;
}

// While it opens (false), or when the printer has got a certain byte of what it prints.
bool KillLane::KillSometime(TillProcess& till, const std::string& load)
{
    till.Say(load);
    if (dice_.Percent(25)) {
        std::this_thread::sleep_for(milliseconds(dice_.Below(kMostOpeningMs)));
        till.Kill();
        return false;
    }
    const auto opened = till.Next(kOpening);
    if (opened != "opened 0") {
        throw std::system_error(EIO, std::generic_category(),
                                "the till that is to be killed: " + opened.value_or("silence"));
    }
    uint64_t received = 0;
    station_.Printer().With([&received](vp::VirtualPrinter& printer) { received = printer.Received(); });
    const auto dead = std::make_shared<std::atomic<bool>>(false);
    const pid_t child = till.Id();
    station_.Printer().At(received + dice_.Below(kMostBytes), [dead, child] {
        if (!dead->exchange(true)) {
            ::kill(child, SIGKILL);
        }
    });
    // Its output is read, or it would wait for its reader instead of printing.
    const auto end = std::chrono::steady_clock::now() + kMostLoad;
    while (!*dead && std::chrono::steady_clock::now() < end && till.Next(kMostLoad)) {
    }
    if (!dead->exchange(true)) {
        till.Kill();
    }
    return true;
}

void KillLane::LookForLeftovers(const std::string& round)
{
    // A pseudo-terminal is free when its printer has noticed that it is closed.
    if (!station_.Printer().WaitFor([this](const vp::VirtualPrinter&) { return !paper_.Connected(); })) {
        Fail(round, "the link is still open");
    }
    const std::string folder = station_.Folder() + "/";
    for (const char* file : {"registry.reg.lock", "registry.reg", "events", kLogs[0], kLogs[1], "tty"}) {
        if (IsLocked(folder + file)) {
            Fail(round, std::string(file) + " is still locked");
        }
    }
    if (station_.TheCable() == Cable::kAdapter && IsExclusive(folder + "tty")) {
        Fail(round, "the terminal is still exclusive");
    }
    const std::string registry = Contents(folder + "registry.reg");
    if (registry.find("POSPrinter\\Till]") == std::string::npos || registry.back() != '\n') {
        Fail(round, "the registry file is not whole");
    }
}

// How long it takes until its receipt is on paper, in milliseconds from its start.
long KillLane::PrintNext(uint32_t roundNumber, bool net, const std::string& round)
{
    const uint32_t number = kFirstReceipt + roundNumber;
    station_.Printer().With([this](vp::VirtualPrinter&) { paper_.Begin(); });
    const auto start = std::chrono::steady_clock::now();
    const std::string folder = station_.Folder() + "/";
    TillProcess next(station_.Folder());
    next.Say(std::string(net ? "net " : "") + "one " + std::to_string(seed_) + " " + std::to_string(number));
    const auto opened = next.Next(kOpening);
    if (opened != "opened 0") {
        Fail(round, "the next till: " + opened.value_or("silence"));
        return 0;
    }
    const Receipt receipt = MakeReceipt(seed_, number);
    std::size_t done = 0;
    while (const auto line = next.Next(kOpening)) {
        done += line->starts_with("fate ") && line->find(" done ") != std::string::npos ? 1 : 0;
        if (line->starts_with("vitals")) {
            break;
        }
    }
    const bool printed = station_.Printer().WaitFor([&](const vp::VirtualPrinter&) {
        for (uint32_t job = 0; job < receipt.jobs.size(); ++job) {
            if (!paper_.Of({number, job}).Whole()) {
                return false;
            }
        }
        return true;
    });
    const auto waited = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start).count();
    tally_.Ended(printed ? ReceiptEnd::kPrinted : ReceiptEnd::kWrong, true, false);
    if (done != receipt.jobs.size() || !printed) {
        Fail(round, "the next till: " + std::to_string(done) + " of " + std::to_string(receipt.jobs.size()) +
                        " jobs done, " + (printed ? "" : "not ") + "on paper");
    }
    std::ostringstream mark;
    mark << '<' << std::setw(5) << std::setfill('0') << number << '.';
    if (Contents(folder + kLogs[0]).find(mark.str()) == std::string::npos) {
        Fail(round, "the next till: nothing in its log");
    }
    if (Contents(folder + "registry.reg").find("InprocServer32") == std::string::npos) {
        Fail(round, "the next till: could not write into the registry");
    }
    if (net && Contents(folder + "events").find("C\t") == std::string::npos) {
        Fail(round, "the next till: nothing in its event file");
    }
    for (const char* log : kLogs) {
        std::filesystem::remove(folder + log);
    }
    return static_cast<long>(waited);
}

void KillLane::Fail(const std::string& round, const std::string& what)
{
    tally_.Failed(1, station_.Title() + ", " + round + ": " + what, "");
}

}  // namespace marbex::soak
