#include "platform/library.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/windows/wide_text.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

TEST(Library, IsFoundWhereTheSystemKeepsItsOwn)
{
    const auto library = DynamicLibrary::Load("winspool.drv");
    ASSERT_NE(library, nullptr);
    EXPECT_NE(library->Symbol("OpenPrinterA"), nullptr);
    EXPECT_EQ(library->Symbol("NoSuchFunction"), nullptr);
    EXPECT_EQ(DynamicLibrary::Load("no-such-library.dll"), nullptr);
}

// Whoever may write into the folder that a till happens to run in must not be able to run code in it.
TEST(Library, IsNotTakenFromTheCurrentFolder)
{
    const tests::TempRegistry folder;
    const std::wstring drive = WideFromUtf8(folder.Drive());
    wchar_t system[MAX_PATH];
    ASSERT_NE(GetSystemDirectoryW(system, MAX_PATH), 0U);
    ASSERT_TRUE(CopyFileW((std::wstring(system) + L"\\version.dll").c_str(), (drive + L"\\planted.dll").c_str(), TRUE));

    wchar_t before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, before), 0U);
    ASSERT_TRUE(SetCurrentDirectoryW(drive.c_str()));
    const auto planted = DynamicLibrary::Load("planted.dll");
    const auto named = DynamicLibrary::Load(folder.Drive() + "\\planted.dll");
    SetCurrentDirectoryW(before);
    EXPECT_EQ(planted, nullptr);
    EXPECT_NE(named, nullptr) << "it can be loaded when it is asked for";
}

}  // namespace
}  // namespace marbex::platform
