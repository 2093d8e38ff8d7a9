#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tools/till.h"

namespace marbex::tools {

// The result of opening a till with this profile, and that it came soon and left nothing behind.
inline std::string Opened(const std::string& profile,
                          const std::string& statement = "POSPrinter.OpenService(\"POSPrinter\", \"Till1\")")
{
    Till till(profile);
    const auto begun = std::chrono::steady_clock::now();
    const std::string answer = till.Answer(statement);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(15));
    if (answer != "= 0") {
        EXPECT_EQ(till.Answer("POSPrinter.ClaimDevice(0)"), answer == "= 106" ? "= 106" : "= 112");
        EXPECT_EQ(till.Answer("POSPrinter.CloseService()"), answer == "= 106" ? "= 106" : "= 0");
    }
    return answer;
}

}  // namespace marbex::tools
