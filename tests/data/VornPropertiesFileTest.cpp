#include <vsupt/VornException.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornProperties.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

using namespace VornSupport;

namespace {

using Values = std::vector<std::string>;
using Table = std::map<std::string, Values>;

// A scratch directory for the files of one test.
class PropertyFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/vsupt-properties-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_directory = pattern;
    }

    void TearDown() override { std::system(("rm -rf '" + m_directory + "'").c_str()); }

    std::string write(const std::string& bytes)
    {
        const std::string path = m_directory + "/file" + std::to_string(++m_files);
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    static std::string read(const std::string& path)
    {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // Little-endian code units behind the mark.
    static std::string utf16(const std::u16string& text)
    {
        std::string bytes = "\xFF\xFE";
        for (char16_t unit : text) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
        return bytes;
    }

    std::string m_directory;
    int m_files = 0;
};

template <class S>
class AllStoresFileTest : public PropertyFileTest {
protected:
    static S text(const std::string& ascii) { return S(ascii.begin(), ascii.end()); }
};

using StoreTypes = ::testing::Types<std::string, std::wstring, ci_string, ci_wstring>;
TYPED_TEST_SUITE(AllStoresFileTest, StoreTypes);

}  // namespace

TEST(VornPropertiesLineTest, EveryLineMeansWhatTheGrammarSays)
{
    VornProperties<std::string> store;
    store.loadProperties(Values{"", "#a=1", " #b=2", "=3", "c", "d = 4", "e=f=g", "h=5\r", "i=  6 ", "j=\t7", "k=",
                                "l\r", "m\r=8", "n=9\n", "o=1\n2\r3"});
    const Table expected = {{" #b", {"2"}}, {"c", {""}}, {"d ", {"4"}},  {"e", {"f=g"}},  {"h", {"5"}},
                            {"i", {"6 "}},  {"j", {"\t7"}}, {"k", {""}}, {"l\r", {""}},   {"m\r", {"8"}},
                            {"n", {"9"}},   {"o", {"1\n2"}}};
    EXPECT_EQ(store.getProperties(), expected);
}

TEST(VornPropertiesLineTest, LetterSeparatorsMatchEitherCaseAndWholeLinesAreNames)
{
    VornProperties<ci_string> letters;
    letters.addProperty("keyXvalue", 'x');
    EXPECT_EQ(letters.getProperty("key"), "value");

    VornProperties<std::string> whole;
    whole.addPropertyforWSmanDA("a=b\r");
    whole.addPropertyforWSmanDA("#c");
    EXPECT_EQ(whole.getProperties(), (Table{{"a=b\r", {""}}}));
}

TYPED_TEST(AllStoresFileTest, Utf16FileWithMarkGivesItsNames)
{
    VornProperties<TypeParam> store;
    ASSERT_TRUE(store.loadProperties(this->write(this->utf16(u"a=1\r\nb=2")), '='));
    EXPECT_EQ(store.size(), 2u);
    EXPECT_EQ(store.getProperty(this->text("a")), this->text("1"));
    EXPECT_EQ(store.getProperty(this->text("b")), this->text("2"));
}

TYPED_TEST(AllStoresFileTest, PlainFileWithCrLfGivesCleanValuesAndLastLineNeedsNoEnd)
{
    VornProperties<TypeParam> store;
    ASSERT_TRUE(store.loadProperties(this->write("a=1\r\nflag\r\nb=2"), '='));
    EXPECT_EQ(store.getProperty(this->text("a")), this->text("1"));
    EXPECT_EQ(store.getProperty(this->text("flag\r")), this->text(""));
    EXPECT_EQ(store.getProperty(this->text("b")), this->text("2"));
}

TYPED_TEST(AllStoresFileTest, SavedFileHoldsOneLinePerNameWithTheFirstValue)
{
    VornProperties<TypeParam> store;
    store.addProperty(this->text("b"), this->text("2"));
    store.addProperty(this->text("a"), this->text("1"));
    store.addProperty(this->text("a"), this->text("3"));
    const std::string path = this->write("old content that is longer");
    ASSERT_TRUE(store.saveProperties(path));
    EXPECT_EQ(this->read(path), "a=1\nb=2\n");
}

TEST_F(PropertyFileTest, OnlyFFFEAtTheStartMarksUtf16)
{
    VornProperties<std::string> store;
    EXPECT_TRUE(store.loadPropertiesImpl(write("")));
    EXPECT_EQ(store.size(), 0u);
    store.loadProperties(write("\xFF" "a=1\n"));
    store.loadProperties(write("\xFE\xFF" "b=2"));
    store.loadProperties(write("\xEF\xBB\xBF" "c=3"));
    store.loadProperties(write("\xFF"));
    const Table expected = {{"\xEF\xBB\xBF" "c", {"3"}}, {"\xFE\xFF" "b", {"2"}}, {"\xFF", {""}}, {"\xFF" "a", {"1"}}};
    EXPECT_EQ(store.getProperties(), expected);
}

TEST_F(PropertyFileTest, Utf16LinesOfAnyLengthAndAnOddLastByte)
{
    VornProperties<std::wstring> store;
    store.loadProperties(write(utf16(u"a=" + std::u16string(20000, u'v') + u"\nb=12") + "3"));
    EXPECT_EQ(store.getProperty(L"a"), std::wstring(20000, L'v'));
    EXPECT_EQ(store.getProperty(L"b"), L"12");
}

TEST_F(PropertyFileTest, Utf16CodeUnitsBecomeWideCharactersAndLowBytesInNarrowStores)
{
    // U+010A has the line feed as its low byte: it ends a narrow line.
    const std::string path = write(utf16(u"a=\u00E9\u20AC\u010Ab=2"));
    VornProperties<std::wstring> wide;
    wide.loadProperties(path);
    EXPECT_EQ(wide.getProperty(L"a"), L"\u00E9\u20AC\u010Ab=2");
    VornProperties<std::string> narrow;
    narrow.loadProperties(path);
    EXPECT_EQ(narrow.getProperties(), (Table{{"a", {"\xE9\xAC"}}, {"b", {"2"}}}));
}

TEST_F(PropertyFileTest, MissingFilesAndDirectoriesCannotBeLoaded)
{
    const std::string missing = m_directory + "/missing";
    VornProperties<std::string> narrow;
    VornProperties<ci_wstring> wide;
    for (const std::string& path : {missing, m_directory}) {
        EXPECT_FALSE(narrow.loadPropertiesImpl(path));
        EXPECT_FALSE(wide.loadPropertiesImpl(path));
        try {
            narrow.loadProperties(path);
            ADD_FAILURE() << "no exception for " << path;
        } catch (const VornException& error) {
            EXPECT_EQ(error.getText(), "VornProperties<StringType>::loadProperties: couldn't open file " + path);
        }
    }
}

TEST_F(PropertyFileTest, SavingWritesTextsUpToTheirFirstNulOrFailsWithThePath)
{
    const std::string path = write("a=1\n");
    ASSERT_TRUE(VornProperties<std::string>().saveProperties(path));
    EXPECT_EQ(read(path), "");
    VornProperties<std::string> store;
    store.addProperty(std::string("na\0me", 5), std::string("va\0lue", 6));
    store.saveProperties(path);
    EXPECT_EQ(read(path), "na=va\n");

    const std::string unwritable = m_directory + "/no/such/dir";
    EXPECT_FALSE(store.savePropertiesImpl(unwritable));
    try {
        store.saveProperties(unwritable);
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "VornProperties<StringType>::saveProperties: couldn't open file " + unwritable);
    }
    EXPECT_EQ(store.size(), 1u);
}

TEST_F(PropertyFileTest, RoundTripLosesWhatThePlainFormCannotHold)
{
    VornProperties<std::string> store;
    const std::vector<std::pair<const char*, const char*>> properties = {
        {"multi", "1"}, {"multi", "2"}, {"x=y", "z"},   {"#hidden", "1"},
        {"blank", "  v"}, {"cr", "a\rb"}, {"lf", "a\nnext=1"}, {"empty", ""}};
    for (const auto& property : properties) {
        store.addProperty(property.first, property.second);
    }
    const std::string path = write("");
    store.saveProperties(path);
    VornProperties<std::string> back;
    back.loadProperties(path);
    const Table expected = {{"blank", {"v"}}, {"cr", {"a"}},   {"empty", {""}}, {"lf", {"a"}},
                            {"multi", {"1"}}, {"next", {"1"}}, {"x", {"y=z"}}};
    EXPECT_EQ(back.getProperties(), expected);
}

TEST_F(PropertyFileTest, LoadsAndSavesLogTheFileAndLevelNineEveryProperty)
{
    const std::string path = write("a=12\n");
    testing::internal::CaptureStdout();
    VornLogging logger("test", VornLogging::TargetStdout, 9);
    VornLogging::setInstance(logger);
    VornProperties<std::string> store;
    store.addProperty("z", "old");
    store.loadProperties(path);
    store.savePropertiesImpl(m_directory);
    VornLogging quiet("test", VornLogging::TargetStdout, -1);
    VornLogging::setInstance(quiet);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("VornProperties<StringType>::loadProperties: from file " + path + "\n"), std::string::npos);
    EXPECT_NE(output.find("DebugPrintProperty: a=12 (2)\n"), std::string::npos);
    EXPECT_NE(output.find("DebugPrintProperty: z=old (3)\n"), std::string::npos);
    EXPECT_NE(output.find("VornProperties<StringType>::saveProperties: couldn't open file " + m_directory + "\n"),
              std::string::npos);
}
