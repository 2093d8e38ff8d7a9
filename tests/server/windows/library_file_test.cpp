// MarbexOpos.dll as a program loads it.

#include <gtest/gtest.h>
#include <windows.h>

#include "automation_client.h"
#include "platform/registry.h"
#include "registered_text.h"
#include "temp_registry.h"

namespace marbex::tests {
namespace {

class Library {
public:
    Library() : module_(LoadLibraryA(MARBEX_SERVER_FILE)) {}
    ~Library()
    {
        if (module_ != nullptr) FreeLibrary(module_);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    bool Loaded() const { return module_ != nullptr; }
    template <typename Function>
    Function* EntryPoint(const char* name) const
    {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }
    IDispatch* Make(const CLSID& classId) const
    {
        void* factory = nullptr;
        void* object = nullptr;
        EXPECT_EQ(EntryPoint<decltype(DllGetClassObject)>("DllGetClassObject")(classId, IID_IClassFactory, &factory),
                  S_OK);
        EXPECT_EQ(static_cast<IClassFactory*>(factory)->CreateInstance(nullptr, IID_IDispatch, &object), S_OK);
        static_cast<IClassFactory*>(factory)->Release();
        return static_cast<IDispatch*>(object);
    }
    HRESULT CanUnload() const { return EntryPoint<decltype(DllCanUnloadNow)>("DllCanUnloadNow")(); }

private:
    const HMODULE module_;
};

TEST(LibraryFile, RegistersItsOwnPath)
{
    const TempRegistry registry;
    const Library library;
    ASSERT_TRUE(library.Loaded());
    EXPECT_EQ(library.EntryPoint<decltype(DllRegisterServer)>("DllRegisterServer")(), S_OK);
    const std::string path = RegisteredText("CLSID\\{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}\\InprocServer32");
    EXPECT_TRUE(path.ends_with("\\MarbexOpos.dll")) << path;
    EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(library.EntryPoint<decltype(DllUnregisterServer)>("DllUnregisterServer")(), S_OK);
    EXPECT_EQ(RegisteredText("CLSID\\{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}\\InprocServer32"), "(none)");
}

// What a host that frees unused libraries does all day.
TEST(LibraryFile, ComesAndGoesAsOftenAsItIsWanted)
{
    const TempRegistry registry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter]\n");
    for (int round = 0; round < 3; ++round) {
        const Library library;
        ASSERT_TRUE(library.Loaded());
        EXPECT_EQ(library.CanUnload(), S_OK);
        {
            const Client client(library.Make(kPrinterClass));
            EXPECT_EQ(client.Number(u"ClaimDevice", {1000}), 106);
            EXPECT_EQ(library.CanUnload(), S_FALSE);
        }
        EXPECT_EQ(library.CanUnload(), S_OK);
    }
}

}  // namespace
}  // namespace marbex::tests
