#include "support/LogRecords.h"
#include "support/ThrownText.h"

#include <vsupt/PropertyChanged.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornException.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
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

std::string readAll(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// A file system of 64 KiB in a scratch directory, where the test may mount
// one (root may); the test is skipped elsewhere.
class FullDiskTest : public PropertyFileTest {
protected:
    void SetUp() override
    {
        PropertyFileTest::SetUp();
        m_mounted = mount("tmpfs", m_directory.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!m_mounted) {
            GTEST_SKIP() << "cannot mount a small tmpfs here: " << std::strerror(errno);
        }
    }
    void TearDown() override
    {
        if (m_mounted) {
            umount2(m_directory.c_str(), MNT_DETACH);
        }
        PropertyFileTest::TearDown();
    }

    // Writes a file until the file system refuses more.
    void fill(const std::string& path)
    {
        std::ofstream filler(path, std::ios::binary);
        const std::string block(4096, 'x');
        while (filler.write(block.data(), block.size()).flush()) {
        }
        filler.clear();
        while (filler.put('x').flush()) {
        }
    }

    bool m_mounted = false;
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

TEST_F(FullDiskTest, ASaveThatDoesNotFitFailsAndLeavesTheOldFile)
{
    const std::string path = m_directory + "/settings";
    VornProperties<std::string> store;
    store.addProperty("old", "1");
    ASSERT_TRUE(store.saveProperties(path));
    fill(m_directory + "/filler");
    for (int i = 0; i < 1000; ++i) {
        store.addProperty("name" + std::to_string(i), std::string(20, 'v'));
    }
    EXPECT_EQ(textThrown<VornException>([&] { store.saveProperties(path); }),
              "VornProperties<StringType>::saveProperties: couldn't write file " + path + ": No space left on device");
    EXPECT_EQ(readAll(path), "old=1\n");

    std::filesystem::remove(m_directory + "/filler");
    ASSERT_TRUE(store.savePropertiesImpl(path));
    VornProperties<std::string> back;
    back.loadProperties(path);
    EXPECT_EQ(back.getProperties(), store.getProperties());
}

// The file is rewritten in place, never replaced: links keep leading to it.
TEST_F(PropertyFileTest, ASaveRewritesTheFileThatLinksLeadTo)
{
    const std::string path = write("a=1\nb=2\nc=3\n");
    const std::string hardLink = m_directory + "/hard";
    const std::string symbolicLink = m_directory + "/symbolic";
    std::filesystem::create_hard_link(path, hardLink);
    std::filesystem::create_symlink(path, symbolicLink);
    VornProperties<std::string> store;
    store.addProperty("z", "9");
    ASSERT_TRUE(store.saveProperties(symbolicLink));
    EXPECT_TRUE(std::filesystem::is_symlink(symbolicLink));
    EXPECT_EQ(readAll(hardLink), "z=9\n");
}

// A FIFO would block the load and a device would never end it; they are
// files that cannot be opened. A line past the limit ends the load, and
// what came before it stays.
TEST_F(PropertyFileTest, OnlyRegularFilesAreReadAndALineTooLongEndsTheLoad)
{
    const std::string fifo = m_directory + "/fifo";
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    for (const std::string& path : {fifo, std::string("/dev/zero")}) {
        VornProperties<std::wstring> store;
        EXPECT_EQ(textThrown<VornException>([&] { store.loadProperties(path); }),
                  "VornProperties<StringType>::loadProperties: couldn't open file " + path);
    }

    const std::string longest(VornProperties<std::string>::maxLineLength - 2, 'v');
    const std::string plain = write("a=1\nb=" + longest + "\nc=" + longest + "v\nd=4\n");
    const std::string wide = write(utf16(u"a=1\nb=" + std::u16string(longest.size(), u'v') + u"\nc=" +
                                         std::u16string(longest.size() + 1, u'v') + u"\nd=4\n"));
    for (const std::string& path : {plain, wide}) {
        VornProperties<std::string> store;
        EXPECT_EQ(textThrown<VornException>([&] { store.loadProperties(path); }),
                  "VornProperties<StringType>::loadProperties: line longer than 1048576 characters in file " + path);
        EXPECT_EQ(store.getProperty("a"), "1");
        EXPECT_EQ(store.getProperty("b"), longest);
        EXPECT_EQ(store.size(), 2u);
    }
}
