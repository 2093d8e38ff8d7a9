#pragma once

// A printer front over fake devices, with a registry and a log of its own.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "automation_client.h"
#include "device/process_state.h"
#include "fake_device.h"
#include "platform/files.h"
#include "support/service_log.h"
#include "temp_registry.h"

namespace marbex::tests {

inline std::string capturedLog;

class FrontTest : public testing::Test {
protected:
    void SetUp() override
    {
        device::ReplaceDeviceFactory([this](std::string_view model) -> std::shared_ptr<device::POSPrinterDevice> {
            models.emplace_back(model);
            if (model.back() == ' ') return nullptr;
            auto made = std::make_shared<FakeDevice>("device" + std::to_string(models.size()), calls);
            device = made.get();
            if (onCreate) onCreate(*made);
            return made;
        });
        capturedLog.clear();
        platform::CaptureDebugOutput([](std::string_view line) { capturedLog += line; });
        support::LogOpen("", 1, 1, 1);
        client = std::make_unique<Client>();
    }

    void TearDown() override
    {
        client.reset();
        support::LogClose();
        platform::CaptureDebugOutput(nullptr);
        device::ReplaceDeviceFactory({});
        EXPECT_EQ(DllCanUnloadNow(), S_OK) << "something still holds the server";
    }

    int32_t Open(const char16_t* deviceName = u"Till", IDispatch* dispatch = nullptr)
    {
        return client->Number(u"OpenService", {u"POSPrinter", deviceName, dispatch});
    }

    // Makes the profile of a device: lines of a .reg file below its key.
    void WriteProfile(const std::string& name, const std::string& lines)
    {
        registry.Write("[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\" + name +
                       "]\n@=\"Service.MarbexOposPrnDriver\"\n" + lines + "\n");
    }

    // The messages of the log, without stamps, each ended by a line feed.
    static std::string Log()
    {
        std::string messages;
        for (std::size_t at = 0; at < capturedLog.size();) {
            const std::size_t end = capturedLog.find("\r\n", at);
            const std::size_t stamp = capturedLog.find(']', at);
            messages += capturedLog.substr(stamp + 1, end - stamp - 1) + "\n";
            at = end + 2;
        }
        return messages;
    }

    const TempRegistry registry;
    FakeDevice::Calls calls;
    std::vector<std::string> models;  // that devices were asked for
    FakeDevice* device = nullptr;     // the last one made
    std::function<void(FakeDevice&)> onCreate;
    std::unique_ptr<Client> client;
};

}  // namespace marbex::tests
