#include "platform/registry.h"

#include <gtest/gtest.h>

#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;
using Names = std::vector<std::string>;

RegistryValue Text(std::string name, std::string text)
{
    return {std::move(name), RegistryType::kSz, std::move(text)};
}

TEST(SystemRegistry, KeysAndValues)
{
    const TempRegistry file;
    Registry& registry = SystemRegistry();
    EXPECT_TRUE(registry.KeyExists(""));
    EXPECT_EQ(registry.Subkeys(""), Names{});
    EXPECT_FALSE(registry.Values("SOFTWARE"));

    ASSERT_TRUE(registry.CreateKey("SOFTWARE\\Vendor\\One")) << registry.LastProblem();
    ASSERT_TRUE(registry.CreateKey("software\\vendor\\Two"));
    EXPECT_TRUE(registry.CreateKey("SOFTWARE\\VENDOR\\ONE"));
    EXPECT_EQ(registry.Subkeys("Software"), Names{"Vendor"});
    EXPECT_EQ(registry.Subkeys("SOFTWARE\\vendor"), (Names{"One", "Two"}));

    EXPECT_TRUE(registry.SetValue("SOFTWARE\\Vendor\\One", Text("Name", "first")));
    EXPECT_TRUE(registry.SetValue("SOFTWARE\\Vendor\\One", Text("", "default")));
    EXPECT_TRUE(registry.SetValue("software\\vendor\\one", Text("NAME", "line\nline")));
    EXPECT_EQ(registry.Value("SOFTWARE\\Vendor\\One", "name")->data, "line\nline");
    EXPECT_EQ(registry.Values("SOFTWARE\\Vendor\\One")->size(), 2u);
    EXPECT_FALSE(registry.SetValue("SOFTWARE\\Missing", Text("a", "b")));
    EXPECT_NE(registry.LastProblem().find("SOFTWARE\\Missing"), std::string::npos);

    EXPECT_TRUE(registry.DeleteValue("SOFTWARE\\Vendor\\One", "nAmE"));
    EXPECT_FALSE(registry.DeleteValue("SOFTWARE\\Vendor\\One", "nAmE"));
    EXPECT_TRUE(registry.DeleteKey("SOFTWARE\\Vendor\\One"));
    EXPECT_TRUE(registry.DeleteKey("SOFTWARE\\Vendor\\Two"));
    EXPECT_FALSE(registry.DeleteKey("SOFTWARE\\Vendor\\Two"));
    EXPECT_TRUE(registry.KeyExists("SOFTWARE\\Vendor")) << "a key goes with its parent";
    EXPECT_FALSE(registry.DeleteKey(""));
    EXPECT_FALSE(registry.CreateKey("SOFTWARE\\a\\\\b")) << "a key without a name";
}

// Every kind of value comes back as it was written, in the form that the header promises for its kind.
TEST(SystemRegistry, ValuesOfEveryKind)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\A]\n");
    Registry& registry = SystemRegistry();
    using namespace std::string_literals;
    const RegistryValue values[] = {
        {"none", RegistryType::kNone, "\1\2"s},
        {"text", RegistryType::kSz, "Preis \xE2\x82\xAC, \xF0\x9F\xA7\xBE"s},
        {"no text", RegistryType::kSz, ""s},
        {"expanded", RegistryType::kExpandSz, "%TEMP%\\x"s},
        {"bytes", RegistryType::kBinary, "\0\xFF\0"s},
        {"number", RegistryType::kDword, "\x8C\x23\0\0"s},
        {"other end", RegistryType::kDwordBigEndian, "\0\0\x23\x8C"s},
        {"texts", RegistryType::kMultiSz, "one\0two\0\0"s},
        {"long number", RegistryType::kQword, "\1\2\3\4\5\6\7\x88"s},
        {"long", RegistryType::kSz, std::string(5000, 'x')},
        {"\xC3\x9Cml\xC3\xA4ut", RegistryType::kDword, "\1\0\0\0"s},
    };
    for (const RegistryValue& value : values)
        ASSERT_TRUE(registry.SetValue("A", value)) << registry.LastProblem();
    for (const RegistryValue& value : values) {
        const auto read = registry.Value("A", value.name);
        ASSERT_TRUE(read) << value.name;
        EXPECT_EQ(read->type, value.type) << value.name;
        EXPECT_EQ(read->data, value.data) << value.name;
    }
    const auto all = registry.Values("A");
    ASSERT_TRUE(all);
    EXPECT_EQ(all->size(), std::size(values));
    EXPECT_FALSE(registry.Value("A", "missing"));
    EXPECT_EQ(registry.LastProblem(), "") << "a value that is not there is no problem";
}

TEST(SameName, IgnoresCaseButNotAccents)
{
    EXPECT_TRUE(SameName("Kasse \xC3\x96st", "kASSE \xC3\xB6ST"));
    EXPECT_TRUE(SameName("\xD0\x9A\xD0\xB0\xD1\x81\xD1\x81\xD0\xB0", "\xD0\xBA\xD0\x90\xD0\xA1\xD0\xA1\xD0\x90"));
    EXPECT_TRUE(SameName("\xCE\xA4\xCE\x91\xCE\x9C", "\xCF\x84\xCE\xB1\xCE\xBC"));
    EXPECT_FALSE(SameName("Ost", "\xC3\x96st"));
    EXPECT_FALSE(SameName("Till1", "Till1 "));
}

}  // namespace
}  // namespace marbex::platform
