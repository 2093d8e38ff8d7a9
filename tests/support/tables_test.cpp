#include <gtest/gtest.h>

#include <set>
#include <string>

#include "missing_code_pages.h"
#include "platform/text.h"
#include "support/printer_tables.h"
#include "support/version_text.h"

namespace marbex::support {
namespace {

TEST(PrinterTables, CharacterSetsAgreeWithThemselves)
{
    ASSERT_EQ(CharacterSets().size(), 25u);
    std::set<int> numbers;
    for (const CharSetStruct& set : CharacterSets()) {
        SCOPED_TRACE(set.DisplayName);
        EXPECT_TRUE(numbers.insert(set.SetNumber).second);
        EXPECT_EQ(FindCharacterSet(set.SetNumber), &set);
        EXPECT_EQ(std::to_string(set.CodePageNumber), set.CodePage);
        // Putting the bytes in the place of the marker must give what goes over the wire.
        std::string wire(set.SelectPrefixText);
        if (const std::size_t at = wire.find(kNulMarker); at != std::string::npos) {
            wire.replace(at, kNulMarker.size(), 1, '\0');
        }
        EXPECT_EQ(wire, set.SelectPrefix);
        EXPECT_EQ(wire.size(), set.SetNumber < 240 ? 5u : 2u);
        EXPECT_EQ(set.TableCode, set.SetNumber < 240 ? set.SetNumber : set.SetNumber - 239);
        // A misspelt number would silently print question marks.
        std::string bytes;
        const platform::CodePageResult converted = platform::ToCodePage(set.CodePageNumber, u"A", bytes);
        const bool missing = converted == platform::CodePageResult::kUnknownCodePage;
        EXPECT_TRUE(converted == platform::CodePageResult::kOk || (missing && tests::MayBeMissing(set.CodePageNumber)));
    }
    EXPECT_EQ(FindCharacterSet(6), nullptr);
    EXPECT_EQ(FindCharacterSet(45)->CodePageNumber, 1252u);
}

TEST(PrinterTables, ModelsInTheirOrder)
{
    std::string drawers, displays, names;
    for (const PrinterModelStruct& model : PrinterModels()) {
        names += std::string(model.Name) + ";";
        drawers += model.HasCashDrawer != 0 ? '1' : '0';
        displays += model.HasLineDisplay != 0 ? '1' : '0';
        EXPECT_STREQ(model.Name, model.DisplayName);
        EXPECT_TRUE(std::string(model.Picture).ends_with(".bmp"));
    }
    EXPECT_EQ(names,
              "TALIS;TALIS ETHERNET;ORVEN;ORVENETH;BRISA;BRISA-HD;PELTO;SELVA;GALEN;LUMEN;OSTRA;FERRO;NESTO;VELA PC;"
              "DORIN;AMBRA;ARGO PC TURBO;CORVO;");
    EXPECT_EQ(drawers, "110000110000110110");
    EXPECT_EQ(displays, "000000000000110010");
    EXPECT_EQ(SubModels().size(), 8u);
}

TEST(VersionText, FromTheFileVersion)
{
    EXPECT_EQ(ServiceObjectVersionOf("0, 4, 7, 1"), 1014471);
    EXPECT_EQ(ServiceObjectVersionOf("1, 0, 0, 0"), 1014100);
    EXPECT_EQ(ServiceObjectVersionOf("0, 9, 9, 9"), 1014999);
    EXPECT_EQ(ServiceObjectVersionOf(""), 1014000);
    EXPECT_GT(ServiceObjectVersionOf("99999, 99999, 99999, 99999"), 0);
    EXPECT_EQ(ServiceObjectDescriptionOf("SO V", "0, 4, 7, 1"), "SO V0.4.7");
    EXPECT_EQ(ServiceObjectDescriptionOf("SO V", "1, 0"), "SO V1.0");
    EXPECT_EQ(ServiceObjectDescriptionOf("SO V", ""), "SO V");
}

}  // namespace
}  // namespace marbex::support
