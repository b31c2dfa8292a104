// The demo program started as a daemon of its own, seen from outside: the
// exit status of its parent, its log file, and its stop by SIGTERM.
#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <thread>

using namespace VornSupport;

namespace {

// Ended and reaped, or ended and not yet reaped by whoever adopted it.
bool gone(pid_t pid)
{
    return kill(pid, 0) != 0 || readFile("/proc/" + std::to_string(pid) + "/stat").find(") Z ") != std::string::npos;
}

template <class Condition>
bool withinTenSeconds(Condition condition)
{
    for (int tries = 0; tries < 200 && !condition(); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return condition();
}

// "YYYYMMDD_HH:MM:SS 5 category   [thread] text", each field at its place.
bool hasRecordPrefix(const std::string& line)
{
    int end = 0;
    std::sscanf(line.c_str(), "%*8[0-9]_%*2[0-9]:%*2[0-9]:%*2[0-9] 5 %*10c [%*d] %n", &end);
    return end > 0 && line.compare(17, 3, " 5 ") == 0 && line.compare(30, 2, " [") == 0;
}

// Runs the demo from a scratch directory, which gets its log file and its
// process id file; a daemon still running at the end is killed.
class DemoDaemonTest : public testing::Test {
protected:
    ~DemoDaemonTest() override
    {
        if (m_pid > 0 && !gone(m_pid)) {
            kill(m_pid, SIGKILL);
        }
    }

    int startDemo(const std::string& pidFile)
    {
        const std::filesystem::path previous = std::filesystem::current_path();
        std::filesystem::current_path(scratch.path());
        int status = -1;
        EXPECT_TRUE(VornExecuteProgram(std::string(VSUPT_DEMO_FILE) + " -config " + VSUPT_DEMO_CONFIG + " -pidfile " + pidFile,
                                       true, nullptr, &status));
        std::filesystem::current_path(previous);
        return status;
    }

    std::string log() const
    {
        VornFindFile find(scratch / "demo*.log");
        return find.hasMore() ? readFile(find.next()) : std::string();
    }

    ScratchDirectory scratch;
    pid_t m_pid = 0;
};

}  // namespace

TEST_F(DemoDaemonTest, StartsWithStatusZeroLogsHeartbeatsAndStopsOnceAtSigterm)
{
    ASSERT_EQ(0, startDemo(scratch / "demo.pid"));
    m_pid = std::stoi(readFile(scratch / "demo.pid"));
    ASSERT_TRUE(withinTenSeconds([&] { return log().find("heartbeat 2") != std::string::npos; }));

    ASSERT_EQ(0, kill(m_pid, SIGTERM));
    kill(m_pid, SIGTERM);
    ASSERT_TRUE(withinTenSeconds([&] { return gone(m_pid); }));

    std::istringstream lines(log());
    int stops = 0;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(hasRecordPrefix(line)) << line;
        stops += line.find("] demo stopped after") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(1, stops);
    EXPECT_NE(std::string::npos, log().find("] main returns\n"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "demo.pid"));
}

TEST_F(DemoDaemonTest, FailedServiceStartGivesStatusOne)
{
    const std::string pidFile = scratch / "missing/demo.pid";
    EXPECT_EQ(1, startDemo(pidFile));
    EXPECT_NE(std::string::npos, log().find("] demo: cannot write " + pidFile));
}
