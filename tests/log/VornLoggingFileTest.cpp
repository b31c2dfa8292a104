#include <vsupt/VornLogging.h>
#include <vsupt/VornThread.h>

#include <gtest/gtest.h>

#include "support/LibrarySignals.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

// The number the logger will draw for its file name: the generator is set
// to a known seed, the number drawn, and the seed set again.
int nextFileNumber(unsigned seed)
{
    std::srand(seed);
    const int number = std::rand();
    std::srand(seed);
    return number;
}

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string opening(const std::string& name)
{
    return "VornLogging: Opening " + name + " for logging...\n";
}

class VornLoggingFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/vsuptlogXXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }

    void TearDown() override
    {
        const std::string command = "rm -rf " + m_dir;
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

    // A logger on a file named after base in the test's directory, with the
    // generator set to seed; the "Opening" line is swallowed. Gives the
    // file's name.
    std::string openQuietly(std::unique_ptr<VornLogging>& logger, const std::string& base, unsigned seed, int level)
    {
        const std::string name = m_dir + "/" + base + std::to_string(nextFileNumber(seed)) + ".log";
        testing::internal::CaptureStderr();
        logger = std::make_unique<VornLogging>(m_dir + "/" + base, VornLogging::TargetFile, level);
        testing::internal::GetCapturedStderr();
        return name;
    }

    std::string m_dir;
};

class VornLoggingQuietTimerSlowTest : public VornLoggingFileTest {};
class VornLoggingStressTest : public VornLoggingFileTest {};

}  // namespace

TEST_F(VornLoggingFileTest, ATargetWithoutTheFileBitOpensNoFile)
{
    testing::internal::CaptureStderr();
    VornLogging logger(m_dir + "/app.cfg", VornLogging::TargetStdout, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VornLoggingFileTest, TheFileNameReplacesTheExtensionByANumberAndLog)
{
    const int number = nextFileNumber(11);
    const std::string name = m_dir + "/app" + std::to_string(number) + ".log";
    testing::internal::CaptureStderr();
    {
        VornLogging logger(m_dir + "/app.cfg", 3, 5);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(name));
    }
    EXPECT_TRUE(exists(name));

    const int again = nextFileNumber(12);
    testing::internal::CaptureStderr();
    VornLogging sameExtension(m_dir + "/x.log", VornLogging::TargetFile, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(m_dir + "/x" + std::to_string(again) + ".log"));
}

TEST_F(VornLoggingFileTest, ANameWithoutExtensionGetsTheNumberAppended)
{
    const int number = nextFileNumber(13);
    testing::internal::CaptureStderr();
    VornLogging logger(m_dir + "/service", VornLogging::TargetFile, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(m_dir + "/service" + std::to_string(number) + ".log"));
}

TEST_F(VornLoggingFileTest, TheLastDotMayBeThatOfTheDirectory)
{
    char previous[4096];
    ASSERT_NE(getcwd(previous, sizeof previous), nullptr);
    ASSERT_EQ(chdir(m_dir.c_str()), 0);
    const int number = nextFileNumber(14);
    testing::internal::CaptureStderr();
    {
        VornLogging logger("./service", VornLogging::TargetFile, 5);
    }
    const std::string said = testing::internal::GetCapturedStderr();
    const bool created = exists(std::to_string(number) + ".log");
    ASSERT_EQ(chdir(previous), 0);
    EXPECT_EQ(said, opening(std::to_string(number) + ".log"));
    EXPECT_TRUE(created);
}

TEST_F(VornLoggingFileTest, ALeadingQuoteGoesAndAClosingOneLeavesWithTheExtension)
{
    const int number = nextFileNumber(15);
    testing::internal::CaptureStderr();
    {
        VornLogging quoted("\"" + m_dir + "/app.cfg\"", VornLogging::TargetFile, 5);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(m_dir + "/app" + std::to_string(number) + ".log"));

    const int next = nextFileNumber(16);
    testing::internal::CaptureStderr();
    VornLogging noExtension("\"" + m_dir + "/app\"", VornLogging::TargetFile, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(m_dir + "/app\"" + std::to_string(next) + ".log"));
}

TEST_F(VornLoggingFileTest, AFileThatCannotBeOpenedIsToldOnStderrAndStdoutStillGetsRecords)
{
    const int number = nextFileNumber(17);
    const std::string name = m_dir + "/missing/app" + std::to_string(number) + ".log";
    testing::internal::CaptureStderr();
    VornLogging logger(m_dir + "/missing/app", 3, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              opening(name) + "VornLogging: Cannot open log file " + name + " (2)\n");
    testing::internal::CaptureStdout();
    logger << setloglevel(5) << "still here" << endrecord;
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("] still here\n"), std::string::npos) << out;
}

TEST_F(VornLoggingFileTest, RecordsForTheFileBitGoToTheFile)
{
    std::unique_ptr<VornLogging> logger;
    const std::string name = openQuietly(logger, "app", 18, 5);
    testing::internal::CaptureStdout();
    *logger << setloglevel(5) << "to the file" << endrecord;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    const std::string text = readFile(name);
    EXPECT_TRUE(endsWith(text, "] to the file\n")) << text;
}

TEST_F(VornLoggingFileTest, SetTargetClosesAndOpensTheFileWithTheBit)
{
    std::srand(19);
    const int first = std::rand();
    const int second = std::rand();
    std::srand(19);
    const std::string firstName = m_dir + "/app" + std::to_string(first) + ".log";
    testing::internal::CaptureStderr();
    VornLogging logger(m_dir + "/app", 3, 5);
    testing::internal::GetCapturedStderr();

    testing::internal::CaptureStdout();
    logger.setTarget(VornLogging::TargetStdout);
    logger << setloglevel(5) << "stdout only" << endrecord;
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(readFile(firstName), "");

    testing::internal::CaptureStderr();
    logger.setTarget(3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(m_dir + "/app" + std::to_string(second) + ".log"));

    testing::internal::CaptureStderr();
    logger.setTarget(VornLogging::TargetFile);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The quiet timer runs for a minute before it finishes a record whose
// writer was cancelled; the test's thread sleeps meanwhile.
TEST_F(VornLoggingQuietTimerSlowTest, ARecordLeftOpenByAKilledWriterIsFinishedAfterAMinute)
{
    std::unique_ptr<VornLogging> opened;
    const std::string name = openQuietly(opened, "quiet", 21, 9);
    VornLogging& logger = *opened;
    VornLogging::setInstance(logger);

    static std::atomic<bool> inRecord{false};
    // The record is opened in a frame of its own: the body that is killed
    // has nothing to destroy.
    struct Writer : VornThread {
        explicit Writer(VornLogging& log) : logger(log) {}
        static __attribute__((noinline)) void openRecord(VornLogging& log)
        {
            log << setloglevel(9) << "left " << "open";
        }
        int run() override
        {
            openRecord(logger);
            inRecord = true;
            for (;;) {
            }
        }
        VornLogging& logger;
    } writer(logger);
    const auto start = std::chrono::steady_clock::now();
    writer.start();
    while (!inRecord) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    writer.setMarkForKill();
    writer.kill();

    std::this_thread::sleep_until(start + std::chrono::seconds(50));
    EXPECT_EQ(readFile(name), "");
    std::string text;
    while (text.find("timerElapsed") == std::string::npos &&
           std::chrono::steady_clock::now() < start + std::chrono::seconds(90)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        text = readFile(name);
    }
    const auto firstLineEnd = text.find('\n');
    ASSERT_NE(firstLineEnd, std::string::npos) << text;
    const std::string firstLine = text.substr(0, firstLineEnd + 1);
    EXPECT_NE(firstLine.find(" 9 Global     ["), std::string::npos) << text;
    EXPECT_TRUE(endsWith(firstLine, "] left open\n")) << text;
    EXPECT_TRUE(endsWith(text, "] VornLogging::timerElapsed: called (NOTE: This message only appears and repeats when "
                               "LogLevel = 9)\n"))
        << text;
}

// Writers block the library's signals: the SIGUSR1 that each record's quiet
// timer raises is handled by the test's main thread, idle in its joins.
TEST_F(VornLoggingStressTest, ManyWritersOfSeveralItemsNeverMixTheirRecords)
{
    std::unique_ptr<VornLogging> opened;
    const std::string name = openQuietly(opened, "stress", 23, 9);
    VornLogging& logger = *opened;

    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(18);
    std::atomic<long> written{0};
    std::vector<std::thread> writers;
    for (int w = 0; w < 6; ++w) {
        writers.emplace_back([&, w] {
            blockLibrarySignals();
            for (long i = 0; std::chrono::steady_clock::now() < end; ++i) {
                logger << setloglevel(1) << "w" << w << " a" << i << " b" << i << " c" << i << " d" << i << endrecord;
                ++written;
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    std::ifstream in(name);
    std::string line;
    long lines = 0;
    long mixed = 0;
    while (std::getline(in, line)) {
        ++lines;
        const auto bracket = line.find("] ");
        long a = -1, b = -2, c = -3, d = -4;
        int w = -1, used = 0;
        const std::string text = bracket == std::string::npos ? line : line.substr(bracket + 2);
        std::sscanf(text.c_str(), "w%d a%ld b%ld c%ld d%ld%n", &w, &a, &b, &c, &d, &used);
        if (!(a == b && b == c && c == d && used == static_cast<int>(text.size()))) {
            ++mixed;
        }
    }
    EXPECT_EQ(lines, written);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(written, 1000);
}
