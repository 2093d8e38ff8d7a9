#pragma once

// A till of one test's own: a registry file, a console that plays the application, and the real server library.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "marbex_opos/console/console.h"
#include "marbex_opos/devices/device_store.h"
#include "temp_registry.h"

namespace marbex::tools {

using Lines = std::vector<std::string>;

class Till {
public:
    // Profile: lines of the device key ("\"Port\"=dword:..."); the logs go to the folder of the registry file.
    explicit Till(const std::string& profile)
    {
        registry_.Write(
            "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"65001\"\n"
            "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"/dev/no-such-line\"=\"COM1\"\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till1]\n"
            "@=\"Service.MarbexOposPrnDriver\"\n\"LogEnabled\"=dword:00000001\n" +
            profile);
    }

    static std::string Number(const std::string& name, int value)
    {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value));
        return "\"" + name + "\"=dword:" + digits + "\n";
    }
    static std::string EthernetProfile(uint16_t port, const std::string& model = "TALIS ETHERNET")
    {
        return "\"PrinterModel\"=\"" + model + "\"\n\"IPAddress\"=\"127.0.0.1\"\n" + Number("PortType", 1) +
               Number("Port", port);
    }

    // What the statements printed.
    Lines Run(const Lines& statements)
    {
        lines_.clear();
        for (const std::string& statement : statements)
            console_.Execute(statement);
        return lines_;
    }
    // The answer of one statement, without the events that came with it.
    std::string Answer(const std::string& statement)
    {
        Run({statement});
        std::erase_if(lines_, [](const std::string& line) { return line.starts_with("! "); });
        return lines_.empty() ? "nothing" : lines_.back();
    }
    // The events of the last Run or Answer, "ErrorEvent 114 201 1 12".
    Lines EventsOf(const Lines& statements)
    {
        Lines events;
        for (const std::string& line : Run(statements)) {
            if (line.starts_with("! ")) events.push_back(line.substr(2));
        }
        return events;
    }

    void OpenClaimEnable()
    {
        ASSERT_EQ(Answer("POSPrinter.OpenService(\"POSPrinter\", \"Till1\")"), "= 0");
        ASSERT_EQ(Answer("POSPrinter.ClaimDevice(1000)"), "= 0");
        ASSERT_EQ(Answer("POSPrinter.DeviceEnabled = true"), "=");
        ASSERT_EQ(Answer("expect StatusUpdateEvent 10000"), "= 0");
    }

    const tests::TempRegistry& Registry() const { return registry_; }

private:
    tests::TempRegistry registry_;
    Lines lines_;
    Console console_{MARBEX_SERVER_FILE, {}, [this](std::string_view line) { lines_.emplace_back(line); }};
};

}  // namespace marbex::tools
