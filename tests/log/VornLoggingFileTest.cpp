#include <vsupt/VornLogging.h>
#include <vsupt/VornThread.h>

#include <gtest/gtest.h>

#include "support/LibrarySignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
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
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The number the logger will draw for its file name: the generator is set
// to a known seed, the number drawn, and the seed set again.
std::string nextFileNumber(unsigned seed)
{
    std::srand(seed);
    const int number = std::rand();
    std::srand(seed);
    return std::to_string(number);
}

void writeFile(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

std::string opening(const std::string& name)
{
    return "VornLogging: Opening " + name + " for logging...\n";
}

// Each test works in a scratch directory of its own, its current directory.
class VornLoggingFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/vsuptlogXXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
        std::filesystem::current_path(m_dir);
    }

    void TearDown() override
    {
        m_logger.reset();
        std::filesystem::current_path(m_previous);
        std::filesystem::remove_all(m_dir);
    }

    // A logger on a file named base.log, with the generator set to seed and
    // its "Opening" line swallowed. Gives the file's name.
    std::string openQuietly(const std::string& base, unsigned seed, int level)
    {
        const std::string name = base + nextFileNumber(seed) + ".log";
        testing::internal::CaptureStderr();
        m_logger = std::make_unique<VornLogging>(base + ".log", VornLogging::TargetFile, level);
        testing::internal::GetCapturedStderr();
        return name;
    }

    const std::filesystem::path m_previous = std::filesystem::current_path();
    std::string m_dir;
    std::unique_ptr<VornLogging> m_logger;
};

class VornLoggingQuietTimerSlowTest : public VornLoggingFileTest {};
class VornLoggingStressTest : public VornLoggingFileTest {};

}  // namespace

TEST_F(VornLoggingFileTest, TheFileNameReplacesTheLastExtensionByANumberAndLog)
{
    const struct {
        const char* given;
        const char* base;
    } rows[] = {
        {"app.cfg", "app"},
        {"x.log", "x"},
        {"service", "service"},
        {"./service", ""},       // the last dot may be that of the directory
        {"\"app.cfg\"", "app"},  // a leading quote goes, a closing one with the extension
        {"\"app\"", "app\""},
    };
    unsigned seed = 11;
    for (const auto& row : rows) {
        const std::string name = row.base + nextFileNumber(++seed) + ".log";
        testing::internal::CaptureStderr();
        { VornLogging logger(row.given, VornLogging::TargetFile, 5); }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(name)) << row.given;
        EXPECT_TRUE(std::filesystem::exists(name)) << row.given;
    }
    testing::internal::CaptureStderr();
    { VornLogging logger("app.cfg", VornLogging::TargetStdout, 5); }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "no file without the file bit";
}

TEST_F(VornLoggingFileTest, AFileThatCannotBeOpenedIsToldOnStderrAndStdoutStillGetsRecords)
{
    const std::string name = "missing/app" + nextFileNumber(17) + ".log";
    testing::internal::CaptureStderr();
    VornLogging logger("missing/app", 3, 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              opening(name) + "VornLogging: Cannot open log file " + name + " (2)\n");
    testing::internal::CaptureStdout();
    logger << setloglevel(5) << "still here" << endrecord;
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("] still here\n"), std::string::npos) << out;
}

TEST_F(VornLoggingFileTest, SetTargetClosesAndOpensTheFileWithTheFileBit)
{
    std::srand(19);
    std::rand();
    const std::string second = "app" + std::to_string(std::rand()) + ".log";
    const std::string first = openQuietly("app", 19, 5);
    testing::internal::CaptureStdout();
    *m_logger << setloglevel(5) << "to the file" << endrecord;
    m_logger->setTarget(VornLogging::TargetStdout);
    *m_logger << setloglevel(5) << "stdout only" << endrecord;
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.find("to the file"), std::string::npos) << out;
    const std::string text = readFile(first);
    EXPECT_EQ(text.substr(text.find("] ")), "] to the file\n") << text;

    testing::internal::CaptureStderr();
    m_logger->setTarget(3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), opening(second));
    testing::internal::CaptureStderr();
    m_logger->setTarget(VornLogging::TargetFile);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Rotation by copy and truncate cuts the file under the logger: the next
// record goes to its new end, with no hole of NUL bytes before it.
TEST_F(VornLoggingFileTest, RecordsGoToTheEndOfAFileCutUnderTheLogger)
{
    const std::string name = openQuietly("cut", 25, 5);
    for (int i = 0; i < 50; ++i) {
        *m_logger << setloglevel(5) << "before the cut " << i << endrecord;
    }
    std::filesystem::resize_file(name, 0);
    *m_logger << setloglevel(5) << "after the cut" << endrecord;
    const std::string text = readFile(name);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\0'), 0);
    EXPECT_EQ(text.substr(text.find("] ")), "] after the cut\n") << text;
}

// Rotation by renaming: the logger opens its path again, without cutting
// what is there, also after the process changed its directory.
TEST_F(VornLoggingFileTest, ReopenLogFileAppendsToTheSamePathAgain)
{
    const std::string name = openQuietly("rotated", 27, 5);
    *m_logger << setloglevel(5) << "first" << endrecord;
    std::filesystem::rename(name, "rotated.1");
    writeFile(name, "made by the rotation\n");
    std::filesystem::current_path("/");
    ASSERT_TRUE(m_logger->reopenLogFile());
    *m_logger << setloglevel(5) << "second" << endrecord;
    std::filesystem::current_path(m_dir);

    const std::string rotated = readFile("rotated.1");
    EXPECT_EQ(rotated.substr(rotated.find("] ")), "] first\n");
    const std::string text = readFile(name);
    EXPECT_EQ(text.substr(0, 21), "made by the rotation\n");
    EXPECT_EQ(text.substr(text.find("] ")), "] second\n") << text;

    m_logger->setTarget(VornLogging::TargetStdout);
    EXPECT_FALSE(m_logger->reopenLogFile()) << "no file target";
}

// The file name leads to /dev/full until it is replaced and reopened;
// standard output is /dev/full for two records.
TEST_F(VornLoggingFileTest, ATargetThatStopsTakingRecordsIsToldOnceAndItsRecoveryOnce)
{
    const std::string name = "full" + nextFileNumber(29) + ".log";
    const std::string path = m_dir + "/" + name;
    std::filesystem::create_symlink("/dev/full", name);
    std::srand(29);
    testing::internal::CaptureStderr();
    VornLogging logger("full", VornLogging::TargetFile, 5);
    for (int i = 0; i < 3; ++i) {
        logger << setloglevel(5) << "lost " << i << endrecord;
    }
    std::filesystem::remove(name);
    ASSERT_TRUE(logger.reopenLogFile());
    logger << setloglevel(5) << "kept" << endrecord;
    logger << setloglevel(5) << "kept too" << endrecord;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              opening(name) + "VornLogging: Cannot write to log file " + path + " (28)\n" +
                  "VornLogging: Writing to log file " + path + " again (records lost: 3)\n");

    logger.setTarget(VornLogging::TargetStdout);
    std::fflush(stdout);
    const int savedStdout = dup(STDOUT_FILENO);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    dup2(full, STDOUT_FILENO);
    testing::internal::CaptureStderr();
    logger << setloglevel(5) << "lost" << endrecord;
    logger << setloglevel(5) << "lost" << endrecord;
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);
    close(full);
    testing::internal::CaptureStdout();
    logger << setloglevel(5) << "shown" << endrecord;
    const std::string shown = testing::internal::GetCapturedStdout();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "VornLogging: Cannot write to stdout (28)\nVornLogging: Writing to stdout again (records lost: 2)\n");
    EXPECT_EQ(shown.substr(shown.find("] ")), "] shown\n");
}

// The quiet timer runs for a minute before it finishes a record whose
// writer was cancelled; the test's thread sleeps meanwhile.
TEST_F(VornLoggingQuietTimerSlowTest, ARecordLeftOpenByAKilledWriterIsFinishedAfterAMinute)
{
    const std::string name = openQuietly("quiet", 21, 9);
    VornLogging::setInstance(*m_logger);

    static std::atomic<bool> inRecord{false};
    // The record is opened in a frame of its own: the body that is killed
    // has nothing to destroy.
    struct Writer : VornThread {
        static __attribute__((noinline)) void openRecord(VornLogging& log) { log << setloglevel(9) << "left " << "open"; }
        int run() override
        {
            openRecord(*VornLogging::getInstance());
            inRecord = true;
            for (;;) {
            }
        }
    } writer;
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
    while (text.find("timerElapsed") == std::string::npos && std::chrono::steady_clock::now() < start + std::chrono::seconds(90)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        text = readFile(name);
    }
    std::istringstream lines(text);
    std::string open, elapsed;
    std::getline(lines, open);
    std::getline(lines, elapsed);
    EXPECT_EQ(open.substr(17, 15), " 9 Global     [") << text;
    EXPECT_EQ(open.substr(open.find("] ")), "] left open") << text;
    EXPECT_EQ(elapsed.substr(elapsed.find("] ")),
              "] VornLogging::timerElapsed: called (NOTE: This message only appears and repeats when LogLevel = 9)")
        << text;
}

// A live writer keeps a record open past the timer's period: the timer
// fires once meanwhile and its line waits for the record. Once no record is
// open, the timer's next expiry writes nothing.
TEST_F(VornLoggingQuietTimerSlowTest, TheTimerFiresOnlyWhileARecordIsOpen)
{
    const std::string name = openQuietly("open", 25, 9);
    VornLogging::setInstance(*m_logger);
    const auto texts = [&name] {
        std::istringstream lines(readFile(name));
        std::vector<std::string> found;
        for (std::string line; std::getline(lines, line);) {
            found.push_back(line.substr(line.find("] ") + 2));
        }
        return found;
    };
    const std::string elapsed =
        "VornLogging::timerElapsed: called (NOTE: This message only appears and repeats when LogLevel = 9)";
    const auto start = std::chrono::steady_clock::now();
    *m_logger << setloglevel(9) << "short" << endrecord;
    std::this_thread::sleep_until(start + std::chrono::seconds(5));
    std::thread writer([&] {
        *m_logger << setloglevel(9) << "long ";
        std::this_thread::sleep_until(start + std::chrono::seconds(72));
        *m_logger << "record" << endrecord;
    });
    std::this_thread::sleep_until(start + std::chrono::seconds(69));
    EXPECT_EQ(texts(), std::vector<std::string>{"short"});
    writer.join();
    std::this_thread::sleep_until(start + std::chrono::seconds(133));
    EXPECT_EQ(texts(), (std::vector<std::string>{"short", "long record", elapsed}));
}

// Writers block the library's signals: the SIGUSR1 that each record's quiet
// timer raises is handled by the test's main thread, idle in its joins.
TEST_F(VornLoggingStressTest, ManyWritersOfSeveralItemsNeverMixTheirRecords)
{
    const std::string name = openQuietly("stress", 23, 9);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(18);
    std::atomic<long> written{0};
    std::vector<std::thread> writers;
    for (int w = 0; w < 6; ++w) {
        writers.emplace_back([&, w] {
            blockLibrarySignals();
            for (long i = 0; std::chrono::steady_clock::now() < end; ++i, ++written) {
                *m_logger << setloglevel(1) << "w" << w << " a" << i << " b" << i << " c" << i << " d" << i << endrecord;
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    std::ifstream in(name);
    long lines = 0, mixed = 0;
    for (std::string line; std::getline(in, line); ++lines) {
        const std::string text = line.substr(line.find("] ") + 2);
        long a = -1, b = -2, c = -3, d = -4;
        int w = -1, used = 0;
        std::sscanf(text.c_str(), "w%d a%ld b%ld c%ld d%ld%n", &w, &a, &b, &c, &d, &used);
        mixed += a == b && b == c && c == d && used == static_cast<int>(text.size()) ? 0 : 1;
    }
    EXPECT_EQ(lines, written);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(written, 1000);
}
