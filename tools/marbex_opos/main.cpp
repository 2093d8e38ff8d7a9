#include <CLI/CLI.hpp>

#include "marbex_opos/commands.h"
#include "marbex_opos/process_settings.h"

namespace {

using marbex::tools::ConsoleOptions;

// The options that most commands share.
void AddRegistryOption(CLI::App& command)
{
    command
        .add_option_function<std::string>(
            "--registry",
            [](const std::string& path) {
                if (!marbex::tools::UseRegistryFile(path))
                    throw CLI::ValidationError("--registry", "cannot be set here");
            },
            "Registry file to use instead of the system's")
        ->type_name("FILE");
}

void AddServerOption(CLI::App& command, std::string& server)
{
    command.add_option("--server", server, "Server library to load instead of the registered one")->type_name("FILE");
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App app("Marbex OPOS: try devices by hand, look after their profiles, register the service objects");
    app.require_subcommand(1);
    int status = 0;

    ConsoleOptions console;
    CLI::App* consoleCommand = app.add_subcommand("console", "Call the service objects by hand or from a script");
    AddRegistryOption(*consoleCommand);
    AddServerOption(*consoleCommand, console.server);
    consoleCommand->add_flag("--echo", console.echo, "Print each statement before its result");
    consoleCommand->add_option("SCRIPT", console.script, "File of statements; standard input without it");
    consoleCommand->callback([&] { status = marbex::tools::RunConsole(console); });

    CLI11_PARSE(app, argc, argv);
    return status;
}
