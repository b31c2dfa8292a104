// Records under load for a minute each: timers whose handlers write records
// beside threads that write their own, and writers killed in the middle of
// their records and locks. A hang fails through a watchdog.
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <gtest/gtest.h>

#include "support/KillableBodies.h"
#include "support/Watchdog.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

const auto kRunTime = std::chrono::seconds(60);
const auto kHangLimit = std::chrono::seconds(200);

// "<kind><id> a<n> b<n> c<n> d<n>": a line is whole when it is exactly that.
void writeNumbered(VornLogging& log, char kind, int id, long n)
{
    log << setloglevel(1) << kind << id << " a" << n << " b" << n << " c" << n << " d" << n << endrecord;
}

bool isWhole(const std::string& line)
{
    const auto start = line.find("] ");
    if (start == std::string::npos) {
        return false;
    }
    const std::string text = line.substr(start + 2);
    char kind = 0;
    int id = -1, used = 0;
    long a = -1, b = -2, c = -3, d = -4;
    std::sscanf(text.c_str(), "%c%d a%ld b%ld c%ld d%ld%n", &kind, &id, &a, &b, &c, &d, &used);
    return (kind == 't' || kind == 'w') && a == b && b == c && c == d && used == static_cast<int>(text.size());
}

class RecordingTimer : public VornTimer {
public:
    RecordingTimer(VornLogging& log, int id) : m_log(log), m_id(id) {}
    ~RecordingTimer() override { stop(); }

    void set() override
    {
        VornTimer::set();
        writeNumbered(m_log, 't', m_id, ++m_expiries);
    }

    long expiries() const { return m_expiries.load(); }

private:
    VornLogging& m_log;
    int m_id;
    std::atomic<long> m_expiries{0};
};

class ScratchDirectory {
public:
    ScratchDirectory()
    {
        char pattern[] = "/tmp/vsuptstressXXXXXX";
        m_dir = mkdtemp(pattern);
        std::filesystem::current_path(m_dir);
    }
    ~ScratchDirectory()
    {
        std::filesystem::current_path(m_previous);
        std::filesystem::remove_all(m_dir);
    }

private:
    const std::filesystem::path m_previous = std::filesystem::current_path();
    std::string m_dir;
};

}  // namespace

TEST(RecordsUnderTimersStressTest, TimerHandlersAndWritersNeitherDeadlockNorMixTheirLines)
{
    Watchdog watchdog(kHangLimit, "records under timers hung\n");
    ScratchDirectory scratch;
    std::srand(31);
    const std::string name = "records" + std::to_string(std::rand()) + ".log";
    std::srand(31);
    // At level 9 every item is taken even when another thread's endrecord
    // has put the record's level back to 9 between its setloglevel and its
    // first item.
    testing::internal::CaptureStderr();
    VornLogging log("records", VornLogging::TargetFile, 9);
    testing::internal::GetCapturedStderr();

    std::vector<std::unique_ptr<RecordingTimer>> timers;
    for (int id = 0; id < 20; ++id) {
        timers.push_back(std::make_unique<RecordingTimer>(log, id));
        timers.back()->start(1000, false);
    }
    std::atomic<bool> stop{false};
    std::atomic<long> written{0};
    std::vector<std::thread> writers;
    for (int id = 0; id < 4; ++id) {
        writers.emplace_back([&, id] {
            for (long n = 1; !stop; ++n, ++written) {
                writeNumbered(log, 'w', id, n);
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            }
        });
    }
    std::this_thread::sleep_for(kRunTime);
    stop = true;
    for (auto& writer : writers) {
        writer.join();
    }
    long expiries = 0;
    for (auto& timer : timers) {
        timer->stop();
        expiries += timer->expiries();
    }

    std::ifstream in(name);
    long lines = 0, mixed = 0;
    for (std::string line; std::getline(in, line); ++lines) {
        mixed += isWhole(line) ? 0 : 1;
    }
    EXPECT_EQ(mixed, 0);
    EXPECT_EQ(lines, written + expiries);
    EXPECT_GT(expiries, 20 * 40);
}

namespace {

// The bodies that are killed keep nothing to destroy in their frames, and
// write their records item by item, with no temporaries.
VornCriticalSectionObject g_sections[3];
std::atomic<bool> g_writersStop{false};

__attribute__((noinline)) void writeItems(VornLogging& log, unsigned n)
{
    log.setCurrentLevel(1);
    log << "k" << n << " x" << n;
    log << endrecord;
}

// A record written between locks taken at random depths.
void lockAndWrite(VornLogging& log, unsigned random)
{
    lockLevels(g_sections[0], random % 3);
    lockLevels(g_sections[1], (random / 3) % 3);
    writeItems(log, random);
    lockLevels(g_sections[2], (random / 9) % 3);
    unlockLevels(g_sections[2], (random / 9) % 3);
    unlockLevels(g_sections[1], (random / 3) % 3);
    unlockLevels(g_sections[0], random % 3);
}

class LockingWriter : public VornThread {
public:
    LockingWriter(VornLogging& log, std::atomic<long>& rounds) : m_log(log), m_rounds(rounds) {}
    int run() override
    {
        VornLogging& log = m_log;
        std::atomic<long>& rounds = m_rounds;
        unsigned random = static_cast<unsigned>(pthread_self()) | 1u;
        while (!g_writersStop) {
            random = nextRandom(random);
            lockAndWrite(log, random);
            ++rounds;
        }
        return 0;
    }

private:
    VornLogging& m_log;
    std::atomic<long>& m_rounds;
};

// stdout goes to /dev/null for the while, so that the records are real
// writes, where a kill may act, without filling a disk.
class StdoutToNull {
public:
    StdoutToNull()
    {
        std::fflush(stdout);
        m_saved = dup(STDOUT_FILENO);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        close(null);
    }
    ~StdoutToNull()
    {
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }

private:
    int m_saved;
};

}  // namespace

TEST(KilledWritersStressTest, WritersKilledEveryFiftyMillisecondsLeaveEveryLockFree)
{
    Watchdog watchdog(kHangLimit, "killed writers hung\n");
    VornLogging log("killed", VornLogging::TargetStdout, 5);
    std::atomic<long> contenderRounds{0};
    std::atomic<long> victimRounds{0};
    long kills = 0;
    {
        StdoutToNull toNull;
        std::vector<std::unique_ptr<LockingWriter>> contenders;
        for (int i = 0; i < 2; ++i) {
            contenders.push_back(std::make_unique<LockingWriter>(log, contenderRounds));
            contenders.back()->start();
        }
        kills = killVictims(
            kRunTime, [&] { return std::make_unique<LockingWriter>(log, victimRounds); },
            [] { return std::chrono::milliseconds(50); }, contenderRounds);
        g_writersStop = true;
        for (auto& contender : contenders) {
            contender->waitForThreadExit();
        }
        // Give the last cancellation time to land.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    ASSERT_NE(kills, -1) << "the contenders stopped";
    expectAllFree(g_sections, 3);
    // The logger's lock is free too: a record from here gets through.
    testing::internal::CaptureStdout();
    log << setloglevel(1) << "after" << endrecord;
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_GE(out.size(), 6u);
    EXPECT_EQ(out.substr(out.size() - 6), "after\n") << out;
    EXPECT_GT(kills, 600);
    EXPECT_GT(victimRounds.load(), 0);
}
