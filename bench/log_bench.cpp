// What a line of the service log costs the calling thread.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "support/service_log.h"

namespace {

using marbex::support::LogClose;
using marbex::support::LogOpen;
using marbex::support::LogWrite;

void WriteOneLine()
{
    LogWrite("[%s] PrintNormal Begin (%d, %s)", "TalisPOSPrinter", 2, "Total 12.50");
}

// Every service method pays this on a till that does not log. Must stay under 5 ns.
void LogDisabled(benchmark::State& state)
{
    LogClose();
    for (auto _ : state)
        WriteOneLine();
}
BENCHMARK(LogDisabled);

void LogToFile(benchmark::State& state)
{
    std::string folder = (std::filesystem::temp_directory_path() / "marbex-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        state.SkipWithError("no temporary folder");
        return;
    }
    LogOpen(folder, 1, 0, 1);
    for (auto _ : state)
        WriteOneLine();
    LogClose();
    std::filesystem::remove_all(folder);
}
BENCHMARK(LogToFile);

}  // namespace
