#include "support/LogRecords.h"
#include "support/ThrownText.h"

#include <vsupt/PropertyChanged.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornException.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace VornSupport;
using log_records::recordsAt;

namespace {

using Values = std::vector<std::string>;
using Table = std::map<std::string, Values>;

// The text of the exception of type E that body throws.
// Little-endian code units behind the mark.
std::string utf16(const std::u16string& text)
{
    std::string bytes = "\xFF\xFE";
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

// A scratch directory for the files of one test.
class PropertyFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(mkdtemp(&m_directory[0]), nullptr); }
    void TearDown() override { std::system(("rm -rf '" + m_directory + "'").c_str()); }

    std::string write(const std::string& bytes)
    {
        const std::string path = m_directory + "/file" + std::to_string(++m_files);
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    std::string m_directory = "/tmp/vsupt-properties-XXXXXX";
    int m_files = 0;
};

template <class S>
class AllStoresFileTest : public PropertyFileTest {
};

using StoreTypes = ::testing::Types<std::string, std::wstring, ci_string, ci_wstring>;
TYPED_TEST_SUITE(AllStoresFileTest, StoreTypes);

}  // namespace

TEST(VornPropertiesTest, RepeatedNamesAppendOrReplaceByTheStoresMode)
{
    VornProperties<std::string> multi;
    VornProperties<std::string> single(false);
    for (auto* store : {&multi, &single}) {
        store->addProperty("a", "1");
        store->addProperty("a", "2");
    }
    EXPECT_EQ(multi.getPropertyValues("a"), (Values{"1", "2"}));
    EXPECT_EQ(multi.getProperty("a"), "1");
    EXPECT_EQ(single.getPropertyValues("a"), Values{"2"});
    multi.setProperty("a", "3");
    EXPECT_EQ(multi.getPropertyValues("a"), (Values{"3", "2"}));
    multi.removeProperty("a");
    EXPECT_TRUE(multi.getPropertyValues("a").empty());
}

TEST(VornPropertiesTest, AbsentNamesThrowOnlyFromGetPropertyWithoutDefault)
{
    VornProperties<std::wstring> store;
    EXPECT_EQ(textThrown<VornPropertyNotFound>([&] { store.getProperty(L"port"); }), "Property not found: port");
    const std::wstring fallback = L"x";
    EXPECT_EQ(&store.getProperty(L"port", fallback), &fallback);
    std::wstring value = L"untouched";
    EXPECT_FALSE(store.getPropertyValue(L"port", value));
    EXPECT_EQ(value, L"untouched");
}

TEST(VornPropertiesTest, CopiesTakeTheTableButNotCountOrDependentsAndChangesNotifyNobody)
{
    class CountingDependent : public VornDependent {
    public:
        void handleNotification(VornCollaborator&, const VornNotification&) override { ++calls; }
        int calls = 0;
    } dependent;
    VornSmartPointer<VornProperties<std::string>> original(new VornProperties<std::string>(false));
    original->addDependent(dependent);
    original->addProperty("a", "1");
    original->setProperty("a", "1");
    original->removeProperty("a");
    VornProperties<std::string> copy(*original);
    copy.notify(PropertyChanged("a"));
    EXPECT_EQ(copy.refCount(), 0);
    EXPECT_EQ(dependent.calls, 0);

    *original = VornProperties<std::string>();
    original->addProperty("b", "1");
    original->addProperty("b", "2");
    EXPECT_EQ(original->getPropertyValues("b"), (Values{"1", "2"}));
    EXPECT_EQ(original->refCount(), 1);
    original->notify(PropertyChanged("b"));
    EXPECT_EQ(dependent.calls, 1);
    original->removeDependent(dependent);
}

TEST(VornPropertiesLineTest, EveryLineMeansWhatTheGrammarSays)
{
    VornProperties<std::string> store;
    store.loadProperties(Values{"", "#a=1", " #b=2", "=3", "c", "d = 4", "e=f=g", "h=5\r", "i=  6 ", "j=\t7", "l\r",
                                "m\r=8", "n=9\n", "o=1\n2\r3"});
    const Table expected = {{" #b", {"2"}}, {"c", {""}},    {"d ", {"4"}},   {"e", {"f=g"}}, {"h", {"5"}},
                            {"i", {"6 "}},  {"j", {"\t7"}}, {"l\r", {""}}, {"m\r", {"8"}}, {"n", {"9"}},
                            {"o", {"1\n2"}}};
    EXPECT_EQ(store.getProperties(), expected);

    VornProperties<ci_string> letters;
    letters.addProperty("keyXvalue", 'x');
    EXPECT_EQ(letters.getProperty("key"), "value");
    VornProperties<std::string> whole;
    whole.addPropertyforWSmanDA("a=b\r");
    whole.addPropertyforWSmanDA("#c");
    EXPECT_EQ(whole.getProperties(), (Table{{"a=b\r", {""}}}));
}

TYPED_TEST(AllStoresFileTest, FilesLoadPlainOrUtf16AndSaveOneLinePerNameWithTheFirstValueUpToItsFirstNul)
{
    auto text = [](const std::string& ascii) { return TypeParam(ascii.begin(), ascii.end()); };
    VornProperties<TypeParam> store;
    ASSERT_TRUE(store.loadProperties(this->write(utf16(u"a=1\r\nb=2")), '='));
    ASSERT_TRUE(store.loadProperties(this->write("a=3\r\nflag\r\nc=4"), '='));
    EXPECT_EQ(store.getPropertyValues(text("a")), (std::vector<TypeParam>{text("1"), text("3")}));
    EXPECT_EQ(store.getProperty(text("b")), text("2"));
    EXPECT_EQ(store.getProperty(text("flag\r")), text(""));
    EXPECT_EQ(store.getProperty(text("c")), text("4"));

    store.addProperty(text(std::string("n\0ame", 5)), text(std::string("v\0alue", 6)));
    const std::string path = this->write("old content that is longer than the new");
    ASSERT_TRUE(store.saveProperties(path));
    std::stringstream saved;
    saved << std::ifstream(path).rdbuf();
    EXPECT_EQ(saved.str(), "a=1\nb=2\nc=4\nflag\r=\nn=v\n");
}

// U+010A has the line feed as its low byte: it ends a narrow line. Lines may
// be of any length, and an odd last byte is dropped.
TEST_F(PropertyFileTest, OnlyFFFEMarksUtf16WhoseCodeUnitsBecomeWideCharactersOrLowBytes)
{
    const std::u16string text = u"a=\u00E9\u20AC\u010Ab=2\nc=" + std::u16string(20000, u'v') + u"\nd=12";
    const std::string path = write(utf16(text) + "3");
    VornProperties<std::wstring> wide;
    wide.loadProperties(path);
    EXPECT_EQ(wide.getProperty(L"a"), L"\u00E9\u20AC\u010Ab=2");
    EXPECT_EQ(wide.getProperty(L"c"), std::wstring(20000, L'v'));
    EXPECT_EQ(wide.getProperty(L"d"), L"12");
    VornProperties<std::string> narrow;
    narrow.loadProperties(path);
    EXPECT_EQ(narrow.getPropertyValues("a"), Values{"\xE9\xAC"});
    EXPECT_EQ(narrow.getPropertyValues("b"), Values{"2"});
    VornProperties<std::string> marks;
    EXPECT_TRUE(marks.loadPropertiesImpl(write("")));
    for (const char* bytes : {"\xFE\xFF" "b=2", "\xEF\xBB\xBF" "c=3", "\xFF"}) {
        marks.loadProperties(write(bytes));
    }
    EXPECT_EQ(marks.getProperties(), (Table{{"\xEF\xBB\xBF" "c", {"3"}}, {"\xFE\xFF" "b", {"2"}}, {"\xFF", {""}}}));
}

TEST_F(PropertyFileTest, FilesThatCannotBeOpenedAreReportedWithTheirPath)
{
    VornProperties<ci_wstring> store;
    const std::string missing = m_directory + "/no/such/file";
    EXPECT_FALSE(store.loadPropertiesImpl(m_directory));
    EXPECT_FALSE(store.savePropertiesImpl(m_directory));
    EXPECT_EQ(textThrown<VornException>([&] { store.loadProperties(missing); }),
              "VornProperties<StringType>::loadProperties: couldn't open file " + missing);
    EXPECT_EQ(textThrown<VornException>([&] { store.saveProperties(missing); }),
              "VornProperties<StringType>::saveProperties: couldn't open file " + missing);
}

TEST_F(PropertyFileTest, LoadsAndSavesLogTheFileAndLevelNineEveryProperty)
{
    const std::string path = write("a=12\n");
    VornProperties<std::string> store;
    store.addProperty("z", "old");
    const auto records = recordsAt(9, [&] {
        store.loadProperties(path);
        store.savePropertiesImpl(m_directory);
    });
    EXPECT_EQ(records, (Values{"VornProperties<StringType>::loadProperties: from file " + path,
                               "DebugPrintProperty: a=12 (2)", "DebugPrintProperty: z=old (3)",
                               "VornProperties<StringType>::saveProperties: to file " + m_directory,
                               "VornProperties<StringType>::saveProperties: couldn't open file " + m_directory}));
}
