#include <vsupt/VornException.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornProperties.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using VornSupport::ci_string;
using VornSupport::ci_wstring;
using VornSupport::VornException;
using VornSupport::VornLogging;
using VornSupport::VornProperties;

namespace {

using Values = std::vector<std::string>;

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
S text(const std::string& ascii)
{
    return S(ascii.begin(), ascii.end());
}

template <class S>
class AllStoresFileTest : public PropertyFileTest {};

using StoreTypes = ::testing::Types<std::string, std::wstring, ci_string, ci_wstring>;
TYPED_TEST_SUITE(AllStoresFileTest, StoreTypes);

Values namesOf(const VornProperties<std::string>& store)
{
    Values names;
    for (const auto& entry : store.getProperties()) {
        names.push_back(entry.first);
    }
    return names;
}

}  // namespace

TEST(VornPropertiesLineTest, LinesMeanWhatTheGrammarSays)
{
    VornProperties<std::string> store;
    store.loadProperties(std::vector<std::string>{
        "", "#a=1", " #b=2", "=3", "c", "d = 4", "e=f=g", "h=5\r", "i=  6 ", "j=\t7", "k=", "l\r", "m\r=8", "n=9\n"});
    const auto properties = store.getProperties();
    const std::map<std::string, Values> expected = {
        {" #b", {"2"}}, {"c", {""}}, {"d ", {"4"}}, {"e", {"f=g"}}, {"h", {"5"}}, {"i", {"6 "}}, {"j", {"\t7"}},
        {"k", {""}}, {"l\r", {""}}, {"m\r", {"8"}}, {"n", {"9"}}};
    EXPECT_EQ(properties, expected);
}

TEST(VornPropertiesLineTest, ValueEndsAtTheFirstCarriageReturnEvenBeforeALineFeed)
{
    VornProperties<std::string> store;
    store.addProperty("a=1\n2\r3", '=');
    EXPECT_EQ(store.getProperty("a"), "1\n2");
}

TEST(VornPropertiesLineTest, CaseInsensitiveStoresFindALetterSeparatorInEitherCase)
{
    VornProperties<ci_string> store;
    store.addProperty("keyXvalue", 'x');
    EXPECT_EQ(store.getProperty("key"), "value");
}

TEST(VornPropertiesLineTest, WholeLineFormStoresTheLineAsAName)
{
    VornProperties<std::string> store;
    store.addPropertyforWSmanDA("a=b\r");
    store.addPropertyforWSmanDA("#c");
    store.addPropertyforWSmanDA("");
    EXPECT_EQ(namesOf(store), Values{"a=b\r"});
    EXPECT_EQ(store.getProperty("a=b\r"), "");
}

TEST(VornPropertiesLineTest, ArrayFormReadsCountLinesAndNothingBelowOne)
{
    const char* lines[] = {"a=1", "b=2"};
    VornProperties<std::string> store;
    store.loadProperties(lines, 0);
    store.loadProperties(lines, -1);
    EXPECT_EQ(store.size(), 0u);
    store.loadProperties(lines, 1);
    EXPECT_EQ(namesOf(store), Values{"a"});

    const wchar_t* wideLines[] = {L"x:1"};
    VornProperties<std::wstring> wide;
    wide.loadProperties(wideLines, 1, L':');
    EXPECT_EQ(wide.getProperty(L"x"), L"1");
}

TYPED_TEST(AllStoresFileTest, Utf16FileWithMarkGivesItsNames)
{
    VornProperties<TypeParam> store;
    ASSERT_TRUE(store.loadProperties(this->write(this->utf16(u"a=1\r\nb=2")), '='));
    EXPECT_EQ(store.size(), 2u);
    EXPECT_EQ(store.getProperty(text<TypeParam>("a")), text<TypeParam>("1"));
    EXPECT_EQ(store.getProperty(text<TypeParam>("b")), text<TypeParam>("2"));
}

TYPED_TEST(AllStoresFileTest, PlainFileWithCrLfGivesCleanValuesAndLastLineNeedsNoEnd)
{
    VornProperties<TypeParam> store;
    ASSERT_TRUE(store.loadProperties(this->write("a=1\r\nflag\r\nb=2"), '='));
    EXPECT_EQ(store.getProperty(text<TypeParam>("a")), text<TypeParam>("1"));
    EXPECT_EQ(store.getProperty(text<TypeParam>("flag\r")), text<TypeParam>(""));
    EXPECT_EQ(store.getProperty(text<TypeParam>("b")), text<TypeParam>("2"));
}

TYPED_TEST(AllStoresFileTest, SavedFileHoldsOneLinePerNameWithTheFirstValue)
{
    VornProperties<TypeParam> store;
    store.addProperty(text<TypeParam>("b"), text<TypeParam>("2"));
    store.addProperty(text<TypeParam>("a"), text<TypeParam>("1"));
    store.addProperty(text<TypeParam>("a"), text<TypeParam>("3"));
    const std::string path = this->write("old content that is longer");
    ASSERT_TRUE(store.saveProperties(path));
    EXPECT_EQ(this->read(path), "a=1\nb=2\n");
}

TEST_F(PropertyFileTest, EmptyFileLoadsAndAddsNothing)
{
    VornProperties<std::string> store;
    EXPECT_TRUE(store.loadPropertiesImpl(write("")));
    EXPECT_EQ(store.size(), 0u);
}

TEST_F(PropertyFileTest, MarkOtherThanUtf16LittleEndianIsPlainText)
{
    VornProperties<std::string> store;
    store.loadProperties(write("\xFF" "a=1\n"));
    store.loadProperties(write("\xFE\xFF" "b=2"));
    store.loadProperties(write("\xEF\xBB\xBF" "c=3"));
    store.loadProperties(write("\xFF"));
    EXPECT_EQ(namesOf(store), (Values{"\xEF\xBB\xBF" "c", "\xFE\xFF" "b", "\xFF", "\xFF" "a"}));
}

TEST_F(PropertyFileTest, Utf16LineLongerThanTheFirstBufferIsReadWhole)
{
    const std::u16string value(20000, u'v');
    VornProperties<std::wstring> store;
    store.loadProperties(write(utf16(u"a=" + value + u"\nb=2\n")));
    EXPECT_EQ(store.getProperty(L"a"), std::wstring(20000, L'v'));
    EXPECT_EQ(store.getProperty(L"b"), L"2");
}

TEST_F(PropertyFileTest, Utf16OddLastByteIsDropped)
{
    VornProperties<std::string> store;
    store.loadProperties(write(utf16(u"a=12") + "3"));
    EXPECT_EQ(store.getProperty("a"), "12");
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
    EXPECT_EQ(narrow.getProperty("a"), "\xE9\xAC");
    EXPECT_EQ(narrow.getProperty("b"), "2");
}

TEST_F(PropertyFileTest, LoadingTwiceAddsToTheStoreByItsRule)
{
    const std::string path = write("a=1\nb=2\n");
    VornProperties<std::string> multi;
    multi.loadProperties(path);
    multi.loadProperties(path);
    EXPECT_EQ(multi.size(), 2u);
    EXPECT_EQ(multi.getPropertyValues("a"), (Values{"1", "1"}));

    VornProperties<std::string> single(false);
    single.loadProperties(write("a=1\na=2\n"));
    EXPECT_EQ(single.getPropertyValues("a"), Values{"2"});
}

TEST_F(PropertyFileTest, FileThatCannotBeOpenedFailsWithItsPath)
{
    VornProperties<std::string> store;
    const std::string path = m_directory + "/missing";
    EXPECT_FALSE(store.loadPropertiesImpl(path));
    try {
        store.loadProperties(path);
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "VornProperties<StringType>::loadProperties: couldn't open file " + path);
        EXPECT_EQ(error.getCode(), 0);
    }
}

TEST_F(PropertyFileTest, DirectoryLoadsLikeAFileThatCannotBeOpened)
{
    VornProperties<std::string> narrow;
    VornProperties<ci_wstring> wide;
    EXPECT_FALSE(narrow.loadPropertiesImpl(m_directory));
    EXPECT_FALSE(wide.loadPropertiesImpl(m_directory));
    EXPECT_THROW(narrow.loadProperties(m_directory), VornException);
}

TEST_F(PropertyFileTest, SavingToAnUnwritablePathThrowsAndKeepsTheStore)
{
    VornProperties<std::string> store;
    store.addProperty("a", "1");
    const std::string path = m_directory + "/no/such/dir";
    EXPECT_FALSE(store.savePropertiesImpl(path));
    try {
        store.saveProperties(path);
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "VornProperties<StringType>::saveProperties: couldn't open file " + path);
    }
    EXPECT_EQ(store.getProperty("a"), "1");
}

TEST_F(PropertyFileTest, SavingAnEmptyStoreMakesAnEmptyFile)
{
    const std::string path = write("a=1\n");
    ASSERT_TRUE(VornProperties<std::string>().saveProperties(path));
    EXPECT_EQ(read(path), "");
}

TEST_F(PropertyFileTest, TextsAreWrittenUpToTheirFirstNul)
{
    VornProperties<std::string> store;
    store.addProperty(std::string("na\0me", 5), std::string("va\0lue", 6));
    const std::string path = write("");
    store.saveProperties(path);
    EXPECT_EQ(read(path), "na=va\n");
}

TEST_F(PropertyFileTest, RoundTripLosesWhatThePlainFormCannotHold)
{
    VornProperties<std::string> store;
    store.addProperty("multi", "1");
    store.addProperty("multi", "2");
    store.addProperty("x=y", "z");
    store.addProperty("#hidden", "1");
    store.addProperty("blank", "  v");
    store.addProperty("cr", "a\rb");
    store.addProperty("lf", "a\nnext=1");
    store.addProperty("empty", "");
    const std::string path = write("");
    store.saveProperties(path);

    VornProperties<std::string> back;
    back.loadProperties(path);
    const std::map<std::string, Values> expected = {{"blank", {"v"}}, {"cr", {"a"}},   {"empty", {""}}, {"lf", {"a"}},
                                                    {"multi", {"1"}}, {"next", {"1"}}, {"x", {"y=z"}}};
    EXPECT_EQ(back.getProperties(), expected);
}

TEST_F(PropertyFileTest, LoadLogsTheFileAndAtLevelNineEveryProperty)
{
    testing::internal::CaptureStdout();
    {
        VornLogging logger("test", VornLogging::TargetStdout, 9);
        VornLogging::setInstance(logger);
        VornProperties<std::string> store;
        store.addProperty("z", "old");
        const std::string path = write("a=12\n");
        store.loadProperties(path);
        VornLogging quiet("test", VornLogging::TargetStdout, -1);
        VornLogging::setInstance(quiet);
    }
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("VornProperties<StringType>::loadProperties: from file " + m_directory), std::string::npos);
    EXPECT_NE(output.find("DebugPrintProperty: a=12 (2)"), std::string::npos);
    EXPECT_NE(output.find("DebugPrintProperty: z=old (3)"), std::string::npos);
}
