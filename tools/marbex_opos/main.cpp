#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "marbex_opos/commands.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "marbex_version.h"
#include "platform/version.h"
#include "support/version_text.h"

namespace {

namespace tools = marbex::tools;

constexpr int kUsageError = 64;  // EX_USAGE of sysexits.h

// The version of the package with the commit it was built from, and what the services report of themselves.
std::string Version()
{
    const std::string commit = marbex::kCommit;
    return std::string("marbex-opos ") + marbex::kPackageVersion + (commit.empty() ? "" : " (" + commit + ")") +
           marbex::support::ServiceObjectDescriptionOf(", service objects ", marbex::platform::ModuleFileVersion());
}

// What the command line may hold, and what was chosen.
class CommandLine {
public:
    CommandLine()
    {
        app_.require_subcommand(1);
        app_.set_help_all_flag("--help-all", "Help of every command");
        app_.set_version_flag("--version", Version());
        AddConsole();
        AddDevices();
        AddPrinterCommands();
        AddRegistration();
        AddNames(Command(app_, "models", "The printer models and what they have",
                         [this] { return tools::ListModels(onlyNames_); }));
    }

    int Run(const std::vector<std::string>& words)
    {
        const std::string unknown = UnknownCommand(words);
        if (!unknown.empty()) {
            tools::Complain(unknown);
            return kUsageError;
        }
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
        if (!registry_.empty() && onlyReads_) {
            const std::string missing = tools::MissingRegistry();
            if (!missing.empty()) return tools::Complain(missing);
        }
        return chosen_();
    }

private:
    // Why one of the first words is no command, where one is wanted; empty when they are commands.
    std::string UnknownCommand(const std::vector<std::string>& words) const
    {
        const CLI::App* app = &app_;
        for (std::size_t at = 1; at < words.size() && !words[at].starts_with('-'); ++at) {
            std::vector<std::string_view> names;
            const CLI::App* next = nullptr;
            for (const CLI::App* command : app->get_subcommands([](const CLI::App*) { return true; })) {
                names.push_back(command->get_name());
                if (command->get_name() == words[at]) next = command;
            }
            if (names.empty()) return {};
            if (next == nullptr) {
                const std::optional<std::string> meant = tools::Nearest(words[at], names);
                return "there is no command " + words[at] + (meant ? "; did you mean " + *meant + "?" : std::string()) +
                       " (marbex-opos --help)";
            }
            app = next;
        }
        return {};
    }

    template <typename Action>
    CLI::App* Command(CLI::App& parent, const char* name, const char* help, Action action)
    {
        CLI::App* command = parent.add_subcommand(name, help);
        command->callback([this, action] { chosen_ = action; });
        return command;
    }

    enum class Registry { kRead, kWritten };

    // A file that is only read has to be there.
    void AddRegistryOption(CLI::App* command, Registry use = Registry::kRead)
    {
        command->add_option("--registry", registry_, "Registry file to use instead of the system's")->type_name("FILE");
        command->parse_complete_callback([this, use] { onlyReads_ = use == Registry::kRead; });
    }

    void AddNames(CLI::App* command) { command->add_flag("--names", onlyNames_, "The names alone, one a line"); }

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
        command->add_flag("--echo", console_.switches.echo, "Print each statement before its result");
        command->add_flag("--stop", console_.switches.stop, "End at the first statement that fails");
        command->add_flag("--names", console_.switches.names, "Name the codes, as on a terminal");
        command->add_option("SCRIPT", console_.script, "File of statements; standard input without it");
    }

    void AddDevices()
    {
        CLI::App* devices = app_.add_subcommand("devices", "The device profiles");
        devices->require_subcommand(1);
        CLI::App* list =
            Command(*devices, "list", "The configured devices", [this] { return tools::ListDevices(onlyNames_); });
        AddRegistryOption(list);
        AddNames(list);
        AddNames(
            Command(*devices, "fields", "What a profile can say", [this] { return tools::ListFields(onlyNames_); }));
        AddDevice(*devices, "show", "A profile, with what is set and what is default",
                  [this] { return tools::ShowDevice(device_.name); });
        AddDevice(*devices, "remove", "Remove a device with its drawer and display",
                  [this] { return tools::RemoveDevice(device_.name); });

        CLI::App* add = Command(*devices, "add", "Add a device, its drawer and its display",
                                [this] { return tools::AddDevice(device_); });
        AddRegistryOption(add, Registry::kWritten);
        add->add_option("--logical", device_.logicalName, "A logical name for the device")->type_name("NAME");
        add->add_option_function<std::vector<std::string>>(
               "NAME", [this](const std::vector<std::string>& words) { TakeNameAndAssignments(words); },
               "Name (without one, the next free \"Marbex POS Printer\"), then FIELD=VALUE ...")
            ->type_name("[NAME] [FIELD=VALUE]...");

        CLI::App* set = AddDevice(*devices, "set", "Change a profile", [this] { return tools::ChangeDevice(device_); });
        set->add_option("--logical", device_.logicalName, "Another logical name for the device")->type_name("NAME");
        set->add_option("--default", device_.toDefault, "Fields to set back to their defaults")->type_name("FIELD");
        set->add_option("ASSIGNMENTS", device_.assignments, "What to change")->type_name("FIELD=VALUE");
        AddTransfer(*devices);
    }

    void AddTransfer(CLI::App& devices)
    {
        CLI::App* out = Command(devices, "export", "Write devices, drawers and displays to a .reg file",
                                [this] { return tools::ExportDevices(transfer_.file, transfer_.names); });
        AddRegistryOption(out);
        CLI::App* in = Command(devices, "import", "Make the devices of a .reg file those of this till",
                               [this] { return tools::ImportDevices(transfer_.file, transfer_.dryRun); });
        AddRegistryOption(in, Registry::kWritten);
        for (CLI::App* command : {out, in})
            command->add_option("FILE", transfer_.file, "File of the registry editor's format")->required();
        out->add_option("NAME", transfer_.names, "Names of devices; without one, all of them");
        in->add_flag("--dry-run", transfer_.dryRun, "Show what would change, and change nothing");
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
        CLI::App* check = Command(app_, "check", "Look for what is wrong, from the registry to the paper",
                                  [this] { return Check(); });
        AddRegistryOption(check, Registry::kWritten);  // its absence is a finding
        AddServerOption(check, check_.server);
        check->add_option("DEVICE", check_.device, "Name of the device; without one, the only one there is");
        check->add_flag("--all", check_.all, "Every device");
        check->footer("Exit status: 0 all is fine, 1 something is wrong, 2 warnings only");
        check->add_flag("--json", check_.json, "As JSON, for a monitor");

        CLI::App* log = Command(app_, "log", "The logs of a till as one, by time, the bytes by their commands",
                                [this] { return tools::ShowLog(log_); });
        AddRegistryOption(log);
        log->add_option("DEVICE", log_.device, "Name of the device; without one, the only one there is");
        log->add_flag("--follow", log_.follow, "Go on as the logs grow");
        log->add_flag("--errors", log_.errors, "Only what went wrong");

        CLI::App* health = Command(app_, "health", "Open a printer and report how it is",
                                   [this] { return tools::CheckPrinterHealth(print_); });
        CLI::App* print =
            Command(app_, "print", "Print a text file, in which OPOS escape sequences (ESC|...) count, or a picture",
                    [this] { return Print(); });
        for (CLI::App* command : {health, print}) {
            AddRegistryOption(command);
            AddServerOption(command, print_.server);
            command->add_option("DEVICE", print_.device, "Name of the device")->required();
        }
        print->add_option("FILE", print_.file, "Text in UTF-8, or a picture (BMP, PNG, JPEG, GIF)");
        print->add_flag("--test-page", print_.testPage, "Print a page of what the printer can do instead");
        print->add_flag("--cut", print_.cut, "Cut the paper afterwards");
    }

    int Check() const
    {
        if (check_.all && !check_.device.empty()) {
            tools::Complain("check wants a device or --all");
            return kUsageError;
        }
        return tools::CheckTill(check_);
    }

    int Print() const
    {
        if (print_.file.empty() != print_.testPage) {
            tools::Complain("print wants a file or --test-page");
            return kUsageError;
        }
        return tools::PrintFile(print_);
    }

    void AddRegistration()
    {
        CLI::App* add = Command(app_, "register", "Register the service objects",
                                [this] { return tools::RegisterServer(server_); });
        CLI::App* remove =
            Command(app_, "unregister", "Remove the registration", [this] { return tools::UnregisterServer(server_); });
        for (CLI::App* command : {add, remove}) {
            AddRegistryOption(command, Registry::kWritten);
            AddServerOption(command, server_);
        }
    }

    CLI::App app_{"Marbex OPOS: try devices by hand, look after their profiles, register the service objects"};
    std::string registry_;
    bool onlyReads_ = false;
    bool onlyNames_ = false;
    std::string server_;
    tools::ConsoleOptions console_;
    tools::DeviceOptions device_;
    struct {
        std::string file;
        std::vector<std::string> names;
        bool dryRun = false;
    } transfer_;
    tools::CheckOptions check_;
    tools::LogOptions log_;
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
