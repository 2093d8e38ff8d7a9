// The server with its own devices: every model, and a printer that is not there.

#include <gtest/gtest.h>

#include <string>

#include "automation_client.h"
#include "device/process_state.h"
#include "loopback_server.h"
#include "support/printer_tables.h"
#include "temp_registry.h"

namespace marbex::tests {
namespace {

// A control object without a life of its own: it has the callbacks, and none may come.
struct SilentControl : IDispatch {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = static_cast<IDispatch*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID* ids) override
    {
        ids[0] = ++asked;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override
    {
        ADD_FAILURE() << "callback " << id;
        return E_UNEXPECTED;
    }
    DISPID asked = 0;
};

std::string Dword(uint16_t number)
{
    char text[24];
    std::snprintf(text, sizeof text, "dword:%08x", unsigned{number});
    return text;
}

TEST(WholeServer, EveryModelAnswersWhenItsPrinterCannotBeReached)
{
    const TempRegistry registry;
    const DeafPort port;
    SilentControl control;
    Client client;
    for (const support::PrinterModelStruct& model : support::PrinterModels()) {
        SCOPED_TRACE(model.Name);
        registry.Write(
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n"
            "@=\"Service.MarbexOposPrnDriver\"\n\"PortType\"=dword:00000001\n\"IPAddress\"=\"127.0.0.1\"\n\"Port\"=" +
            Dword(port.Number()) + "\n\"PrinterModel\"=\"" + model.Name + "\"\n");
        EXPECT_EQ(client.Number(u"OpenService", {u"POSPrinter", u"Till", static_cast<IDispatch*>(nullptr)}), 104);
        EXPECT_EQ(client.Number(u"OpenService", {u"POSPrinter", u"Till", &control}), 111);
        EXPECT_EQ(client.Number(u"GetOpenResult"), 306);
        EXPECT_EQ(client.Number(u"ClaimDevice", {0}), 112);
        EXPECT_EQ(client.Number(u"PrintNormal", {2, u"text"}), 101);
        EXPECT_EQ(client.Number(u"ClearOutput"), 103);
        EXPECT_EQ(client.Number(u"PrintMemoryBitmap", {2, u"", 0, 0, 0}), 106);
        EXPECT_EQ(client.Number(u"EndRemoval"), 106);
        EXPECT_EQ(client.Number(u"CloseService"), 0);
    }
    client.Drop();
    EXPECT_EQ(device::TheProcess().CurrentDevice(), nullptr);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace marbex::tests
