#pragma once

// A printer device of a test's own as the current one, and the log.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/service_log_capture.h"
#include "device/process_state.h"
#include "server/fake_device.h"
#include "support/printer_tables.h"

namespace marbex::tests {

class CompanionTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    void TearDown() override
    {
        device::TheProcess().SetCurrentDevice(nullptr);
        device::TheProcess().CurrentModelIndex = 0;
    }

    // Makes a device of the model that is open, claimed and enabled the current one.
    void UsePrinter(std::string_view model)
    {
        const auto made = std::make_shared<FakeDevice>("printer", calls);
        made->State = opos::OPOS_S_IDLE;
        made->Claimed = 1;
        made->DeviceEnabled = 1;
        printer = made.get();
        device::TheProcess().SetCurrentDevice(made);
        const auto models = support::PrinterModels();
        for (uint32_t index = 0; index < models.size(); ++index) {
            if (model == models[index].Name) device::TheProcess().CurrentModelIndex = index;
        }
    }

    // The lines since the last call, with "T" for the tag. A line without the tag fails.
    Lines Logged(const std::string& tag) const
    {
        Lines lines = log.Taken();
        log.Forget();
        for (std::string& line : lines) {
            EXPECT_TRUE(line.starts_with("[" + tag + "] ")) << line;
            line.replace(0, tag.size() + 2, "T");
        }
        return lines;
    }

    const test::ServiceLogCapture log;
    FakeDevice::Calls calls;
    FakeDevice* printer = nullptr;
};

}  // namespace marbex::tests
