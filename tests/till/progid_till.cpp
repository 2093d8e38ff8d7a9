// A till in C++ that knows of the driver what every till knows: the ProgID, the names of the methods, and COM. Nothing
// of the driver's own code is in it. It prints the receipt of receipt.console and writes what that would write:
// "= result" a statement and "! event" an event.
//
//     progid-till               the receipt
//     progid-till recovery      a job that finds no printer; "@ command" on standard output is for its operator
//     progid-till victim MS     prints until it is killed, so many milliseconds after the driver has been made
//     progid-till line TEXT     one line

// clang-format off
#include <windows.h>
#include <oaidl.h>
#include <oleauto.h>
#include <objbase.h>
// clang-format on

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr DWORD kPatience = 20000;  // ms, for an event
constexpr LONG kRetry = 11;

enum EventKind { kStatusUpdate, kOutputComplete, kError, kDirectIO, kEventKinds };
constexpr const wchar_t* kCallbacks[] = {L"SOStatusUpdate", L"SOOutputComplete", L"SOError", L"SODirectIO"};

[[gnu::format(printf, 1, 2)]] void Say(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::printf("\n");
    std::fflush(stdout);
}

[[noreturn]] void GiveUp(const char* what, HRESULT result)
{
    Say("? %s: 0x%08lX", what, static_cast<unsigned long>(result));
    std::exit(2);
}

std::string Quoted(BSTR text)
{
    std::string quoted = "\"";
    for (UINT i = 0; i < SysStringLen(text); ++i) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, text[i] < 0x20 ? "\\x%02X" : "%c", static_cast<unsigned>(text[i]));
        quoted += escaped;
    }
    return quoted + "\"";
}

// What the service object calls. On the stack of main: nobody's reference keeps or ends it.
class ControlObject final : public IDispatch {
public:
    int happened[kEventKinds] = {};
    LONG references = 0;  // that the service object holds

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IDispatch;
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override
    {
        const auto found = std::ranges::find_if(
            kCallbacks, [&](const wchar_t* name) { return count == 1 && std::wcscmp(names[0], name) == 0; });
        if (found == std::end(kCallbacks)) return DISP_E_UNKNOWNNAME;
        ids[0] = static_cast<DISPID>(100 + (found - kCallbacks));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        if (GetCurrentThreadId() != thread_) GiveUp("an event on another thread", E_UNEXPECTED);
        const VARIANT* const last = call->rgvarg;
        switch (id - 100) {
            case kStatusUpdate:
                Say("! StatusUpdateEvent POSPrinter %ld", last[0].lVal);
                break;
            case kOutputComplete:
                Say("! OutputCompleteEvent POSPrinter %ld", last[0].lVal);
                break;
            case kError:
                *last[0].plVal = kRetry;
                Say("! ErrorEvent POSPrinter %ld %ld %ld %ld", last[3].lVal, last[2].lVal, last[1].lVal,
                    *last[0].plVal);
                // In this order: a printer that is found and stays silent would get the job twice.
                Say("@ mute off");
                Say("@ refuse off");
                break;
            case kDirectIO:
                Say("! DirectIOEvent POSPrinter %ld %ld %s", last[2].lVal, *last[1].plVal,
                    Quoted(*last[0].pbstrVal).c_str());
                break;
            default:
                return DISP_E_MEMBERNOTFOUND;
        }
        ++happened[id - 100];
        return S_OK;
    }

private:
    const DWORD thread_ = GetCurrentThreadId();
};

VARIANT Number(LONG value)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

VARIANT Text(const std::wstring& text)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return variant;
}

VARIANT Dispatch(IDispatch& object)
{
    VARIANT variant;
    VariantInit(&variant);
    object.AddRef();
    variant.vt = VT_DISPATCH;
    variant.pdispVal = &object;
    return variant;
}

class Till {
public:
    Till()
    {
        CLSID id;
        HRESULT result = CLSIDFromProgID(L"Service.MarbexOposPrnDriver", &id);
        if (FAILED(result)) GiveUp("CLSIDFromProgID", result);
        result =
            CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&printer_));
        if (FAILED(result)) GiveUp("CoCreateInstance", result);
    }
    ~Till() { printer_->Release(); }
    Till(const Till&) = delete;
    Till& operator=(const Till&) = delete;

    ControlObject control;

    // Takes the arguments over.
    LONG Call(const wchar_t* name, std::initializer_list<VARIANT> inOrder)
    {
        std::vector<VARIANT> arguments(std::rbegin(inOrder), std::rend(inOrder));
        auto* writable = const_cast<wchar_t*>(name);
        DISPID id = DISPID_UNKNOWN;
        HRESULT result = printer_->GetIDsOfNames(IID_NULL, &writable, 1, LOCALE_USER_DEFAULT, &id);
        if (FAILED(result)) GiveUp("GetIDsOfNames", result);
        DISPPARAMS call{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        VARIANT answer;
        VariantInit(&answer);
        result = printer_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &call, &answer, nullptr, nullptr);
        if (FAILED(result)) GiveUp("Invoke", result);
        for (VARIANT& argument : arguments)
            VariantClear(&argument);
        return answer.vt == VT_I4 ? answer.lVal : 0;
    }

    void Do(const wchar_t* name, std::initializer_list<VARIANT> arguments) { Say("= %ld", Call(name, arguments)); }

    void Write(LONG property, LONG value)
    {
        Call(L"SetPropertyNumber", {Number(property), Number(value)});
        Say("=");
    }

    // An application's own message loop, until the event has come.
    void Expect(EventKind kind)
    {
        const UINT_PTR timer = SetTimer(nullptr, 0, kPatience, nullptr);
        MSG message;
        while (control.happened[kind] == 0 && GetMessageW(&message, nullptr, 0, 0) > 0) {
            if (message.message == WM_TIMER && message.wParam == timer) GiveUp("no event", E_FAIL);
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        KillTimer(nullptr, timer);
        --control.happened[kind];
        Say("= 0");
    }

    void Open()
    {
        Do(L"OpenService", {Text(L"POSPrinter"), Text(L"Till1"), Dispatch(control)});
        Do(L"ClaimDevice", {Number(1000)});
        Write(3, 1);
        Expect(kStatusUpdate);
    }

    void Close()
    {
        Do(L"ReleaseDevice", {});
        Do(L"CloseService", {});
    }

    // With in/out arguments by reference, as a compiled control object sends them.
    void RawBytes(LONG count, const std::wstring& bytes)
    {
        BSTR text = SysAllocStringLen(bytes.data(), static_cast<UINT>(bytes.size()));
        VARIANT countReference;
        VariantInit(&countReference);
        countReference.vt = VT_I4 | VT_BYREF;
        countReference.plVal = &count;
        VARIANT textReference;
        VariantInit(&textReference);
        textReference.vt = VT_BSTR | VT_BYREF;
        textReference.pbstrVal = &text;
        const LONG result = Call(L"DirectIO", {Number(0), countReference, textReference});
        Say("= %ld &%ld &%s", result, count, Quoted(text).c_str());
        SysFreeString(text);
    }

private:
    IDispatch* printer_ = nullptr;
};

void PrintReceipt(Till& till)
{
    const auto receipt = Number(2);
    till.Open();
    till.Do(L"PrintBitmap", {receipt, Text(L"tests/till/logo.bmp"), Number(200), Number(-2)});
    till.Do(L"PrintNormal", {receipt, Text(L"\x1B|cA\x1B|4C"
                                           L"Caf\u00E9 M\u00FCnster\x1B|N\n"
                                           L"\u00C6r\u00F8sk\u00F8"
                                           L"bing 3 - S\u00E3o Tom\u00E9\n")});
    till.Do(L"PrintNormal", {Number(7), Text(L"no such station")});
    till.RawBytes(3, std::wstring(L"\x1B!\0", 3));
    till.Expect(kDirectIO);

    till.Write(8001, 1);
    till.Do(L"PrintNormal", {receipt, Text(L"\x1B|bC\x1B|3CSUMME            57,80\x1B|N\nBar              60,00\n")});
    till.Do(L"PrintBarCode",
            {receipt, Text(L"{B20417-0314"), Number(110), Number(72), Number(400), Number(-2), Number(-13)});
    till.Do(L"PrintBarCode",
            {receipt, Text(L"4006381333931"), Number(104), Number(60), Number(2), Number(-2), Number(-13)});
    till.Do(L"PrintNormal", {receipt, Text(L"Merci, \u00E0 bient\u00F4t\n")});
    for (int job = 0; job < 7; ++job)
        till.Expect(kOutputComplete);
    till.Write(8001, 0);
    till.Do(L"CutPaper", {Number(100)});
    for (int job = 0; job < 2; ++job)
        till.Expect(kOutputComplete);
    till.Close();
}

// The operator pulls the cable and, once the till tells of it, plugs it in again: the job is printed after all.
void RecoverFromALostPrinter(Till& till)
{
    till.Open();
    Say("@ mute on");
    Say("@ refuse on");
    Say("@ drop");
    while (till.Call(L"CheckHealth", {Number(1)}) == 0) {
    }
    till.Write(8001, 1);
    till.Do(L"PrintNormal", {Number(2), Text(L"printed after all\n")});
    till.Expect(kError);
    till.Expect(kOutputComplete);
    till.Close();
}

// As the task manager does it: nothing of the process, no destructor and no DLL's either, gets another turn.
DWORD WINAPI KillThisProcess(void* milliseconds)
{
    Sleep(static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(milliseconds)));
    TerminateProcess(GetCurrentProcess(), 9);
    return 0;
}

void PrintUntilKilled(Till& till, const char* milliseconds)
{
    auto* const after = reinterpret_cast<void*>(static_cast<std::uintptr_t>(std::strtoul(milliseconds, nullptr, 10)));
    if (CreateThread(nullptr, 0, KillThisProcess, after, 0, nullptr) == nullptr) GiveUp("CreateThread", E_FAIL);
    till.Open();
    till.Write(8001, 1);
    for (;;) {
        till.Call(L"PrintNormal", {Number(2), Text(L"of a till that is killed\n")});
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
            DispatchMessageW(&message);
    }
}

void PrintLine(Till& till, const char* text)
{
    till.Open();
    till.Do(L"PrintNormal", {Number(2), Text(std::wstring(text, text + std::strlen(text)) + L"\n")});
    till.Close();
}

}  // namespace

int main(int count, char** arguments)
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
    LONG left = 0;
    {
        Till till;
        const char* const part = count > 1 ? arguments[1] : "";
        if (std::strcmp(part, "recovery") == 0) {
            RecoverFromALostPrinter(till);
        } else if (std::strcmp(part, "victim") == 0 && count > 2) {
            PrintUntilKilled(till, arguments[2]);
        } else if (std::strcmp(part, "line") == 0 && count > 2) {
            PrintLine(till, arguments[2]);
        } else {
            PrintReceipt(till);
        }
        left = till.control.references;
    }
    CoUninitialize();
    if (left != 0) Say("? the service object kept %ld references", left);
    return left == 0 ? 0 : 2;
}
