#pragma once

// The steps by which a till is checked, from the registry to the paper. Nothing is changed, and nothing is printed but
// for what a serial printer makes of questions at a speed that is not its own.

#include <memory>
#include <string>
#include <vector>

#include "marbex_opos/check/cable.h"
#include "marbex_opos/check/step.h"
#include "marbex_opos/devices/device_store.h"

namespace marbex::tools {

// The registry: where it is, and that it can be read. Without it there is nothing more to check.
void CheckRegistry(Steps& steps);

// The registration of the service objects and the library that it names. server: the library to look at instead of
// the registered one; may be empty.
void CheckServer(const std::string& server, Steps& steps);

// Windows, which has a registry for programs of 64 bits and one for those of 32: what each knows of service objects and
// control objects. Nothing elsewhere.
void CheckRegistryViews(Steps& steps);

// The entries of a device by one of its names; none when the printer has no entry of ours.
std::optional<DeviceView> CheckEntries(const std::string& name, Steps& steps);

// The values of its profile.
void CheckValues(const DeviceView& device, Steps& steps);

// The folder that its logs go to.
void CheckLogFolder(const DeviceView& device, Steps& steps);

// The way to the printer; null, after saying why, when there is none.
std::unique_ptr<Cable> CheckPort(const DeviceView& device, Steps& steps);
std::unique_ptr<Cable> CheckTcpPort(const DeviceView& device, Steps& steps);
std::unique_ptr<Cable> CheckSerialPort(const DeviceView& device, Steps& steps);
std::unique_ptr<Cable> CheckUsbPort(const DeviceView& device, Steps& steps);

// "; connected to it: till (4711)": the other programs of this machine that have a connection to the printer; empty
// without any, or of a printer that is not on TCP.
std::string Connected(const DeviceView& device);

// Who is at the other end, and how it is.
void CheckPrinter(std::unique_ptr<Cable> cable, const DeviceView& device, Steps& steps);

// All that concerns one device.
Steps CheckDevice(const std::string& name);

// "marbex-opos devices set Till1 Com=2"
std::string SetCommand(const DeviceView& device, const std::string& assignments);

}  // namespace marbex::tools
