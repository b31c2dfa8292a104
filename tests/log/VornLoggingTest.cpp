#include <vsupt/VornLogging.h>

#include <gtest/gtest.h>

#include "support/ThreadCount.h"

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <cfloat>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using Lines = std::vector<std::string>;

namespace {

// "YYYYMMDD_HH:MM:SS <head>[thread] <text>" as "<head>[T] <text>"; any
// other line as it is.
std::string shaped(const std::string& line)
{
    int stamp = 0;
    int thread = 0;
    std::sscanf(line.c_str(), "%*8[0-9]_%*2[0-9]:%*2[0-9]:%*2[0-9] %n", &stamp);
    const auto bracket = line.find('[', 18);
    if (stamp == 18 && bracket != std::string::npos) {
        std::sscanf(line.c_str() + bracket, "[%*d] %n", &thread);
    }
    return thread > 0 ? line.substr(18, bracket - 18) + "[T] " + line.substr(bracket + thread) : line;
}

// The lines written to stdout by a logger at the given level, installed for
// the while, shaped.
template <class Writes>
Lines linesAt(int level, Writes writes)
{
    VornLogging log("log", VornLogging::TargetStdout, level);
    VornLogging::setInstance(log);
    testing::internal::CaptureStdout();
    writes(log);
    const std::string output = testing::internal::GetCapturedStdout();
    Lines lines;
    for (std::string::size_type start = 0, end; start < output.size(); start = end + 1) {
        end = std::min(output.find('\n', start), output.size());
        lines.push_back(shaped(output.substr(start, end - start)));
    }
    return lines;
}

}  // namespace

TEST(VornLoggingTest, RecordsAreFilteredByLevelAndCategoryAndPrefixedWithBoth)
{
    EXPECT_EQ(linesAt(5, [](VornLogging& log) { log << setloglevel(5) << "hello " << 42 << endrecord; }),
              Lines{"5 Global     [T] hello 42"});
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log << setloglevel(6) << "too talkative" << endrecord;
                  log << "no level means 9" << endrecord;
              }),
              Lines{});
    // A category's level narrows, keeping the refused text for the next record.
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log.setLogLevel("net", 2);
                  log << setloglevel("net", 5) << "held back; " << endrecord;
                  log << setloglevel("net", 2) << "sent" << endrecord;
              }),
              Lines{"2 net        [T] held back; sent"});
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log.setLogLevel("net", 9);
                  log << setloglevel("net", 7) << "cannot widen" << endrecord;
              }),
              Lines{});
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log << setloglevel("disk", 3) << "unknown" << endrecord;
                  log << setloglevel("subsystem-x", 1) << "long" << endrecord;
                  log << setloglevel("kept", 4) << setloglevel("lost", -2) << "below -1 changes nothing" << endrecord;
                  log.setLogLevel("quiet", -1);
                  log << setloglevel("quiet", 0) << "level zero is bare" << endrecord;
              }),
              (Lines{"3 disk       [T] unknown", "1 subsystem-x [T] long", "4 kept       [T] below -1 changes nothing",
                     "level zero is bare"}));
}

TEST(VornLoggingTest, CurrentLevelAndTargetRefuseRecordsUntilChanged)
{
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log.setCurrentLevel(100);
                  log << "refused" << endrecord;
                  log << setloglevel(1) << "accepted" << endrecord;
                  log.setTarget(0);
                  log << setloglevel(1) << "consumed" << endrecord;
                  log.setTarget(VornLogging::TargetStdout);
                  log << setloglevel(1) << "kept" << endrecord;
              }),
              (Lines{"1 Global     [T] accepted", "1 Global     [T] kept"}));
    // An empty record writes nothing, yet resets level and category.
    EXPECT_EQ(linesAt(9, [](VornLogging& log) {
                  log << setloglevel("cat", 1) << endrecord;
                  log << "after" << endrecord;
              }),
              Lines{"9 Global     [T] after"});
}

TEST(VornLoggingTest, CategoryLevelsOutsideMinusOneToNineAreIgnored)
{
    VornLogging log("log", VornLogging::TargetStdout, 5);
    for (int level : {10, -2, -1, 9}) {
        log.setLogLevel(std::to_string(level), level);
    }
    EXPECT_EQ((std::vector<int>{5, 5, -1, 9}), (std::vector<int>{log.getLogLevel("10"), log.getLogLevel("-2"),
                                                                 log.getLogLevel("-1"), log.getLogLevel("9")}));
}

TEST(VornLoggingTest, ItemsAreWrittenAsNarrowTextByTypeUntilANullText)
{
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log << setloglevel(0) << true << ' ' << false << ' ' << 'c' << ' ' << static_cast<short>(-3) << ' '
                      << static_cast<unsigned short>(65535) << ' ' << -7 << ' ' << 4000000000u << ' ' << -8L << ' '
                      << 18446744073709551615UL << ' ' << 1.5f << ' ' << 2.25 << endrecord;
                  log << setloglevel(0) << static_cast<const void*>(nullptr) << endrecord;
                  log << setloglevel(0) << 'a' << '\0' << 'b' << endrecord;
                  log << setloglevel(0) << std::string("std ") << ci_string("CI ") << std::wstring(L"wide ")
                      << ci_wstring(L"ci-wide\0cut", 11) << endrecord;
                  log << setloglevel(0) << std::wstring(L"no narrow form:\u4e2d.") << endrecord;
                  // A null text spoils the logger for good.
                  log << setloglevel(0) << "before " << static_cast<const char*>(nullptr) << "after" << endrecord;
                  log << setloglevel(0) << "later" << endrecord;
              }),
              (Lines{"true false c -3 65535 -7 4000000000 -8 18446744073709551615 1.500000 2.250000", "(nil)", "ab",
                     "std CI wide ci-wide", "no narrow form: .", "before "}));
}

// The longest number item: every digit of the largest double, and its sign.
TEST(VornLoggingTest, TheLongestNumberItemIsWrittenWhole)
{
    const std::string longest = std::to_string(-DBL_MAX);
    ASSERT_EQ(longest.size(), 317u);
    EXPECT_EQ(linesAt(5, [](VornLogging& log) { log << setloglevel(0) << -DBL_MAX << endrecord; }), Lines{longest});
}

TEST(VornLoggingTest, EndrecordOfAnotherThreadNeverWaitsNorEndsTheRecord)
{
    EXPECT_EQ(linesAt(5, [](VornLogging& log) {
                  log << setloglevel(1) << "first ";
                  std::thread([&] { log.endrecord(); }).join();
                  log << "second" << endrecord;
              }),
              Lines{"1 Global     [T] first second"});
}

TEST(VornLoggingTest, AccessNeedsAnInstalledLoggerWithALevelThatOthersLeaveInstalled)
{
    VornLogging installed("log", VornLogging::TargetStdout, 5);
    VornLogging::setInstance(installed);
    EXPECT_TRUE(VornLogging::isAccessAllowed());
    { VornLogging other("other", 0, 9); }
    EXPECT_EQ(VornLogging::getInstance(), &installed);
    {
        VornLogging off;
        VornLogging::setInstance(off);
        EXPECT_FALSE(VornLogging::isAccessAllowed());
    }
    EXPECT_EQ(VornLogging::getInstance(), nullptr);
    EXPECT_FALSE(VornLogging::isAccessAllowed());
}

TEST(VornLoggingTest, SetTargetRestartsOnlyOnAChange)
{
    struct Counting : VornLogging {
        Counting() : VornLogging("log", TargetStdout, 1) {}
        void startLogging() override { ++starts; }
        void stopLogging(int newTarget) override { stops.push_back(newTarget); }
        int starts = 0;
        std::vector<int> stops;
    } logger;
    logger.setTarget(VornLogging::TargetStdout);
    EXPECT_EQ(logger.starts, 0);
    EXPECT_TRUE(logger.stops.empty());
    logger.setTarget(3);
    EXPECT_EQ(logger.getTarget(), 3);
    EXPECT_EQ(logger.starts, 1);
    EXPECT_EQ(logger.stops, std::vector<int>{3});
}

namespace {

// Counts the library's SIGUSR1 and SIGUSR2, the signals a thread raises
// itself, and hands each on to the library's handler.
std::atomic<int> g_raised{0};
struct sigaction g_libraryUsr1;
struct sigaction g_libraryUsr2;

void countAndHandOn(int signalNumber)
{
    ++g_raised;
    (signalNumber == SIGUSR1 ? g_libraryUsr1 : g_libraryUsr2).sa_handler(signalNumber);
}

class RaisedSignals {
public:
    RaisedSignals()
    {
        struct sigaction counting {};
        counting.sa_handler = countAndHandOn;
        counting.sa_flags = SA_RESTART;
        sigaction(SIGUSR1, &counting, &g_libraryUsr1);
        sigaction(SIGUSR2, &counting, &g_libraryUsr2);
        g_raised = 0;
    }
    ~RaisedSignals()
    {
        sigaction(SIGUSR1, &g_libraryUsr1, nullptr);
        sigaction(SIGUSR2, &g_libraryUsr2, nullptr);
    }
    int count() const { return g_raised.load(); }
};

}  // namespace

// The quiet timer of each record is due later than the alarm armed for the
// first one, so only the first may ask for an alarm.
TEST(VornLoggingTest, RecordsAfterTheFirstRaiseNoSignal)
{
    VornLogging log("log", 0, 5);
    RaisedSignals raised;
    log << setloglevel(5) << "first " << 1 << " record" << endrecord;
    const int afterFirst = raised.count();
    for (int i = 0; i < 2000; ++i) {
        log << setloglevel("net", 5) << "request " << i << " served" << endrecord;
    }
    // Records in a later second too.
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    for (int i = 0; i < 10; ++i) {
        log << setloglevel(5) << "later " << i << endrecord;
    }
    EXPECT_LE(afterFirst, 1);
    EXPECT_EQ(raised.count(), afterFirst);
}

// The alarm armed for the first record's quiet timer keeps the library's
// thread for at most the timer's period; it finds nothing due and the
// thread ends a second later.
TEST(VornLoggingSlowTest, TheLibrarysThreadEndsWithinAMinuteOfTheLastRecord)
{
    const int threadsBefore = countThreads();
    VornLogging log("log", 0, 5);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        log << setloglevel(5) << "record " << i << endrecord;
    }
    while (countThreads() > threadsBefore && std::chrono::steady_clock::now() - start < std::chrono::seconds(90)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    EXPECT_LE(countThreads(), threadsBefore);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(64));
}
