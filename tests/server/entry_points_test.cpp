// The server as COM sees it: factories, life and registration.

#include <gtest/gtest.h>

#include <filesystem>

#include "automation_client.h"
#include "platform/registry.h"
#include "platform/version.h"
#include "registered_text.h"
#include "temp_registry.h"

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
        EXPECT_EQ(RegisteredText("CLSID\\" + classId), progId);
        EXPECT_EQ(RegisteredText("CLSID\\" + classId + "\\InprocServer32"), platform::ModulePath());
        EXPECT_EQ(RegisteredText("CLSID\\" + classId + "\\InprocServer32", "ThreadingModel"), "Apartment");
        EXPECT_EQ(RegisteredText("CLSID\\" + classId + "\\ProgID"), progId);
        EXPECT_EQ(RegisteredText(progId + "\\CLSID"), classId);
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

}  // namespace
}  // namespace marbex::tests
