// Where the code page of the automation border comes from. On Windows it is the system's.

#include <gtest/gtest.h>

#include "front_fixture.h"

namespace marbex::tests {
namespace {

class FrontCodePage : public FrontTest {};

TEST_F(FrontCodePage, IsReadWhenAServiceIsMadeAndOpened)
{
    registry.Write("[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"1251\"\n");
    Open();
    client->Call(u"PrintNormal", {2, u"\u0416"});
    EXPECT_EQ(calls.back(), "PrintNormal(2,\xC6)");
    registry.Write("");
    Open();
    client->Call(u"PrintNormal", {2, u"\u0416"});
    EXPECT_EQ(calls.back(), "PrintNormal(2,?)");
}

}  // namespace
}  // namespace marbex::tests
