// What printing costs the application: queueing a job, an asynchronous PrintNormal, and whole jobs over loopback.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

#include "device/process_state.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/window.h"
#include "spooler/print_spooler.h"
#include "virtual_printer/server.h"

namespace {

using namespace marbex;

// A printer that takes every text at once.
class EagerPrinter final : public printer::CPrinterEncoder {
public:
    EagerPrinter() : CPrinterEncoder(Traits(), platform::SystemClock()) {}
    int32_t PrintText(std::string_view) override
    {
        ++printed;
        return 0;
    }
    int32_t GetStatus(printer::PrinterStatus&, bool, uint32_t*) override { return 0; }
    int32_t RecoverFromError() override { return 0; }

    std::atomic<uint64_t> printed{0};

private:
    static const printer::EncoderTraits& Traits()
    {
        static const printer::EncoderTraits traits;
        return traits;
    }
};

void BM_AddJobToQueue(benchmark::State& state)
{
    EagerPrinter printer;
    const spooler::SpoolerTraits traits;
    spooler::ApplicationThread plain;
    spooler::CPrintSpooler spooler(traits, platform::SystemClock(), plain);
    spooler.Open(0);
    spooler.AttachPrinter(&printer);
    std::atomic<int32_t> id{0};
    const std::string line = "1 x Bread                            2.50\n";
    for (auto _ : state)
        spooler.PrintNormal(line, &id);
    spooler.Close();
}
BENCHMARK(BM_AddJobToQueue)->Iterations(100000);

// A device of the reference family, open, claimed and enabled on a printer over loopback.
class OpenDevice {
public:
    OpenDevice()
    {
        std::string folder = (std::filesystem::temp_directory_path() / "marbex-bench-XXXXXX").string();
        folder_ = mkdtemp(folder.data());
        const std::string file = folder_ + "/registry.reg";
        std::ofstream out(file);
        out << "Windows Registry Editor Version 5.00\n\n"
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Bench]\n"
               "@=\"Service.MarbexOposPrnDriver\"\n\"PortType\"=dword:1\n\"IPAddress\"=\"127.0.0.1\"\n\"Port\"=dword:"
            << std::hex << server_.Port() << "\n";
        out.close();
        setenv("MARBEX_OPOS_REGISTRY", file.c_str(), 1);
        device_ = device::CreateModelDevice("TALIS");
        device_->OpenService_NET("POSPrinter", "Bench", folder_ + "/events.txt");
        device_->ClaimDevice(0);
        device_->SetPropertyNumber(opos::PIDX_DeviceEnabled, 1);
        device_->SetPropertyNumber(opos::PIDXPtr_AsyncMode, 1);
    }
    ~OpenDevice()
    {
        device_->CloseService();
        std::filesystem::remove_all(folder_);
    }

    device::POSPrinterDevice& Device() { return *device_; }
    virtual_printer::PrinterServer& Server() { return server_; }

private:
    virtual_printer::TcpPrinterServer server_{"TALIS"};
    std::string folder_;
    std::shared_ptr<device::POSPrinterDevice> device_;
};

void BM_AsynchronousPrintNormal(benchmark::State& state)
{
    OpenDevice open;
    const std::string line = "1 x Bread                            2.50\n";
    for (auto _ : state)
        open.Device().PrintNormal(opos::PTR_S_RECEIPT, line);
    open.Device().ClearOutput();
}
BENCHMARK(BM_AsynchronousPrintNormal)->Iterations(5000);

void BM_JobsOverLoopback(benchmark::State& state)
{
    constexpr std::size_t kJobs = 2000;
    OpenDevice open;
    std::size_t expected = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kJobs; ++i)
            open.Device().PrintNormal(opos::PTR_S_RECEIPT, "one line of a receipt\n");
        expected += kJobs;
        open.Server().WaitFor([expected](const auto& printer) { return printer.Lines().size() >= expected; },
                              std::chrono::seconds(60));
        platform::RunWaitingMessages();
    }
    state.SetItemsProcessed(static_cast<int64_t>(expected));
}
BENCHMARK(BM_JobsOverLoopback)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
