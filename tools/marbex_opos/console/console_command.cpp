#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/console/console.h"
#include "marbex_opos/console/line_source.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"

namespace marbex::tools {

int RunConsole(const ConsoleOptions& options)
{
    std::unique_ptr<LineSource> lines;
    ConsoleSwitches switches = options.switches;
    switches.names = switches.names || OutputIsTerminal();
    Console console(options.server, switches, [&lines](std::string_view text) {
        lines->BeforeOutput();
        Print(std::string(text) + "\n");
        lines->AfterOutput();
    });
    MessageHooks hooks{[&console] { return console.Session().MessageDescriptor(); },
                       [&console] { console.Session().RunWaitingMessages(); }};
    const bool isInteractive = options.script.empty() && InputIsTerminal();
    lines = isInteractive ? OpenTerminal(hooks) : OpenLines(options.script, hooks);
    if (!lines) return Complain("cannot open " + options.script);
    while (!console.HasEnded()) {
        const std::optional<std::string> line = lines->NextLine();
        if (!line) break;
        console.Execute(*line);
    }
    return console.ExitStatus();
}

}  // namespace marbex::tools
