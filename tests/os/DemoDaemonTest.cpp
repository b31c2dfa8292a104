// The demo program started as a daemon of its own, seen from outside as
// service tooling sees it: the exit status of its parent, its process id
// file, its log file, its standard streams, its stop by SIGTERM.
#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
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

// The exit status of a shell command.
int run(const std::string& command)
{
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

const char* const startStopDaemon = "/sbin/start-stop-daemon";

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

    std::string demoCommand(const std::string& pidFile) const
    {
        return std::string(VSUPT_DEMO_FILE) + " -config " + VSUPT_DEMO_CONFIG + " -pidfile " + pidFile;
    }

    pid_t daemonPid() { return m_pid = std::stoi(readFile(scratch / "demo.pid")); }

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

TEST_F(DemoDaemonTest, StartStopDaemonStartsQueriesAndStopsTheDemoByItsProcessIdFile)
{
    if (access(startStopDaemon, X_OK) != 0) {
        GTEST_SKIP() << startStopDaemon << " is not installed";
    }
    const std::string pidFile = scratch / "demo.pid";
    const std::string byPidFile = std::string(startStopDaemon) + " --pidfile " + pidFile;
    const std::string start = byPidFile + " --start --chdir " + scratch.path() + " --exec " + VSUPT_DEMO_FILE +
                              " -- -config " + VSUPT_DEMO_CONFIG + " -pidfile ";
    ASSERT_EQ(0, run(start + pidFile));
    daemonPid();
    struct stat status;
    ASSERT_EQ(0, stat(pidFile.c_str(), &status));
    EXPECT_EQ(0644u, status.st_mode & 07777);
    EXPECT_EQ(0, run(byPidFile + " --status"));
    ASSERT_TRUE(withinTenSeconds([&] { return log().find("heartbeat 1") != std::string::npos; }));

    EXPECT_EQ(0, run(byPidFile + " --stop --retry 10"));
    EXPECT_TRUE(gone(m_pid));
    EXPECT_NE(std::string::npos, log().find("] demo stopped after"));
    EXPECT_NE(std::string::npos, log().find("] main returns\n"));
    EXPECT_EQ(3, run(byPidFile + " --status"));

    EXPECT_EQ(1, run(start + scratch / "missing/demo.pid")) << "the daemon's own start-up status";
}

// A start script that reads the daemon's output waits for every holder of
// the pipe: the daemon lets go of it before its parent leaves.
TEST_F(DemoDaemonTest, ACommandSubstitutionReturnsAtOnceWithNothingRead)
{
    const std::string captured = scratch / "captured";
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(0, run("cd " + scratch.path() + " && timeout -s KILL 30 sh -c 'out=$(" + demoCommand(scratch / "demo.pid") +
                     " 2>/dev/null); printf %s \"$out\" > " + captured + "'"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_EQ("", readFile(captured));
    ASSERT_EQ(0, kill(daemonPid(), SIGTERM));
    EXPECT_TRUE(withinTenSeconds([&] { return gone(m_pid); }));
}

// Rotation by renaming: the log file is moved away, and SIGHUP makes the
// daemon open its name again.
TEST_F(DemoDaemonTest, SighupReopensTheLogFileByItsName)
{
    ASSERT_EQ(0, startDemo(scratch / "demo.pid"));
    daemonPid();
    ASSERT_TRUE(withinTenSeconds([&] { return log().find("heartbeat 1") != std::string::npos; }));
    VornFindFile find(scratch / "demo*.log");
    const std::string name = find.next();
    std::filesystem::rename(name, scratch / "rotated");
    ASSERT_EQ(0, kill(m_pid, SIGHUP));
    ASSERT_TRUE(withinTenSeconds([&] { return readFile(name).find("] log file reopened\n") != std::string::npos; }));
    ASSERT_EQ(0, kill(m_pid, SIGTERM));
    ASSERT_TRUE(withinTenSeconds([&] { return gone(m_pid); }));
    EXPECT_NE(std::string::npos, readFile(name).find("] main returns\n"));
    EXPECT_EQ(std::string::npos, readFile(scratch / "rotated").find("reopened"));
}

// The daemon's child, not its parent, tells the manager that it is ready,
// before the parent leaves.
TEST_F(DemoDaemonTest, AServiceManagerHearsOfTheDaemonsProcessAndItsStop)
{
    const NotifySocket manager(scratch / "notify");
    ASSERT_TRUE(manager.bound());
    setenv("NOTIFY_SOCKET", manager.name().c_str(), 1);
    const int status = startDemo(scratch / "demo.pid");
    unsetenv("NOTIFY_SOCKET");
    ASSERT_EQ(0, status);
    EXPECT_EQ(manager.receive(), "READY=1\nMAINPID=" + std::to_string(daemonPid()));
    ASSERT_EQ(0, kill(m_pid, SIGTERM));
    EXPECT_EQ(manager.receive(), "STOPPING=1");
    EXPECT_TRUE(withinTenSeconds([&] { return gone(m_pid); }));
}
