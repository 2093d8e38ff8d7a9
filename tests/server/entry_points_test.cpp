// The server as COM sees it: factories, life, registration, and the library file.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "front_fixture.h"
#include "platform/registry.h"
#include "platform/version.h"
#include "server/class_factories.h"

namespace marbex::tests {
namespace {

IClassFactory* Factory()
{
    void* factory = nullptr;
    EXPECT_EQ(DllGetClassObject(kPrinterClass, IID_IClassFactory, &factory), S_OK);
    return static_cast<IClassFactory*>(factory);
}

TEST(ClassFactories, AreHandedOutByClassAndInterface)
{
    void* object = &object;
    CLSID other = kPrinterClass;
    other.Data4[7] ^= 1;
    EXPECT_EQ(DllGetClassObject(other, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(DllGetClassObject(kPrinterClass, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(DllGetClassObject(kPrinterClass, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(DllGetClassObject(kPrinterClass, IID_IUnknown, &object), S_OK);
    static_cast<IUnknown*>(object)->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST(ClassFactories, MakeObjectsOfTheirClass)
{
    const TempRegistry registry;
    IClassFactory* const factory = Factory();
    void* made = &made;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &made), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &made), E_NOINTERFACE);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);

    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &made), S_OK);
    auto* const unknown = static_cast<IUnknown*>(made);
    void* dispatch = nullptr;
    ASSERT_EQ(unknown->QueryInterface(IID_IDispatch, &dispatch), S_OK);
    EXPECT_EQ(dispatch, made);
    EXPECT_EQ(unknown->AddRef(), 3U);
    EXPECT_EQ(unknown->Release(), 2U);
    EXPECT_EQ(unknown->Release(), 1U);
    factory->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(unknown->Release(), 0U);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST(ClassFactories, KeepTheServerWhileTheyAreHeldOrLocked)
{
    IClassFactory* const factory = Factory();
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(1), S_OK);
    factory->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(Factory()->LockServer(0), S_OK);
    EXPECT_EQ(Factory()->Release(), 1U);
    EXPECT_EQ(Factory()->Release(), 1U);
    factory->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

std::string TextAt(const std::string& key, const char* name = "")
{
    const auto value = platform::SystemRegistry().Value("SOFTWARE\\Classes\\" + key, name);
    return value.has_value() && value->type == platform::RegistryType::kSz ? value->data : "(none)";
}

TEST(Registration, WritesAndRemovesTheEntriesOfEveryClass)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n@=\"x\"\n");
    const struct {
        std::string classId;
        std::string progId;
    } classes[] = {
        {"{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}", "Service.MarbexOposPrnDriver"},
        {"{D957B9D0-46FE-4C18-9136-28357078A95D}", "Service.MarbexOposCashDrawerDriver"},
        {"{3B9304F2-526B-4F11-9A2F-D85EE36BD209}", "Service.MarbexOposLineDisplayDriver"},
    };
    EXPECT_EQ(DllRegisterServer(), S_OK);
    EXPECT_EQ(DllRegisterServer(), S_OK) << "again";
    EXPECT_TRUE(std::filesystem::path(platform::ModulePath()).is_absolute());
    for (const auto& [classId, progId] : classes) {
        EXPECT_EQ(TextAt("CLSID\\" + classId), progId);
        EXPECT_EQ(TextAt("CLSID\\" + classId + "\\InprocServer32"), platform::ModulePath());
        EXPECT_EQ(TextAt("CLSID\\" + classId + "\\InprocServer32", "ThreadingModel"), "Apartment");
        EXPECT_EQ(TextAt("CLSID\\" + classId + "\\ProgID"), progId);
        EXPECT_EQ(TextAt(progId + "\\CLSID"), classId);
    }
    const auto& registry = platform::SystemRegistry();
    EXPECT_EQ(registry.Subkeys("SOFTWARE\\Classes\\CLSID")->size(), std::size(classes));

    EXPECT_EQ(DllUnregisterServer(), S_OK);
    EXPECT_TRUE(registry.Subkeys("SOFTWARE\\Classes\\CLSID")->empty());
    for (const auto& [classId, progId] : classes)
        EXPECT_FALSE(registry.KeyExists("SOFTWARE\\Classes\\" + progId));
    EXPECT_TRUE(registry.KeyExists("SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till"));
    EXPECT_EQ(DllUnregisterServer(), S_OK) << "with nothing there";
}

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
    for (const char* name :
         {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer", "DllUnregisterServer", "SysAllocString",
          "SysAllocStringLen", "SysFreeString", "SysStringLen", "SysStringByteLen", "VariantInit", "VariantClear",
          "VariantChangeType", "MarbexMessageDescriptor", "MarbexRunMessages"}) {
        EXPECT_NE(Symbol(name), nullptr) << name;
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
    EXPECT_EQ(TextAt("CLSID\\{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}\\InprocServer32"),
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

}  // namespace
}  // namespace marbex::tests
