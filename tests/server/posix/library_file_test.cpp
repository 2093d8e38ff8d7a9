// The shared library as a program loads it.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <marbex/class_ids.h>
#include <marbex/create_service.h>

#include <filesystem>

#include "front_fixture.h"
#include "platform/registry.h"
#include "registered_text.h"
#include "temp_registry.h"

namespace marbex::tests {
namespace {

TEST(Registration, SaysWhatCouldNotBeWritten)
{
    const TempRegistry file;
    file.WriteRaw("not a registry file\n");
    capturedLog.clear();
    platform::CaptureDebugOutput([](std::string_view line) { capturedLog += line; });
    EXPECT_EQ(DllRegisterServer(), S_OK);
    platform::CaptureDebugOutput(nullptr);
    EXPECT_TRUE(capturedLog.starts_with("Registration is incomplete: ")) << capturedLog;
    EXPECT_EQ(file.Contents(), "not a registry file\n");
}

class LibraryFile : public testing::Test {
protected:
    void SetUp() override
    {
        library = dlopen(MARBEX_SERVER_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
    }
    void TearDown() override
    {
        if (library != nullptr) dlclose(library);
    }
    void* Symbol(const char* name) const { return dlsym(library, name); }

    void* library = nullptr;
};

TEST_F(LibraryFile, ShowsTheEntryPointsAndNothingElse)
{
    for (const char* name : {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer", "DllUnregisterServer",
                             "SysAllocString", "SysAllocStringLen", "SysFreeString", "SysStringLen", "SysStringByteLen",
                             "VariantInit", "VariantClear", "VariantChangeType", "MarbexMessageDescriptor",
                             "MarbexRunMessages", "MarbexCreateService", "MarbexResultName", "MarbexResultAdvice"}) {
        EXPECT_NE(dlvsym(library, name, "MARBEXOPOS_1.1"), nullptr) << name << " has left its version";
    }
    for (const char* name : {"_ZN6marbex8platform14SystemRegistryEv", "_ZN6marbex7support8LogCloseEv"})
        EXPECT_EQ(Symbol(name), nullptr) << name;
}

TEST_F(LibraryFile, ServesAClientThatKnowsOnlyTheAutomationHeader)
{
    const TempRegistry registry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter]\n");
    const auto getClass = reinterpret_cast<decltype(&DllGetClassObject)>(Symbol("DllGetClassObject"));
    const auto canUnload = reinterpret_cast<decltype(&DllCanUnloadNow)>(Symbol("DllCanUnloadNow"));
    const auto registerServer = reinterpret_cast<decltype(&DllRegisterServer)>(Symbol("DllRegisterServer"));
    EXPECT_EQ(registerServer(), S_OK);
    EXPECT_EQ(RegisteredText("CLSID\\{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}\\InprocServer32"),
              std::filesystem::canonical(MARBEX_SERVER_FILE).string());

    EXPECT_EQ(canUnload(), S_OK);
    void* factory = nullptr;
    ASSERT_EQ(getClass(kPrinterClass, IID_IClassFactory, &factory), S_OK);
    void* object = nullptr;
    EXPECT_EQ(static_cast<IClassFactory*>(factory)->CreateInstance(nullptr, IID_IDispatch, &object), S_OK);
    static_cast<IClassFactory*>(factory)->Release();
    {
        const Client client(static_cast<IDispatch*>(object));
        EXPECT_EQ(client.Number(u"ClaimDevice", {1000}), 106);
        EXPECT_EQ(canUnload(), S_FALSE);
    }
    EXPECT_EQ(canUnload(), S_OK);
}

TEST_F(LibraryFile, MakesServicesOfTheirProgIds)
{
    const auto create = reinterpret_cast<decltype(&MarbexCreateService)>(Symbol("MarbexCreateService"));
    for (const char* progId : {kPrinterProgId, "service.marbexoposcashdrawerdriver", kLineDisplayProgId}) {
        IDispatch* object = nullptr;
        ASSERT_EQ(create(progId, &object), S_OK) << progId;
        EXPECT_EQ(Client(object).Number(u"ClaimDevice", {1000}), 106);
    }
    IDispatch* object = nullptr;
    EXPECT_EQ(create("Service.Unknown", &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(create(nullptr, &object), E_POINTER);
    EXPECT_EQ(create(kPrinterProgId, nullptr), E_POINTER);
}

}  // namespace
}  // namespace marbex::tests
