#include <vsupt/VornLogging.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::string::size_type start = 0;
    while (start < text.size()) {
        const auto end = text.find('\n', start);
        lines.push_back(text.substr(start, end - start));
        start = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

// The text of a prefixed line after its "[thread] " part.
std::string textOf(const std::string& line)
{
    const auto bracket = line.find("] ");
    return bracket == std::string::npos ? line : line.substr(bracket + 2);
}

bool isDigitRun(const std::string& text, std::size_t from, std::size_t count)
{
    if (from + count > text.size()) {
        return false;
    }
    for (std::size_t i = from; i < from + count; ++i) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) {
            return false;
        }
    }
    return true;
}

// Checks "YYYYMMDD_HH:MM:SS <head>[thread] <text>", where the thread is a
// possibly negative number.
bool hasLineFormat(const std::string& line, const std::string& head, const std::string& text)
{
    const bool stamp = isDigitRun(line, 0, 8) && line[8] == '_' && isDigitRun(line, 9, 2) && line[11] == ':' &&
                       isDigitRun(line, 12, 2) && line[14] == ':' && isDigitRun(line, 15, 2) && line[17] == ' ';
    if (!stamp || line.compare(18, head.size() + 1, head + "[") != 0) {
        return false;
    }
    std::size_t pos = 18 + head.size() + 1;
    if (pos < line.size() && line[pos] == '-') {
        ++pos;
    }
    const std::size_t digits = pos;
    while (pos < line.size() && std::isdigit(static_cast<unsigned char>(line[pos]))) {
        ++pos;
    }
    return pos > digits && line.compare(pos, std::string::npos, "] " + text) == 0;
}

class VornLoggingTest : public ::testing::Test {
protected:
    void SetUp() override { VornLogging::setInstance(m_logger); }

    // Runs the writes with stdout captured and gives back its lines.
    template <class Writes>
    std::vector<std::string> captured(Writes writes)
    {
        testing::internal::CaptureStdout();
        writes(m_logger);
        return splitLines(testing::internal::GetCapturedStdout());
    }

    VornLogging m_logger{"log", VornLogging::TargetStdout, 5};
};

}  // namespace

TEST_F(VornLoggingTest, WritesTheLineWithDateTimeLevelCategoryAndThread)
{
    const auto lines = captured([](VornLogging& log) { log << setloglevel(5) << "hello " << 42 << endrecord; });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(hasLineFormat(lines[0], "5 Global     ", "hello 42")) << lines[0];
}

TEST_F(VornLoggingTest, RefusesRecordsAboveTheLoggersLevel)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(6) << "too talkative" << endrecord;
        log << "no level means 9" << endrecord;
    });
    EXPECT_TRUE(lines.empty());
}

TEST_F(VornLoggingTest, ACategoryLevelNarrowsAndKeepsTheRefusedText)
{
    m_logger.setLogLevel("net", 2);
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel("net", 5) << "held back; " << endrecord;
        log << setloglevel("net", 2) << "sent" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 2 net        ["), std::string::npos) << lines[0];
    EXPECT_EQ(textOf(lines[0]), "held back; sent");
}

TEST_F(VornLoggingTest, ACategoryLevelCannotWiden)
{
    m_logger.setLogLevel("net", 9);
    const auto lines = captured([](VornLogging& log) { log << setloglevel("net", 7) << "chatter" << endrecord; });
    EXPECT_TRUE(lines.empty());
}

TEST_F(VornLoggingTest, AnUnknownCategoryIsWrittenUnderItsName)
{
    const auto lines = captured([](VornLogging& log) { log << setloglevel("disk", 3) << "full" << endrecord; });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 3 disk       ["), std::string::npos) << lines[0];
}

TEST_F(VornLoggingTest, ALongCategoryWidensThePrefix)
{
    const auto lines = captured([](VornLogging& log) { log << setloglevel("subsystem-x", 1) << "x" << endrecord; });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 1 subsystem-x ["), std::string::npos) << lines[0];
}

TEST_F(VornLoggingTest, LevelZeroIsTheTextAloneWhateverTheCategory)
{
    m_logger.setLogLevel("quiet", -1);
    const auto lines = captured([](VornLogging& log) { log << setloglevel("quiet", 0) << "bare" << endrecord; });
    EXPECT_EQ(lines, std::vector<std::string>{"bare"});
}

TEST_F(VornLoggingTest, CategoryLevelsOutsideTheRangeAreIgnored)
{
    m_logger.setLogLevel("a", 10);
    m_logger.setLogLevel("b", -2);
    m_logger.setLogLevel("c", -1);
    m_logger.setLogLevel("d", 9);
    EXPECT_EQ(m_logger.getLogLevel("a"), 5);
    EXPECT_EQ(m_logger.getLogLevel("b"), 5);
    EXPECT_EQ(m_logger.getLogLevel("c"), -1);
    EXPECT_EQ(m_logger.getLogLevel("d"), 9);
}

TEST_F(VornLoggingTest, CurrentLevelBelowMinusOneChangesNothing)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel("kept", 4) << setloglevel("lost", -2) << "text" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 4 kept       ["), std::string::npos) << lines[0];
}

TEST_F(VornLoggingTest, AHighCurrentLevelRefusesItemsUntilTheRecordEnds)
{
    const auto lines = captured([](VornLogging& log) {
        log.setCurrentLevel(100);
        log << "refused" << endrecord;
        log << setloglevel(1) << "accepted" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(textOf(lines[0]), "accepted");
}

TEST_F(VornLoggingTest, EndrecordWithNoTextWritesNothingAndResetsLevelAndCategory)
{
    VornLogging talkative("log", VornLogging::TargetStdout, 9);
    const auto lines = captured([&](VornLogging&) {
        talkative << setloglevel("cat", 1) << endrecord;
        talkative << "after" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 9 Global     ["), std::string::npos) << lines[0];
}

TEST_F(VornLoggingTest, ItemsAreFormattedByType)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(0) << true << ' ' << false << ' ' << 'c' << ' ' << static_cast<short>(-3) << ' '
            << static_cast<unsigned short>(65535) << ' ' << -7 << ' ' << 4000000000u << ' ' << -8L << ' '
            << 18446744073709551615UL << ' ' << 1.5f << ' ' << 2.25 << endrecord;
        log << setloglevel(0) << static_cast<const void*>(nullptr) << endrecord;
    });
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "true false c -3 65535 -7 4000000000 -8 18446744073709551615 1.500000 2.250000");
    EXPECT_EQ(lines[1], "(nil)");
}

TEST_F(VornLoggingTest, ANulCharAddsNothing)
{
    const auto lines = captured([](VornLogging& log) { log << setloglevel(0) << 'a' << '\0' << 'b' << endrecord; });
    EXPECT_EQ(lines, std::vector<std::string>{"ab"});
}

TEST_F(VornLoggingTest, StringKindsAreWrittenAsNarrowText)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(0) << std::string("std ") << ci_string("CI ") << std::wstring(L"wide ")
            << ci_wstring(L"ci-wide\0cut", 11) << endrecord;
    });
    EXPECT_EQ(lines, std::vector<std::string>{"std CI wide ci-wide"});
}

TEST_F(VornLoggingTest, AWideCharacterWithoutNarrowFormBecomesABlank)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(0) << std::wstring(L"a\u4e2db") << endrecord;
    });
    EXPECT_EQ(lines, std::vector<std::string>{"a b"});
}

TEST_F(VornLoggingTest, ANullTextSpoilsTheLoggerForGood)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(0) << "before " << static_cast<const char*>(nullptr) << "after" << endrecord;
        log << setloglevel(0) << "later" << endrecord;
    });
    EXPECT_EQ(lines, std::vector<std::string>{"before "});
}

TEST_F(VornLoggingTest, TargetZeroConsumesRecords)
{
    const auto lines = captured([](VornLogging& log) {
        log.setTarget(0);
        log << setloglevel(1) << "dropped" << endrecord;
        log.setTarget(VornLogging::TargetStdout);
        log << setloglevel(1) << "kept" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(textOf(lines[0]), "kept");
}

TEST_F(VornLoggingTest, EndrecordOfAnotherThreadNeverWaitsNorEndsTheRecord)
{
    const auto lines = captured([](VornLogging& log) {
        log << setloglevel(1) << "first ";
        std::thread([&] { log.endrecord(); }).join();
        log << "second" << endrecord;
    });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(textOf(lines[0]), "first second");
}

// One writer's endrecord may reset the level another writer has just set
// and not yet used, which makes that record level 9: a logger at level 9
// still writes it, so every record must arrive whole.
TEST_F(VornLoggingTest, RecordsOfSeveralThreadsNeverMix)
{
    const int perThread = 200;
    VornLogging talkative("log", VornLogging::TargetStdout, 9);
    const auto lines = captured([&](VornLogging&) {
        VornLogging& log = talkative;
        std::vector<std::thread> writers;
        for (int writer = 0; writer < 4; ++writer) {
            writers.emplace_back([&log, writer, perThread] {
                for (int i = 0; i < perThread; ++i) {
                    log << setloglevel(1) << "w" << writer << " a" << i << " b" << i << " c" << i << endrecord;
                }
            });
        }
        for (auto& thread : writers) {
            thread.join();
        }
    });
    ASSERT_EQ(lines.size(), 4u * perThread);
    for (const auto& line : lines) {
        int writer = -1;
        int a = -1;
        int b = -2;
        int c = -3;
        int end = 0;
        const std::string text = textOf(line);
        std::sscanf(text.c_str(), "w%d a%d b%d c%d%n", &writer, &a, &b, &c, &end);
        EXPECT_TRUE(a == b && b == c && end == static_cast<int>(text.size())) << line;
    }
}

TEST_F(VornLoggingTest, AccessNeedsAnInstalledLoggerWithALevel)
{
    EXPECT_TRUE(VornLogging::isAccessAllowed());
    {
        VornLogging off;
        VornLogging::setInstance(off);
        EXPECT_EQ(VornLogging::getInstance(), &off);
        EXPECT_FALSE(VornLogging::isAccessAllowed());
    }
    EXPECT_EQ(VornLogging::getInstance(), nullptr);
    EXPECT_FALSE(VornLogging::isAccessAllowed());
}

TEST_F(VornLoggingTest, DestroyingAnotherLoggerLeavesTheInstalledOne)
{
    { VornLogging other("other", 0, 9); }
    EXPECT_EQ(VornLogging::getInstance(), &m_logger);
}

namespace {

class CountingLogging : public VornLogging {
public:
    CountingLogging() : VornLogging("log", TargetStdout, 1) {}
    void startLogging() override { ++m_starts; }
    void stopLogging(int newTarget) override { m_stops.push_back(newTarget); }

    int m_starts = 0;
    std::vector<int> m_stops;
};

}  // namespace

TEST(VornLoggingTargetTest, SetTargetRestartsOnlyOnAChange)
{
    CountingLogging logger;
    logger.setTarget(VornLogging::TargetStdout);
    EXPECT_EQ(logger.m_starts, 0);
    EXPECT_TRUE(logger.m_stops.empty());
    logger.setTarget(3);
    EXPECT_EQ(logger.getTarget(), 3);
    EXPECT_EQ(logger.m_starts, 1);
    EXPECT_EQ(logger.m_stops, std::vector<int>{3});
}
