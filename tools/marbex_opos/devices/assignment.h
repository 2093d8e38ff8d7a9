#pragma once

// What a person wants a profile to say.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/device_profile.h"
#include "support/printer_tables.h"
#include "support/profile_fields.h"

namespace marbex::tools {

// One thing to set: a field of the profile and what a person wrote for it.
struct Assignment {
    const support::ProfileField* field;
    std::string text;
};

// "Speed=19200"; none, with a reason, when it is no assignment to a field. Ports may be written serial, ethernet, usb.
std::optional<Assignment> ParseAssignment(std::string_view text, std::string& problem);

// "no field Sped: did you mean Speed? (...)"
std::string NoField(std::string_view name);

const support::PrinterModelStruct* ModelOf(const support::DeviceProfileStruct& profile);  // null: of no model

// "serial", "ethernet" or "usb"; the number when it is none of them.
std::string PortTypeName(uint32_t portType);

// Where the printer is, for a person: "COM1 9600 8N1", "TCP 192.168.0.20:9100", "USB \"lp0\"".
std::string PortText(const support::DeviceProfileStruct& profile);

// The port that a model has first, as a number.
uint32_t FirstPortOf(const support::PrinterModelStruct& model);

// Why the model cannot be reached over the port type; empty when it can.
std::string UnofferedPort(const support::DeviceProfileStruct& profile);

}  // namespace marbex::tools
