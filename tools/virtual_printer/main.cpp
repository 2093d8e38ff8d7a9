// marbex-virtual-printer: printers of the family at the end of TCP ports, pseudo-terminals or unix sockets.

#include <cstdio>
#include <exception>

#include "virtual_printer/bench.h"
#include "virtual_printer/posix/command_input.h"

namespace {

using namespace marbex::virtual_printer;

int Main(int argc, char** argv)
{
    const Parsed parsed = ParseArguments(argc, argv);
    if (parsed.exit >= 0) {
        return parsed.exit;
    }
    CommandInput input(parsed.arguments.control);
    Bench bench(parsed.arguments);
    if (!bench.Announce()) {
        return 1;
    }
    while (const auto line = input.NextLine()) {
        const Operator::Done done = bench.Command(*line);
        if (!done.json.empty()) {
            input.Reply(done.json);
        }
        if (done.last) {
            break;
        }
    }
    return bench.SaveLast() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const BadScript& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return kUsageError;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
