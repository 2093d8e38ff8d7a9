// Confirmed receipts on three links, with a fault at every tenth byte: each is on paper exactly once after RETRY, but
// for what the printer had printed, or had lost, before it was sent again.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include "device/posix/device_bench.h"
#include "platform/posix/local_printer.h"

namespace marbex::test {
namespace {

using namespace opos;
using namespace std::chrono_literals;
using virtual_printer::LinkOptions;
using virtual_printer::PaperState;
using virtual_printer::PrinterServer;

enum class Fault { kPaperOut, kCoverOpen, kCablePulled, kPowerCycled };
constexpr Fault kFaults[] = {Fault::kPaperOut, Fault::kCoverOpen, Fault::kCablePulled, Fault::kPowerCycled};
constexpr const char* kFaultNames[] = {"paper out", "cover open", "cable pulled", "power cycled"};

// How often a receipt's lines are on paper.
struct Account {
    int receipts = 0;
    int again = 0;   // lines that were printed, and sent again
    int lost = 0;    // lines of confirmed jobs that were in the printer when its power went
    int errors = 0;  // events
};

// A fault that is to happen, unless the receipt it was meant for has been confirmed before.
struct Meeting {
    std::atomic<bool> called{false};
    std::atomic<bool> calledOff{false};
};

// What a receipt went through.
struct Course {
    std::size_t errors = 0;  // events; each of a lost link had the receipt, or one of its jobs, sent again
    bool mayBeLost = false;  // the power went when the printer had confirmed it, or a job of it
};

// One till: a device, its printer at the end of a link, and a thread that all of it runs on.
class Till {
public:
    Till(LinkOptions::Kind kind, Fault fault, const std::string& folder)
        : kind_(kind), fault_(fault), unit_(static_cast<char>('1' + static_cast<int>(fault)))
    {
        LinkOptions link;
        link.kind = kind;
        link.socketPath = folder + "/usb" + unit_;
        if (kind == LinkOptions::Kind::kSerial) link.terminalLink = folder + "/tty" + unit_;
        virtual_printer::PrinterOptions slow;
        slow.speed = 400;  // so that bytes wait in the printer
        server_ = std::make_unique<PrinterServer>("TALIS", link, slow);
        node_ = kind == LinkOptions::Kind::kSerial ? link.terminalLink : link.socketPath;
    }

    std::string Name() const { return std::string("Till") + unit_ + std::to_string(static_cast<int>(kind_)); }

    std::string Profile() const
    {
        std::ostringstream lines;
        lines << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\" << Name() << "]\n"
              << "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModel\"=\"TALIS\"\n\"ConfirmOutput\"=dword:1\n"
              << "\"TimeoutRX\"=dword:1f4\n\"TimeoutTX\"=dword:1f4\n";
        if (kind_ == LinkOptions::Kind::kTcp) {
            lines << "\"PortType\"=dword:1\n\"IPAddress\"=\"127.0.0.1\"\n\"Port\"=dword:" << std::hex << server_->Port()
                  << "\n";
        } else if (kind_ == LinkOptions::Kind::kUsb) {
            lines << "\"PortType\"=dword:2\n\"PrinterName\"=\"Printer" << unit_ << "\"\n"
                  << tests::UsbPrinterLines(node_, std::string("Printer") + unit_, "F055", unit_);
        } else {
            lines << "\"PortType\"=dword:0\n\"Com\"=dword:" << unit_ << "\n\"Speed\"=dword:1c200\n"
                  << "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" << node_ << "\"=\"COM" << unit_
                  << "\"\n";
        }
        return lines.str();
    }

    // Receipts with the fault at every tenth byte, until one is too short for it.
    void Run(Account& account)
    {
        const auto device = device::CreateModelDevice("TALIS");
        control_.onEvent = [&](const ControlEvent& event, int32_t* response) {
            if (event.name != "SOError") return;
            ++account.errors;
            server_->SetPaper(PaperState::kOk);
            server_->SetCover(false);
            *response = OPOS_ER_RETRY;
        };
        if (device->OpenService("POSPrinter", Name(), &control_) != 0 || device->ClaimDevice(0) != 0) {
            ADD_FAILURE() << Name() << " cannot be opened";
            return;
        }
        device->SetPropertyNumber(PIDX_DeviceEnabled, 1);
        device->SetPropertyNumber(PIDXPtr_AsyncMode, 1);
        bool met = true;
        for (uint64_t at = 1; met && !testing::Test::HasFailure(); at += 10) {
            met = false;
            for (const bool transaction : {false, true})
                PrintOne(*device, at, transaction, met);
        }
        account.receipts = receipts_;
        Judge(account);
        device->CloseService();
    }

private:
    // Odd receipts are three jobs (and the feed before the cut), even ones a transaction of them.
    void PrintOne(device::POSPrinterDevice& device, uint64_t at, bool transaction, bool& met)
    {
        const auto meeting = std::make_shared<Meeting>();
        while (!ArrangeFault(at, meeting)) {  // a question of the polling came in between
        }
        control_.events.clear();
        const std::string number = std::to_string(++receipts_);
        if (transaction) device.TransactionPrint(PTR_S_RECEIPT, PTR_TP_TRANSACTION);
        const int32_t results[] = {device.PrintNormal(PTR_S_RECEIPT, "receipt " + number + " first\nand second\n"),
                                   device.PrintNormal(PTR_S_RECEIPT, "receipt " + number + " total\n"),
                                   device.CutPaper(100),
                                   transaction ? device.TransactionPrint(PTR_S_RECEIPT, PTR_TP_NORMAL) : 0};
        for (const int32_t result : results)
            EXPECT_EQ(result, 0);
        const std::size_t jobs = transaction ? 1 : 4;
        EXPECT_TRUE(RunUntil([&] { return control_.Named("SOOutputComplete").size() >= jobs; })) << Name();
        meeting->calledOff = true;
        met = met || meeting->called.load();
        server_->SetPaper(PaperState::kOk);  // it may have run out behind the confirmation
        server_->SetCover(false);
        // What a printer has confirmed it may still lose while it waits in there, and that is not the driver's.
        Course& course = courses_.emplace_back();
        course.errors = control_.Named("SOError").size();
        course.mayBeLost =
            fault_ == Fault::kPowerCycled && meeting->called.load() && (!transaction || course.errors == 0);
        const std::string last = "receipt " + number + " total";
        EXPECT_TRUE(server_->WaitFor([&](const auto& printer) {
            const auto lines = printer.Lines();
            const bool printed = std::find(lines.begin(), lines.end(), last) != lines.end();
            return printer.State().waitingBytes == 0 && (printed || course.mayBeLost);
        })) << Name()
            << ": " << last;
    }

    bool ArrangeFault(uint64_t at, const std::shared_ptr<Meeting>& meeting)
    {
        uint64_t received = 0;
        server_->With([&](virtual_printer::VirtualPrinter& printer) { received = printer.State().received; });
        try {
            server_->At(received + at, [this, meeting] {
                if (meeting->calledOff.load()) return;
                meeting->called = true;
                if (fault_ == Fault::kPaperOut) server_->SetPaper(PaperState::kOut);
                if (fault_ == Fault::kCoverOpen) server_->SetCover(true);
                if (fault_ == Fault::kCablePulled) server_->RefuseFor(50ms);
                if (fault_ == Fault::kPowerCycled) server_->PowerCycle(50ms);
            });
            return true;
        } catch (const std::out_of_range&) {
            return false;
        }
    }

    void Judge(Account& account)
    {
        const std::vector<std::string> lines = server_->Lines();
        std::size_t lostBytes = 0;
        for (const auto& off : server_->All<virtual_printer::PowerOff>())
            lostBytes += off.lost;
        const bool sentAgain = fault_ == Fault::kCablePulled || fault_ == Fault::kPowerCycled;
        for (int number = 1; number <= receipts_; ++number) {
            for (const char* part : {" first", " total"}) {
                const auto count = std::count(lines.begin(), lines.end(), "receipt " + std::to_string(number) + part);
                const Course& course = courses_[static_cast<std::size_t>(number - 1)];
                const auto most = static_cast<std::ptrdiff_t>(sentAgain ? 1 + course.errors : 1);
                EXPECT_TRUE(count <= most && (count > 0 || course.mayBeLost))
                    << Name() << ": receipt " << number << part << " is on paper " << count << " times\n"
                    << testing::PrintToString(lines);
                account.again += std::max<int>(static_cast<int>(count) - 1, 0);
                if (count == 0) ++account.lost;
            }
        }
        EXPECT_GE(lostBytes, static_cast<std::size_t>(account.lost) * std::string_view("receipt 1 total\n").size());
    }

    const LinkOptions::Kind kind_;
    const Fault fault_;
    const char unit_;
    std::string node_;
    std::unique_ptr<PrinterServer> server_;
    ControlObjectDouble control_;
    int receipts_ = 0;
    std::vector<Course> courses_;  // of the receipts so far
};

TEST(ConfirmedReceipt, IsOnPaperOnceWhateverHappensAtAnyTenthByte)
{
    const tests::TempRegistry registry;
    std::vector<std::unique_ptr<Till>> tills;
    std::string profiles;
    for (const auto kind : {LinkOptions::Kind::kTcp, LinkOptions::Kind::kSerial, LinkOptions::Kind::kUsb}) {
        for (const Fault fault : kFaults) {
            tills.push_back(std::make_unique<Till>(kind, fault, registry.Folder()));
            profiles += tills.back()->Profile();
        }
    }
    registry.Write(profiles);
    std::vector<Account> accounts(tills.size());
    {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < tills.size(); ++i)
            threads.emplace_back([&, i] { tills[i]->Run(accounts[i]); });
        for (std::thread& thread : threads)
            thread.join();
    }
    for (std::size_t i = 0; i < tills.size(); ++i) {
        const Account& account = accounts[i];
        std::printf("%s %-12s  receipts %2d  errors %2d  lines printed and sent again %2d  lost in the printer %2d\n",
                    tills[i]->Name().c_str(), kFaultNames[i % std::size(kFaults)], account.receipts, account.errors,
                    account.again, account.lost);
        EXPECT_GE(account.receipts, 5);
        EXPECT_GT(account.errors, 0);
    }
}

}  // namespace
}  // namespace marbex::test
