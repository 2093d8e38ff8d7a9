#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "marbex_opos/commands.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"

namespace {

namespace tools = marbex::tools;

constexpr int kUsageError = 64;  // EX_USAGE of sysexits.h

// What the command line may hold, and what was chosen.
class CommandLine {
public:
    CommandLine()
    {
        app_.require_subcommand(1);
        app_.set_help_all_flag("--help-all", "Help of every command");
        AddConsole();
        AddDevices();
        AddPrinterCommands();
        AddRegistration();
        Command(app_, "models", "The printer models and what they have", tools::ListModels);
    }

    int Run(const std::vector<std::string>& words)
    {
        std::vector<const char*> pointers;
        pointers.reserve(words.size());
        for (const std::string& word : words)
            pointers.push_back(word.c_str());
        try {
            app_.parse(static_cast<int>(pointers.size()), pointers.data());
        } catch (const CLI::ParseError& error) {
            std::ostringstream help;
            std::ostringstream complaint;
            const bool isAsked = app_.exit(error, help, complaint) == 0;
            tools::Print(help.str());
            tools::PrintError(complaint.str());
            return isAsked ? 0 : kUsageError;
        }
        if (!registry_.empty() && !tools::UseRegistryFile(registry_)) {
            return tools::Complain("the registry of this system cannot be replaced by a file");
        }
        return chosen_();
    }

private:
    template <typename Action>
    CLI::App* Command(CLI::App& parent, const char* name, const char* help, Action action)
    {
        CLI::App* command = parent.add_subcommand(name, help);
        command->callback([this, action] { chosen_ = action; });
        return command;
    }

    void AddRegistryOption(CLI::App* command)
    {
        command->add_option("--registry", registry_, "Registry file to use instead of the system's")->type_name("FILE");
    }

    void AddServerOption(CLI::App* command, std::string& server)
    {
        command->add_option("--server", server, "Server library to load")->type_name("FILE");
    }

    void AddConsole()
    {
        CLI::App* command = Command(app_, "console", "Call the service objects by hand or from a script",
                                    [this] { return tools::RunConsole(console_); });
        AddRegistryOption(command);
        AddServerOption(command, console_.server);
        command->add_flag("--echo", console_.echo, "Print each statement before its result");
        command->add_option("SCRIPT", console_.script, "File of statements; standard input without it");
    }

    void AddDevices()
    {
        CLI::App* devices = app_.add_subcommand("devices", "The device profiles");
        devices->require_subcommand(1);
        AddRegistryOption(Command(*devices, "list", "The configured devices", tools::ListDevices));
        Command(*devices, "fields", "What a profile can say", tools::ListFields);
        AddDevice(*devices, "show", "A profile, with what is set and what is default",
                  [this] { return tools::ShowDevice(device_.name); });
        AddDevice(*devices, "remove", "Remove a device with its drawer and display",
                  [this] { return tools::RemoveDevice(device_.name); });

        CLI::App* add = Command(*devices, "add", "Add a device, its drawer and its display",
                                [this] { return tools::AddDevice(device_); });
        AddRegistryOption(add);
        add->add_option("--logical", device_.logicalName, "A logical name for the device")->type_name("NAME");
        add->add_option_function<std::vector<std::string>>(
               "NAME", [this](const std::vector<std::string>& words) { TakeNameAndAssignments(words); },
               "Name (without one, the next free \"Marbex POS Printer\"), then FIELD=VALUE ...")
            ->type_name("[NAME] [FIELD=VALUE]...");

        CLI::App* set = AddDevice(*devices, "set", "Change a profile", [this] { return tools::ChangeDevice(device_); });
        set->add_option("--logical", device_.logicalName, "Another logical name for the device")->type_name("NAME");
        set->add_option("--default", device_.toDefault, "Fields to set back to their defaults")->type_name("FIELD");
        set->add_option("ASSIGNMENTS", device_.assignments, "What to change")->type_name("FIELD=VALUE");
    }

    template <typename Action>
    CLI::App* AddDevice(CLI::App& devices, const char* name, const char* help, Action action)
    {
        CLI::App* command = Command(devices, name, help, action);
        AddRegistryOption(command);
        command->add_option("NAME", device_.name, "Name of the device")->required();
        return command;
    }

    // A first word without "=" is the name of the new device.
    void TakeNameAndAssignments(const std::vector<std::string>& words)
    {
        device_.assignments = words;
        if (words.empty() || words.front().find('=') != std::string::npos) return;
        device_.name = words.front();
        device_.assignments.erase(device_.assignments.begin());
    }

    void AddPrinterCommands()
    {
        CLI::App* health = Command(app_, "health", "Open a printer and report how it is",
                                   [this] { return tools::CheckPrinterHealth(print_); });
        CLI::App* print = Command(app_, "print", "Print a text file; OPOS escape sequences (ESC|...) count",
                                  [this] { return tools::PrintFile(print_); });
        for (CLI::App* command : {health, print}) {
            AddRegistryOption(command);
            AddServerOption(command, print_.server);
            command->add_option("DEVICE", print_.device, "Name of the device")->required();
        }
        print->add_option("FILE", print_.file, "Text in UTF-8")->required();
        print->add_flag("--cut", print_.cut, "Feed and cut the paper afterwards");
    }

    void AddRegistration()
    {
        CLI::App* add = Command(app_, "register", "Register the service objects",
                                [this] { return tools::RegisterServer(server_); });
        CLI::App* remove =
            Command(app_, "unregister", "Remove the registration", [this] { return tools::UnregisterServer(server_); });
        for (CLI::App* command : {add, remove}) {
            AddRegistryOption(command);
            AddServerOption(command, server_);
        }
    }

    CLI::App app_{"Marbex OPOS: try devices by hand, look after their profiles, register the service objects"};
    std::string registry_;
    std::string server_;
    tools::ConsoleOptions console_;
    tools::DeviceOptions device_;
    tools::PrintOptions print_;
    std::function<int()> chosen_;
};

}  // namespace

int main(int argc, char** argv)
{
    try {
        CommandLine commandLine;
        return commandLine.Run(tools::CommandLineWords(argc, argv));
    } catch (const std::exception& error) {
        return tools::Complain(error.what());
    }
}
