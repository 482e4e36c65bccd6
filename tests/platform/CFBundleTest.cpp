#include <kestrel/platform/CFBundle.h>

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/EmbeddedTables.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/StringTable.h>
#include <kestrel/platform/detail/UserLocale.h>
#include <kestrel/platform/detail/Utf8.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

using namespace kestrel::detail;
using testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

std::string textOf(CFStringRef string) { return string ? utf8Of(unitsOf(string)) : "(null)"; }

/// What a table holds for a key, "-" for nothing.
std::string find(const StringTable& table, const char* key) {
    CFStringRef text = table.find(key);
    return text ? textOf(text) : "-";
}

/// The environment's locale while it lives.
class UserSpeaks {
public:
    explicit UserSpeaks(const char* locale) {
        for (const char* name : names) {
            const char* value = std::getenv(name);
            m_before.emplace_back(value != nullptr, value ? value : "");
            unsetenv(name);
        }
        setenv("LANG", locale, 1);
    }
    UserSpeaks(const UserSpeaks&) = delete;
    UserSpeaks& operator=(const UserSpeaks&) = delete;
    ~UserSpeaks() {
        for (std::size_t i = 0; i < names.size(); ++i)
            m_before[i].first ? setenv(names[i], m_before[i].second.c_str(), 1) : unsetenv(names[i]);
    }

private:
    inline static const std::vector<const char*> names = {"LC_ALL", "LC_MESSAGES", "LANG"};
    std::vector<std::pair<bool, std::string>> m_before;
};

/// A folder of bundles that is gone with the object.
class BundleFolder {
public:
    BundleFolder() {
        std::string name = (fs::temp_directory_path() / "kestrel-bundles-XXXXXX").string();
        m_path = mkdtemp(name.data()) ? name : "";
    }
    BundleFolder(const BundleFolder&) = delete;
    BundleFolder& operator=(const BundleFolder&) = delete;
    ~BundleFolder() { fs::remove_all(m_path); }

    void write(const fs::path& file, const std::string& bytes) const {
        fs::create_directories((m_path / file).parent_path());
        std::ofstream(m_path / file, std::ios::binary) << bytes;
    }
    const char* path() const { return m_path.c_str(); }

private:
    fs::path m_path;
};

std::string lookUp(const char* key, const char* bundle) {
    char* utf8 = KSString(key, bundle).createUTF8Str();
    const std::string text = utf8 ? utf8 : "(null)";
    std::free(utf8);
    return text;
}

}  // namespace

TEST(StringTable, ReadsEntriesAndTheirEscapes) {
    const StringTable table(std::string_view(R"(
        /* a comment = "not an entry"; */
        "Blend Modes" = "Normal|Ad\"d|\U00e4\n\\";  // another comment
        bare.word-1_x = word;
        "same" = "first"; "same" = "last";
        "" = "";
        "日本" = "合成";)"),
                            "test");
    EXPECT_EQ(table.getError(), "");
    EXPECT_EQ(find(table, "Blend Modes"), "Normal|Ad\"d|ä\n\\");
    EXPECT_EQ(find(table, "bare.word-1_x"), "word");
    EXPECT_EQ(find(table, "same"), "last");
    EXPECT_EQ(find(table, ""), "");
    EXPECT_EQ(find(table, "日本"), "合成");
    EXPECT_EQ(find(table, "not there"), "-");
    const StringTable utf16(std::string_view("\xFF\xFE"
                                             "a\0=\0b\0;\0",
                                             10),
                            "test");
    EXPECT_EQ(find(utf16, "a"), "b");
}

TEST(StringTable, SaysWhereTheFaultIsAndKeepsWhatStandsBefore) {
    struct Row {
        const char* bytes;
        const char* error;
    };
    const std::string good = "a = b;\n";
    for (const Row& row :
         {Row{"\"c\" \"d\";", "t:2: expected '='"}, Row{"c = d", "t:2: expected ';'"},
          Row{"c = ;", "t:2: expected a text"}, Row{"\n\"c = d;\n\n", "t:3: a text that never ends"},
          Row{"c = \"\\q\";", "t:2: an unknown escape"}, Row{"c = \"\\U12\";", "t:2: an unknown escape"},
          Row{"/* c", "t:2: a comment that never ends"}, Row{"= d;", "t:2: expected a text"},
          Row{"\"", "t:2: a text that never ends"}, Row{"\"\\", "t:2: an unknown escape"}}) {
        const StringTable table(good + row.bytes, "t");
        EXPECT_EQ(table.getError(), row.error) << row.bytes;
        EXPECT_EQ(find(table, "a"), "b") << row.bytes;
        EXPECT_EQ(find(table, "c"), "-") << row.bytes;
    }
    EXPECT_EQ(StringTable(std::string_view("a = \"\xFF\";"), "t").getError(),
              "t:1: the text is neither UTF-8 nor UTF-16 with a byte-order mark");
}

TEST(UserLocale, FallsBackFromCountryToLanguageToBase) {
    EXPECT_THAT(localeFallbacks("fr_CA.UTF-8"), ElementsAre("fr_CA", "fr", "Base"));
    EXPECT_THAT(localeFallbacks("fr_FR@euro"), ElementsAre("fr_FR", "fr", "Base"));
    EXPECT_THAT(localeFallbacks("zh_Hant_TW"), ElementsAre("zh_Hant_TW", "zh_Hant", "zh", "Base"));
    EXPECT_THAT(localeFallbacks("de"), ElementsAre("de", "Base"));
    for (const char* name : {"", "C", "C.UTF-8", "POSIX", "../../etc", "a/b"})
        EXPECT_THAT(localeFallbacks(name), ElementsAre("Base")) << name;
}

TEST(CFBundle, FollowsTheUsersLocaleKeyByKey) {
    const BundleFolder folder;
    folder.write("org.example.film/Base.lproj/Localizable.strings",
                 "Layer = Layer; Shot = Shot; Take = Take;");
    folder.write("org.example.film/fr.lproj/Localizable.strings", "Layer = Calque; Shot = Plan;");
    folder.write("org.example.film/fr_CA.lproj/Localizable.strings", "Shot = \"Plan canadien\";");
    folder.write("org.example.film/fr.lproj/Menu.strings", "Layer = Menu;");
    ASSERT_TRUE(CFBundleAddSearchFolder(folder.path()));
    struct Row {
        const char* locale;
        const char *layer, *shot, *take;
    };
    for (const Row& row :
         {Row{"fr_CA.UTF-8", "Calque", "Plan canadien", "Take"}, Row{"fr_FR", "Calque", "Plan", "Take"},
          Row{"de_DE", "Layer", "Shot", "Take"}, Row{"C", "Layer", "Shot", "Take"}}) {
        const UserSpeaks user(row.locale);
        EXPECT_EQ(lookUp("Layer", "org.example.film"), row.layer) << row.locale;
        EXPECT_EQ(lookUp("Shot", "org.example.film"), row.shot) << row.locale;
        EXPECT_EQ(lookUp("Take", "org.example.film"), row.take) << row.locale;
        EXPECT_EQ(lookUp("Not there", "org.example.film"), "Not there") << row.locale;
        EXPECT_EQ(lookUp("Layer", "org.example.unknown"), "Layer") << row.locale;
    }
    const UserSpeaks user("fr");
    CFBundleRef bundle = CFBundleGetBundleWithIdentifier(CFSTR("org.example.film"));
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(CFSTR("org.example.film")), bundle);
    EXPECT_EQ(textOf(CFBundleGetIdentifier(bundle)), "org.example.film");
    struct TableRow {
        CFStringRef key, value, table;
        const char* text;
    };
    for (const TableRow& row : {TableRow{CFSTR("Layer"), nullptr, CFSTR("Menu"), "Menu"},
                                TableRow{CFSTR("Shot"), CFSTR("default"), CFSTR("Menu"), "default"},
                                TableRow{CFSTR("Shot"), CFSTR(""), CFSTR("Menu"), "Shot"},
                                TableRow{CFSTR("Shot"), nullptr, CFSTR("No such table"), "Shot"},
                                TableRow{CFSTR("Shot"), nullptr, CFSTR("../fr.lproj/Menu"), "Shot"},
                                TableRow{nullptr, CFSTR("default"), nullptr, "default"},
                                TableRow{nullptr, nullptr, nullptr, "(null)"}}) {
        CFStringRef text = CFBundleCopyLocalizedString(bundle, row.key, row.value, row.table);
        EXPECT_EQ(textOf(text), row.text);
        CFRelease(text);
    }
    EXPECT_EQ(textOf(KSString(CFSTR("Layer"), bundle).cf_str()), "Calque");
    EXPECT_EQ(textOf(KSString("Layer", bundle).cf_str()), "Calque");
    EXPECT_EQ(textOf(KSString(CFSTR("Layer"), CFSTR("org.example.film")).cf_str()), "Calque");
    EXPECT_EQ(textOf(KSString(CFSTR("Layer"), "org.example.film").cf_str()), "Calque");
}

TEST(CFBundle, TheFolderAddedLastComesFirstAndBadOnesAreRefused) {
    const UserSpeaks user("C");
    const BundleFolder first, second;
    first.write("org.example.order/Base.lproj/Localizable.strings", "a = first; b = first;");
    second.write("org.example.order/Base.lproj/Localizable.strings", "a = second;");
    ASSERT_TRUE(CFBundleAddSearchFolder(first.path()));
    EXPECT_EQ(lookUp("a", "org.example.order"), "first");
    ASSERT_TRUE(CFBundleAddSearchFolder(second.path()));
    EXPECT_EQ(lookUp("a", "org.example.order"), "second");
    EXPECT_EQ(lookUp("b", "org.example.order"), "first");
    EXPECT_FALSE(CFBundleAddSearchFolder(nullptr));
    EXPECT_FALSE(CFBundleAddSearchFolder("/no/such/folder"));
    for (const char* name : {"", ".", "..", "../x", "org/example"})
        EXPECT_EQ(CFBundleGetBundleWithIdentifier(KSString(name).cf_str()), nullptr) << name;
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(nullptr), nullptr);
}

TEST(CFBundle, ABadTableIsReportedAndItsTextsAreMissing) {
    const UserSpeaks user("C");
    const BundleFolder folder;
    folder.write("org.example.bad/Base.lproj/Localizable.strings", "a = good;\nb = \n");
    ASSERT_TRUE(CFBundleAddSearchFolder(folder.path()));
    testing::internal::CaptureStderr();
    EXPECT_EQ(lookUp("a", "org.example.bad"), "good");
    EXPECT_EQ(lookUp("b", "org.example.bad"), "b");
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        std::string(folder.path()) + "/org.example.bad/Base.lproj/Localizable.strings:3: expected a text\n");
}

TEST(CFBundle, TheLibrarysOwnTablesAreSoundAndCompiledIn) {
    ASSERT_FALSE(embeddedTables().empty());
    for (const EmbeddedTable& table : embeddedTables()) {
        const fs::path source = fs::path(KESTREL_SOURCE_DIR) / "kestrel/resources" / table.path;
        std::ifstream file(source, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), table.bytes) << source;
        EXPECT_EQ(StringTable(table.bytes, table.path).getError(), "");
    }
    EXPECT_NE(CFBundleGetBundleWithIdentifier(CFSTR(KESTREL_BUNDLE_IDENTIFIER)), nullptr);
}
