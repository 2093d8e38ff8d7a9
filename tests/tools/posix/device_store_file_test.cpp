// The registry is a file here, which a person may have broken.

#include <gtest/gtest.h>

#include "marbex_opos/devices/device_store.h"
#include "platform/files.h"
#include "temp_registry.h"

namespace marbex::tools {
namespace {

TEST(DeviceStoreFile, IsNeverTouchedWhenItCannotBeRead)
{
    const tests::TempRegistry registry;
    DeviceStore store;
    std::string name = "Till1";
    const std::string broken = "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\nrubbish\n";
    registry.WriteRaw(broken);
    platform::CaptureDebugOutput([](std::string_view) {});
    EXPECT_NE(store.RegistryProblem().find("registry.reg:4:"), std::string::npos) << store.RegistryProblem();
    EXPECT_NE(store.Add(name, {}).find("registry.reg:4:"), std::string::npos);
    EXPECT_NE(store.Remove("Till1").find("registry.reg:4:"), std::string::npos);
    platform::CaptureDebugOutput(nullptr);
    EXPECT_EQ(registry.Contents(), broken);
}

}  // namespace
}  // namespace marbex::tools
