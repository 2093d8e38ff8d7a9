#include "marbex_opos/statement.h"

#include <gtest/gtest.h>

#include "marbex_opos/completion.h"

namespace marbex::tools {
namespace {

template <typename Kind>
Kind Parsed(std::string_view line)
{
    const auto parsed = ParseStatement(line);
    if (const auto* problem = std::get_if<Misunderstood>(&parsed)) {
        ADD_FAILURE() << line << ": " << problem->why;
        return {};
    }
    const auto* statement = std::get_if<Kind>(&std::get<Statement>(parsed));
    EXPECT_NE(statement, nullptr) << line;
    return statement != nullptr ? *statement : Kind{};
}

std::string Refused(std::string_view line)
{
    const auto parsed = ParseStatement(line);
    const auto* problem = std::get_if<Misunderstood>(&parsed);
    return problem != nullptr ? problem->why : "understood";
}

std::vector<Value> Arguments(std::string_view list)
{
    return Parsed<CallMethod>("POSPrinter.PrintTwoNormal(" + std::string(list) + ")").arguments;
}

std::u16string Text(std::string_view quoted)
{
    return std::get<std::u16string>(Arguments("1, " + std::string(quoted) + ", \"\"")[1]);
}

TEST(Statement, ReadsEveryKindOfNumber)
{
    const std::vector<Value> values = Arguments(" -5 ,0x1F|PTR_S_RECEIPT | 0x100,0x80000000");
    EXPECT_EQ(std::get<int32_t>(values[0]), -5);
    EXPECT_EQ(std::get<int32_t>(values[1]), 0x11F);
    EXPECT_EQ(std::get<int32_t>(values[2]), INT32_MIN) << "hexadecimal is a bit pattern";
    const std::vector<Value> others = Arguments("true, FALSE, PTR_BC_TEXT_BELOW");
    EXPECT_TRUE(std::get<bool>(others[0]));
    EXPECT_FALSE(std::get<bool>(others[1]));
    EXPECT_EQ(std::get<int32_t>(others[2]), -13);
}

TEST(Statement, ReadsTextWithEscapesAndUtf8)
{
    EXPECT_EQ(Text(R"("")"), u"");
    EXPECT_EQ(Text(R"("a, b) # = \"q\" \\ \n\r\t")"), u"a, b) # = \"q\" \\ \n\r\t");
    EXPECT_EQ(Text(R"("\e|bC\x00\xE9\u20ACf")"), std::u16string(u"\x1B|bC\0\u00E9\u20ACf", 8));
    EXPECT_EQ(Text("\"Grüße €\U0001F600\""), u"Grüße €\U0001F600");
}

TEST(Statement, ReadsCallsPropertiesAndTheConsolesOwnStatements)
{
    const auto open = Parsed<CallMethod>(R"(  posprinter . openservice ( "POSPrinter" , "Till1" )  )");
    EXPECT_EQ(open.object, ObjectKind::kPrinter);
    EXPECT_EQ(open.method->name, "OpenService");
    EXPECT_EQ(Parsed<CallMethod>("CashDrawer.OpenDrawer()").object, ObjectKind::kCashDrawer);

    EXPECT_EQ(Parsed<ReadProperty>("POSPrinter.RecLineWidth").property.index, 8020);
    EXPECT_EQ(Parsed<ReadProperty>("LineDisplay.Columns").property.index, 5002);
    EXPECT_EQ(Parsed<ReadProperty>("CashDrawer.DrawerOpened").property.index, 1001);
    EXPECT_TRUE(Parsed<ReadProperty>("LineDisplay.DeviceDescription").property.IsText());
    const auto write = Parsed<WriteProperty>("POSPrinter.DeviceEnabled = true");
    EXPECT_EQ(write.property.index, 3);
    EXPECT_TRUE(std::get<bool>(write.value));

    EXPECT_EQ(Parsed<Wait>("wait 250").milliseconds, 250);
    const auto expect = Parsed<Expect>("expect OutputCompleteEvent 3000");
    EXPECT_EQ(expect.event, EventKind::kOutputComplete);
    EXPECT_EQ(expect.milliseconds, 3000);
    EXPECT_FALSE(Parsed<Expect>("expect any 0").event.has_value());
    EXPECT_EQ(Parsed<Answer>("answer retry").response, 11);
    EXPECT_EQ(Parsed<Answer>("answer clear").response, 12);
    EXPECT_FALSE(Parsed<Answer>("answer none").response.has_value());
    EXPECT_EQ(Parsed<ReleaseObject>("release LineDisplay").object, ObjectKind::kLineDisplay);
    Parsed<Quit>("quit\r");
    Parsed<Nothing>("   ");
    Parsed<Nothing>("# POSPrinter.Nonsense(");
}

TEST(Statement, SaysWhatItDoesNotUnderstand)
{
    EXPECT_EQ(Refused("POSPrinter.PrintNormol(2, \"a\")"), "no method PrintNormol");
    EXPECT_EQ(Refused("CashDrawer.PrintNormal(2, \"a\")"), "no method PrintNormal");
    EXPECT_EQ(Refused("POSPrinter.Colour"), "no property Colour");
    EXPECT_EQ(Refused("Printer.State"), "no object Printer");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(PTR_CP_FULCUT)"), "no constant PTR_CP_FULCUT");
    EXPECT_EQ(Refused("POSPrinter.PrintNormal(2)"),
              "wrong number of arguments: PrintNormal(long Station, string Data)");
    EXPECT_EQ(Refused("POSPrinter.OpenService(\"a\", \"b\", 3)"),
              "wrong number of arguments: OpenService(string DeviceClass, string DeviceName)");
    EXPECT_EQ(Refused("POSPrinter.AsyncMode = \"yes\""), "AsyncMode is a number");
    EXPECT_EQ(Refused("POSPrinter.CheckHealthText = 1"), "CheckHealthText is a text");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(4294967296)"), "the number does not fit 32 bits");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(2147483648)"), "the number does not fit 32 bits");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(99999999999999999999)"), "the number does not fit 32 bits");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(12x)"), "unexpected \"12x)\"");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(1"), "unexpected end of the statement");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(1) 2"), "unexpected \"2\"");
    EXPECT_EQ(Refused("POSPrinter.ValidateData(2, \"abc)"), "the text has no closing quote");
    EXPECT_EQ(Refused("POSPrinter.ValidateData(2, \"abc\\"), "the text has no closing quote");
    EXPECT_EQ(Refused(R"(POSPrinter.ValidateData(2, "\q"))"), "no escape \\q");
    EXPECT_EQ(Refused(R"(POSPrinter.ValidateData(2, "\x1"))"), "an escape has too few hexadecimal digits");
    EXPECT_EQ(Refused("expect Sunshine 5"), "no event Sunshine");
    EXPECT_EQ(Refused("wait -1"), "a time cannot be negative");
    EXPECT_EQ(Refused("answer maybe"), "no answer maybe");
    EXPECT_EQ(Refused("sleep 5"), "no statement sleep");
    EXPECT_EQ(Refused("POSPrinter."), "unexpected end of the statement");
    EXPECT_EQ(Refused("(1)"), "unexpected \"(1)\"");
}

TEST(Statement, PrintsTextSoThatItCanBeReadBack)
{
    const std::u16string text = std::u16string(u"\0\n\r\t\x1B\x7F\x85\"\\", 9) + u"a€\U0001F600" + char16_t{0xD800};
    const std::string printed = Quoted(text);
    EXPECT_EQ(printed, R"("\x00\n\r\t\x1B\x7F\x85\"\\a€😀\uD800")");
    EXPECT_EQ(Text(printed), text);
    EXPECT_EQ(Printed(Result{}), "");
    EXPECT_EQ(Printed(Result{-1}), "-1");
    EXPECT_EQ(Printed(Result{NullText{}}), "null");
}

// One table is taken from the headers and one is written by hand; every name of both must be usable.
TEST(Statement, KnowsEveryConstantPropertyAndMethod)
{
    EXPECT_GT(Constants().size(), 400U);
    EXPECT_EQ(FindConstant("PIDXPtr_CapSlpRuledLine"), 8563);
    EXPECT_EQ(FindConstant("ptr_s_receipt"), std::nullopt);
    EXPECT_EQ(PropertiesOf(ObjectKind::kPrinter).size(), 50U + 63U + 12U + 14U + 5U + 4U);
    EXPECT_EQ(MethodsOf(ObjectKind::kPrinter).size(), 45U);
    EXPECT_EQ(MethodsOf(ObjectKind::kCashDrawer).size(), 20U);
    EXPECT_EQ(MethodsOf(ObjectKind::kLineDisplay).size(), 29U);
    const std::vector<ArgumentKind> kinds = ArgumentKinds(*FindMethod(ObjectKind::kPrinter, "DirectIO"));
    EXPECT_EQ(kinds, (std::vector{ArgumentKind::kLong, ArgumentKind::kLongInOut, ArgumentKind::kTextInOut}));
}

TEST(Completion, OffersWhatMayFollow)
{
    EXPECT_EQ(Complete("POSP").candidates, std::vector<std::string>{"POSPrinter."});
    EXPECT_EQ(Complete("posprinter.printn").candidates, std::vector<std::string>{"PrintNormal("});
    EXPECT_EQ(Complete("CashDrawer.Open").candidates, (std::vector<std::string>{"OpenDrawer()", "OpenService("}));
    EXPECT_EQ(Complete("POSPrinter.CutPaper(PTR_CP").candidates, std::vector<std::string>{"PTR_CP_FULLCUT"});
    EXPECT_EQ(Complete("expect Out").candidates, std::vector<std::string>{"OutputCompleteEvent"});
    EXPECT_TRUE(Complete("POSPrinter.PrintNormal(2, \"\\\"PTR_").candidates.empty()) << "inside a text";
    EXPECT_EQ(Complete("POSPrinter.PrintNormal(2, \"PTR_").typed, 0U);
    const Completions several = Complete("POSPrinter.RecLine");
    EXPECT_EQ(several.typed, 7U);
    EXPECT_EQ(CommonStart(several.candidates), "RecLine");
}

}  // namespace
}  // namespace marbex::tools
