#pragma once

// The commands of the program. Each returns the program's exit status: 0 when it did what was asked, 1 when it could
// not (the reason is on standard error), for the console 2 when a statement failed, for the check 2 for warnings.

#include <string>
#include <vector>

#include "marbex_opos/console/console.h"

namespace marbex::tools {

// Says on standard error why a command could not do what was asked; gives its exit status.
int Complain(const std::string& why);

struct ConsoleOptions {
    std::string server;  // library to load; empty: the registered one
    std::string script;  // empty: standard input
    ConsoleSwitches switches;
};
int RunConsole(const ConsoleOptions& options);

struct DeviceOptions {
    std::string name;                      // for a new device: empty takes the next free name
    std::vector<std::string> assignments;  // "FIELD=VALUE"
    std::vector<std::string> toDefault;    // names of fields
    std::string logicalName;
};
// onlyNames: one a line and nothing else, for scripts.
int ListDevices(bool onlyNames);
int ShowDevice(const std::string& name);
int ListFields(bool onlyNames);
int AddDevice(const DeviceOptions& options);
int ChangeDevice(const DeviceOptions& options);
int RemoveDevice(const std::string& name);
// names: of devices; all without one. What is in the file already is replaced.
int ExportDevices(const std::string& file, const std::vector<std::string>& names);
int ImportDevices(const std::string& file, bool dryRun);  // dryRun: only shows what would change
int ListModels(bool onlyNames);

// server: the library; empty takes the one beside this program.
int RegisterServer(const std::string& server);
int UnregisterServer(const std::string& server);

struct CheckOptions {
    std::string server;
    std::string device;  // empty: the only one there is
    bool all = false;
    bool json = false;
};
int CheckTill(const CheckOptions& options);  // 0 all is fine, 1 something is wrong, 2 warnings only

struct LogOptions {
    std::string device;   // empty: the only one there is
    bool follow = false;  // goes on until the program is ended
    bool errors = false;  // nothing else
};
int ShowLog(const LogOptions& options);

struct PrinterOptions {
    std::string server;
    std::string device;
};
int CheckPrinterHealth(const PrinterOptions& options);

struct PrintOptions : PrinterOptions {
    std::string file;  // text or a picture; empty: the test page
    bool testPage = false;
    bool cut = false;  // afterwards; the test page is cut in any case
};
int PrintFile(const PrintOptions& options);

}  // namespace marbex::tools
