// What the dispatch surface does with names, counts and types, seen through the printer class.

#include <gtest/gtest.h>

#include <stdexcept>

#include "automation_client.h"
#include "fake_device.h"
#include "front_fixture.h"
#include "method_calls.h"

namespace marbex::tests {
namespace {

class Dispatch : public FrontTest {
protected:
    void SetUp() override
    {
        FrontTest::SetUp();
        Open();
        calls.clear();
    }
};

VARIANT Value(VARTYPE type)
{
    VARIANT variant{};
    variant.vt = type;
    return variant;
}

const std::string kMethods =
#include "server/printer_methods.txt"
    ;

// By the numbers that clients may have stored.
TEST_F(Dispatch, EveryMethodHasItsNumberAndReachesItsOperation)
{
    MethodCalls(kMethods).Make(*client, [this](const MethodCall& call) {
        calls.clear();
        EXPECT_EQ(client->Invoke(call.id, call.arguments).result, S_OK);
        EXPECT_EQ(calls, call.outcome.empty() ? FakeDevice::Calls{} : FakeDevice::Calls{call.outcome});
    });
    EXPECT_EQ(client->Invoke(0, {}).result, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(client->Invoke(-1, {}).result, DISP_E_MEMBERNOTFOUND);
}

TEST_F(Dispatch, NamesAreFoundWithoutRegardToCase)
{
    EXPECT_EQ(client->IdOf(u"printnormal"), 18);
    EXPECT_EQ(client->IdOf(u"PRINTNORMAL"), 18);
    EXPECT_EQ(client->IdOf(u"PrintNorma"), DISPID_UNKNOWN);
    EXPECT_EQ(client->IdOf(u"PrintNormalx"), DISPID_UNKNOWN);
    EXPECT_EQ(client->IdOf(u""), DISPID_UNKNOWN);
    EXPECT_EQ(client->IdOf(u"Pr\x0130ntNormal"), DISPID_UNKNOWN);

    std::u16string names[] = {u"PrintNormal", u"Station"};
    OLECHAR* asked[] = {reinterpret_cast<OLECHAR*>(names[0].data()), reinterpret_cast<OLECHAR*>(names[1].data())};
    DISPID ids[2] = {};
    EXPECT_EQ(client->Object()->GetIDsOfNames(IID_NULL, asked, 2, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], 18);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN) << "parameters have no names";
    EXPECT_EQ(client->Object()->GetIDsOfNames(IID_IUnknown, asked, 1, 0, ids), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(client->Object()->GetIDsOfNames(IID_NULL, nullptr, 1, 0, ids), E_POINTER);
}

TEST_F(Dispatch, NumbersOfEveryKindBecomeLong)
{
    VARIANT real = Value(VT_R8);
    real.dblVal = 2.5;
    VARIANT small = Value(VT_UI1);
    small.bVal = 200;
    VARIANT truth = Value(VT_BOOL);
    truth.boolVal = VARIANT_TRUE;
    int16_t word = -3;
    VARIANT reference = Value(VT_BYREF | VT_I2);
    reference.piVal = &word;
    client->Call(u"ClaimDevice", {real});
    client->Call(u"ClaimDevice", {small});
    client->Call(u"ClaimDevice", {truth});
    client->Call(u"ClaimDevice", {reference});
    client->Call(u"ClaimDevice", {u" 42 "});
    client->Call(u"COFreezeEvents", {truth});
    client->Call(u"COFreezeEvents", {0});
    client->Call(u"COFreezeEvents", {-7});
    client->Call(u"COFreezeEvents", {u"0"});
    EXPECT_EQ(calls, (FakeDevice::Calls{"ClaimDevice(2)", "ClaimDevice(200)", "ClaimDevice(-1)", "ClaimDevice(-3)",
                                        "ClaimDevice(42)", "COFreezeEvents(true)", "COFreezeEvents(false)",
                                        "COFreezeEvents(true)", "COFreezeEvents(false)"}));
}

TEST_F(Dispatch, ArgumentsThatDoNotFitAreNamedByTheirPlace)
{
    VARIANT big = Value(VT_I8);
    big.llVal = 0x100000000;
    const Outcome overflow = client->Call(u"RotatePrint", {big, 1});
    EXPECT_EQ(overflow.result, DISP_E_OVERFLOW);
    EXPECT_EQ(overflow.argumentError, 1U) << "arguments stand last first";
    const Outcome mismatch = client->Call(u"RotatePrint", {1, u"left"});
    EXPECT_EQ(mismatch.result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(mismatch.argumentError, 0U);
    EXPECT_EQ(client->Call(u"PrintNormal", {2, Value(VT_NULL)}).result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(client->Call(u"OpenService", {u"POSPrinter", u"x", 0}).argumentError, 0U);
    EXPECT_EQ(mismatch.type, VT_EMPTY);
    EXPECT_TRUE(calls.empty());
}

TEST_F(Dispatch, TextEndsAtItsFirstZeroAndIsInTheAnsiCodePage)
{
    VARIANT zeros = Value(VT_BSTR);
    zeros.bstrVal = platform::NewBstr(std::u16string_view(u"ab\0cd", 5));
    client->Call(u"PrintNormal", {2, zeros});
    client->Call(u"PrintNormal", {2, u"\u20AC\u0416"});
    client->Call(u"PrintNormal", {2, Value(VT_BSTR)});
    client->Call(u"PrintNormal", {2, 15});
    BSTR shared = platform::NewBstr(u"ref");
    client->Call(u"PrintNormal", {2, &shared});
    SysFreeString(shared);
    EXPECT_EQ(calls, (FakeDevice::Calls{"PrintNormal(2,ab)", "PrintNormal(2,\x80?)", "PrintNormal(2,)",
                                        "PrintNormal(2,15)", "PrintNormal(2,ref)"}));
}

TEST_F(Dispatch, InOutArgumentsAreWrittenBackWhereTheyAreReferences)
{
    device->newData = 12;
    device->newString = std::u16string(u"\u0080\0\u00FF", 3);
    LONG data = 1;
    BSTR string = platform::NewBstr(u"old");
    EXPECT_EQ(client->Number(u"DirectIO", {0, &data, &string}), 77);
    EXPECT_EQ(data, 12);
    EXPECT_EQ(platform::BstrView(string), std::u16string_view(u"\u0080\0\u00FF", 3)) << "unit by unit";
    SysFreeString(string);

    EXPECT_EQ(client->Number(u"DirectIO", {0, 1, u"by value"}), 77) << "and dropped";

    // As script engines pass variables.
    platform::VariantHolder number;
    number.Get()->vt = VT_I2;
    number.Get()->iVal = 1;
    platform::VariantHolder text;
    EXPECT_EQ(client->Number(u"DirectIO", {0, number.Get(), text.Get()}), 77);
    EXPECT_EQ(number.Value().vt, VT_I4);
    EXPECT_EQ(number.Value().lVal, 12);
    EXPECT_EQ(text.Value().vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(text.Value().bstrVal), 3U);

    int16_t word = 1;
    VARIANT reference = Value(VT_BYREF | VT_I2);
    reference.piVal = &word;
    EXPECT_EQ(client->Number(u"DirectIO", {0, reference, u""}), 77);
    EXPECT_EQ(word, 12);
    device->newData = 70000;
    EXPECT_EQ(client->Number(u"DirectIO", {0, reference, u""}), 77);
    EXPECT_EQ(word, 12) << "it does not fit";
}

TEST_F(Dispatch, ReferencesToNothingDoNotCrash)
{
    VARIANT number = Value(VT_BYREF | VT_I4);
    number.plVal = nullptr;
    VARIANT text = Value(VT_BYREF | VT_BSTR);
    text.pbstrVal = nullptr;
    VARIANT indirect = Value(VT_BYREF | VT_VARIANT);
    indirect.pvarVal = &number;
    calls.clear();
    EXPECT_EQ(client->Number(u"DirectIO", {1, number, text}), 77);
    EXPECT_EQ(client->Number(u"DirectIO", {1, indirect, u"x"}), 77);
    EXPECT_EQ(calls, (FakeDevice::Calls{"DirectIO(1,null)", "DirectIO(1,null)"}));
    EXPECT_EQ(client->Call(u"ClaimDevice", {number}).result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(client->Call(u"RetrieveStatistics", {text}).result, DISP_E_TYPEMISMATCH);
}

TEST_F(Dispatch, TextThatWasNotChangedKeepsWhatTheCodePageLacks)
{
    BSTR buffer = platform::NewBstr(u"\u0416");
    BSTR const before = buffer;
    client->Call(u"RetrieveStatistics", {&buffer});
    EXPECT_EQ(buffer, before);
    EXPECT_EQ(platform::BstrView(buffer), u"\u0416");
    device->text = "\x80";
    client->Call(u"RetrieveStatistics", {&buffer});
    EXPECT_EQ(platform::BstrView(buffer), u"\u20AC");
    SysFreeString(buffer);
}

TEST_F(Dispatch, TextResultsTellNullFromEmpty)
{
    Outcome outcome = client->Call(u"GetPropertyString", {1});
    EXPECT_EQ(outcome.type, VT_BSTR);
    EXPECT_TRUE(outcome.isNull);
    device->text = "";
    outcome = client->Call(u"GetPropertyString", {1});
    EXPECT_EQ(outcome.type, VT_BSTR);
    EXPECT_FALSE(outcome.isNull);
    device->text = "V\xE9";
    EXPECT_EQ(client->Call(u"GetPropertyString", {1}).text, u"V\u00E9");
    EXPECT_EQ(client->Call(u"SetPropertyNumber", {1, 1}).type, VT_EMPTY) << "no result";
}

TEST_F(Dispatch, AnExceptionStaysInside)
{
    device->onCall = [](const std::string&) { throw std::runtime_error("out of paper clips"); };
    const Outcome outcome = client->Call(u"ClaimDevice", {1});
    EXPECT_EQ(outcome.result, DISP_E_EXCEPTION);
    EXPECT_EQ(outcome.type, VT_EMPTY);
    EXPECT_EQ(outcome.exceptionText, u"out of paper clips");
    device->onCall = [](const std::string&) { throw 5; };
    EXPECT_EQ(client->Call(u"ClaimDevice", {1}).result, DISP_E_EXCEPTION);
    device->onCall = nullptr;
    EXPECT_EQ(client->Number(u"ClaimDevice", {1}), 77);
}

TEST_F(Dispatch, InvokeTakesWhatCallersLeaveOutAndRefusesTheRest)
{
    IDispatch* const object = client->Object();
    VARIANT timeout = Value(VT_I4);
    DISPPARAMS parameters{&timeout, nullptr, 1, 0};
    EXPECT_EQ(object->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(
        object->Invoke(3, IID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &parameters, nullptr, nullptr, nullptr),
        S_OK);
    EXPECT_EQ(calls.size(), 2U);
    EXPECT_EQ(object->Invoke(3, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(object->Invoke(3, IID_IDispatch, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(object->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_POINTER);
    DISPID named = 0;
    DISPPARAMS withName{&timeout, &named, 1, 1};
    EXPECT_EQ(object->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, &withName, nullptr, nullptr, nullptr),
              DISP_E_NONAMEDARGS);
    EXPECT_EQ(calls.size(), 2U);

    UINT infos = 7;
    EXPECT_EQ(object->GetTypeInfoCount(&infos), S_OK);
    EXPECT_EQ(infos, 0U);
    ITypeInfo* info = nullptr;
    EXPECT_EQ(object->GetTypeInfo(0, 0, &info), E_NOTIMPL);
}

}  // namespace
}  // namespace marbex::tests
