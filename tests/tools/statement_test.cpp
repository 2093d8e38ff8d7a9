#include "marbex_opos/console/statement.h"

#include <gtest/gtest.h>

#include "marbex_opos/console/completion.h"
#include "temp_registry.h"

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

    EXPECT_EQ(Parsed<CallMethod>("POSPrinter.CutPaper(100) == 0").allowed, Allowed{0});
    EXPECT_EQ(Parsed<CallMethod>("POSPrinter.CutPaper(100)==OPOS_E_CLAIMED OR 0x6A or true").allowed,
              (Allowed{102, 106, 1}));
    EXPECT_EQ(Parsed<ReadProperty>("POSPrinter.State == OPOS_S_IDLE|1").allowed, Allowed{3});
    EXPECT_EQ(Parsed<ReadProperty>("POSPrinter.CheckHealthText == null or \"or\"").allowed,
              (Allowed{NullText{}, std::u16string(u"or")}));

    EXPECT_EQ(Parsed<Wait>("wait 250").milliseconds, 250);
    const auto expect = Parsed<Expect>("expect OutputCompleteEvent 3000");
    EXPECT_EQ(expect.event, EventKind::kOutputComplete);
    EXPECT_EQ(expect.milliseconds, 3000);
    EXPECT_FALSE(expect.isRequired);
    EXPECT_TRUE(Parsed<Expect>("require any 5").isRequired);
    EXPECT_FALSE(Parsed<Help>("help").object.has_value());
    EXPECT_EQ(Parsed<Help>("help posprinter . cutpaper").member, "CutPaper");
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
    EXPECT_EQ(Refused("POSPrinter.CheckHealthText == 1"), "CheckHealthText is a text");
    EXPECT_EQ(Refused("POSPrinter.State == OPOS_S_IDLE or null"), "State is a number");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(1) =="), "unexpected end of the statement");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(1) = 0"), "unexpected \"= 0\"");
    EXPECT_EQ(Refused("POSPrinter.CutPaper(1) == 0 ro 1"), "unexpected \"ro 1\"");
    EXPECT_EQ(Refused("POSPrinter.State == or"), "no constant or");
    EXPECT_EQ(Refused("help POSPrinter.Colour"), "no method or property Colour");
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

using Names = std::vector<std::string>;

TEST(Completion, OffersWhatMayFollow)
{
    const tests::TempRegistry registry(
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter]\n\"Front\"=\"TILL1\"\n\"Side\"="
        "\"Theirs\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till1]\n@=\"Service."
        "MarbexOposPrnDriver\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till2]\n@=\"Service."
        "MarbexOposPrnDriver\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Theirs]\n@=\"Other.Printer\"\n");
    struct Case {
        const char* line;
        Names candidates;
        std::optional<std::string> replacement;
    };
    const Case cases[] = {
        {"POSP", {"POSPrinter."}, "POSPrinter."},
        {"posprinter.printn", {"PrintNormal("}, "PrintNormal("},
        {" CashDrawer.Open", {"OpenDrawer()", "OpenService("}, std::nullopt},
        {"CashDrawer.Op", {"OpenDrawer()", "OpenService("}, "Open"},
        {"POSPrinter.CutPaper(PTR_CP", {"PTR_CP_FULLCUT"}, "PTR_CP_FULLCUT"},
        {"POSPrinter.State == OPOS_S_B", {"OPOS_S_BUSY"}, "OPOS_S_BUSY"},
        {"require Out", {"OutputCompleteEvent"}, "OutputCompleteEvent"},
        {"help CashDrawer.OpenS", {"OpenService"}, "OpenService"},
        {"POSPrinter.PrintNormal(2, \"\\\"PTR_", {}, std::nullopt},
        {"POSPrinter.OpenService(\"", {"POSPrinter"}, "POSPrinter\", \""},
        {"POSPrinter.OpenService(\"POSPrinter\", \"", {"Front", "Till1", "Till2"}, std::nullopt},
        {"POSPrinter.OpenService(\"POSPrinter\", \"fr", {"Front"}, "Front\")"},
        {"CashDrawer.OpenService(\"CashDrawer\", \"", {}, std::nullopt},
    };
    for (const Case& one : cases) {
        const Completions found = Complete(one.line);
        EXPECT_EQ(found.candidates, one.candidates) << one.line;
        EXPECT_EQ(found.Replacement(), one.replacement) << one.line;
    }
    EXPECT_EQ(Complete("").candidates, (Names{"CashDrawer.", "LineDisplay.", "POSPrinter.", "answer ", "expect ",
                                              "help ", "quit", "release ", "require ", "wait "}));
    EXPECT_GT(Complete("POSPrinter.").candidates.size(), 190U);
    EXPECT_EQ((Completions{"", {"Till \u00E4", "Till \u00E6"}, ""}).Replacement(), "Till ") << "no half characters";
}

TEST(Completion, ListsDownTheColumns)
{
    EXPECT_EQ(InColumns({"a", "bb", "\u00E9\u00E9\u00E9", "d", "e"}, 8), "a    d\nbb   e\n\u00E9\u00E9\u00E9");
    EXPECT_EQ(InColumns({"wide", "wider"}, 3), "wide\nwider");
    const std::string many = InColumns(Names(203, "x"), 100);
    EXPECT_TRUE(many.ends_with("\n... and 3 more")) << many;
}

}  // namespace
}  // namespace marbex::tools
