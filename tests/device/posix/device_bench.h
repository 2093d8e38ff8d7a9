#pragma once

// A printer device on a bench: a profile in a registry of its own, a virtual printer at the other end of a TCP link,
// and a control object that records events and answers errors.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "device/process_state.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/automation.h"
#include "platform/kernel.h"
#include "platform/window.h"
#include "temp_registry.h"
#include "virtual_printer/server.h"

namespace marbex::test {

struct ControlEvent {
    std::string name;
    std::vector<int32_t> numbers;
    std::u16string text;
    friend bool operator==(const ControlEvent&, const ControlEvent&) = default;
};

inline ControlEvent Status(int32_t data)
{
    return {"SOStatusUpdate", {data}, {}};
}
inline ControlEvent Complete(int32_t id)
{
    return {"SOOutputComplete", {id}, {}};
}
inline ControlEvent Error(int32_t code, int32_t extended)
{
    return {"SOError", {code, extended, 1}, {}};
}

// Plays the control object. Lives on the stack; references are not counted.
class ControlObjectDouble final : public IDispatch {
public:
    std::vector<ControlEvent> events;
    std::function<void(const ControlEvent&, int32_t* response)> onEvent;
    int32_t answer = 0;  // 0 leaves the response alone
    std::u16string missingMethod;

    std::vector<ControlEvent> Named(const std::string& name) const
    {
        std::vector<ControlEvent> found;
        for (const ControlEvent& event : events) {
            if (event.name == name) found.push_back(event);
        }
        return found;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, OLECHAR** names, UINT, LCID, DISPID* ids) override
    {
        static const std::u16string known[] = {u"SODirectIO", u"SOError", u"SOOutputComplete", u"SOStatusUpdate"};
        for (int i = 0; i < 4; ++i) {
            if (known[i] == names[0] && known[i] != missingMethod) {
                ids[0] = 100 + i;
                return S_OK;
            }
        }
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        const auto argument = [given](UINT fromFirst) -> VARIANT& {
            return given->rgvarg[given->cArgs - 1 - fromFirst];
        };
        ControlEvent event;
        int32_t* response = nullptr;
        switch (id) {
            case 100:
                event = {"SODirectIO", {argument(0).lVal, *argument(1).plVal}, *argument(2).pbstrVal};
                break;
            case 101:
                event = {"SOError", {argument(0).lVal, argument(1).lVal, argument(2).lVal}, {}};
                response = argument(3).plVal;
                break;
            case 102:
                event = {"SOOutputComplete", {argument(0).lVal}, {}};
                break;
            case 103:
                event = {"SOStatusUpdate", {argument(0).lVal}, {}};
                break;
            default:
                return DISP_E_MEMBERNOTFOUND;
        }
        events.push_back(event);
        if (response != nullptr && answer != 0) *response = answer;
        if (onEvent) onEvent(event, response);
        return S_OK;
    }
};

// Runs the calling thread's messages until done says so; false when that takes unreasonably long.
inline bool RunUntil(const std::function<bool()>& done, std::chrono::seconds patience = std::chrono::seconds(30))
{
    const auto never = platform::Event::Create("", platform::ResetMode::kManual, false);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        platform::WaitForOneRunningMessages(*never, 5);
    }
    return true;
}

class DeviceBench : public testing::Test {
protected:
    explicit DeviceBench(const std::string& model = "TALIS") : modelName(model) {}

    ~DeviceBench() override
    {
        if (device) device->CloseService();
    }

    // The lines of the profile beyond model and link, in the registry file's own words.
    void WriteProfile(const std::string& more = {})
    {
        std::ostringstream lines;
        lines << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n"
              << "@=\"Service.MarbexOposPrnDriver\"\n"
              << "\"PrinterModel\"=\"" << modelName << "\"\n"
              << "\"PortType\"=dword:00000001\n\"IPAddress\"=\"127.0.0.1\"\n"
              << "\"Port\"=dword:" << std::hex << server.Port() << "\n"
              << "\"TimeoutRX\"=dword:000003e8\n\"TimeoutTX\"=dword:000003e8\n"
              << more << "\n"
              << "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"65001\"\n";
        registry.Write(lines.str());
    }

    // Opens, claims and enables; the two status events of that are waited for and forgotten.
    void Ready(const std::string& more = {})
    {
        WriteProfile(more);
        device = device::CreateModelDevice(modelName);
        ASSERT_TRUE(device);
        ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
        ASSERT_EQ(device->ClaimDevice(0), 0);
        device->SetPropertyNumber(opos::PIDX_DeviceEnabled, 1);
        ASSERT_TRUE(RunUntil([this] { return !control.events.empty(); }));
        EXPECT_EQ(control.events, std::vector<ControlEvent>{Status(opos::PTR_SUE_IDLE)});
        control.events.clear();
    }

    void Async(bool on) { device->SetPropertyNumber(opos::PIDXPtr_AsyncMode, on ? 1 : 0); }
    int32_t Number(int32_t index) { return device->GetPropertyNumber(index); }
    bool Completed(std::size_t times)
    {
        return RunUntil([this, times] { return control.Named("SOOutputComplete").size() >= times; });
    }

    // The printer is gone for every request until it is told otherwise.
    void TakeThePrinterAway()
    {
        server.SetMute(true);
        device->CheckHealth(opos::OPOS_CH_INTERNAL);
        server.Refuse(true);
        server.Drop();
    }
    void BringThePrinterBack()
    {
        server.SetMute(false);
        server.Refuse(false);
    }

    static virtual_printer::LinkOptions SmallBuffer()
    {
        virtual_printer::LinkOptions link;
        link.receiveBuffer = 8192;
        return link;
    }

    const std::string modelName;
    tests::TempRegistry registry;
    // With the small buffer of a real printer's network card, so that it can stop taking data.
    virtual_printer::PrinterServer server{modelName, SmallBuffer()};
    ControlObjectDouble control;
    std::shared_ptr<device::POSPrinterDevice> device;
};

}  // namespace marbex::test
