// The demo program started as a daemon of its own, seen from outside: the
// exit status of its parent, its log file, and its stop by SIGTERM.
#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <signal.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;

namespace {

bool running(pid_t pid)
{
    if (kill(pid, 0) != 0) {
        return false;
    }
    // Ended, but not yet reaped by whoever adopted it.
    std::istringstream stat(readFile("/proc/" + std::to_string(pid) + "/stat"));
    std::string field;
    stat >> field >> field >> field;
    return field != "Z";
}

template <class Condition>
bool within(std::chrono::seconds limit, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

// "YYYYMMDD_HH:MM:SS 5 category   [thread] text": # a digit, ? any
// character.
bool hasRecordPrefix(const std::string& line)
{
    const std::string shape = "########_##:##:## 5 ?????????? [";
    if (line.size() < shape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const bool fits = shape[i] == '#' ? std::isdigit(static_cast<unsigned char>(line[i])) != 0
                                          : shape[i] == '?' || shape[i] == line[i];
        if (!fits) {
            return false;
        }
    }
    std::size_t i = shape.size() + (line[shape.size()] == '-' ? 1 : 0);
    const std::size_t digits = i;
    while (i < line.size() && std::isdigit(static_cast<unsigned char>(line[i])) != 0) {
        ++i;
    }
    return i > digits && line.compare(i, 2, "] ") == 0 && line.size() > i + 2;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Starts the demo as a daemon from a scratch directory, which gets its log
// file and its process id file; a daemon still running at the end is
// killed.
class DemoDaemonTest : public testing::Test {
protected:
    ~DemoDaemonTest() override
    {
        if (m_pid > 0 && running(m_pid)) {
            kill(m_pid, SIGKILL);
        }
    }

    int startDemo(const std::string& pidFile)
    {
        const std::string command = std::string(VSUPT_DEMO_FILE) + " -config " + VSUPT_DEMO_CONFIG + " -pidfile " + pidFile;
        char* previous = getcwd(nullptr, 0);
        EXPECT_EQ(0, chdir(scratch.path().c_str()));
        int status = -1;
        EXPECT_TRUE(VornExecuteProgram(command, true, nullptr, &status));
        EXPECT_EQ(0, chdir(previous));
        free(previous);
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
    ASSERT_TRUE(within(std::chrono::seconds(10), [&] { return log().find("heartbeat 2") != std::string::npos; }));

    ASSERT_EQ(0, kill(m_pid, SIGTERM));
    kill(m_pid, SIGTERM);
    ASSERT_TRUE(within(std::chrono::seconds(10), [&] { return !running(m_pid); }));

    int stops = 0;
    for (const std::string& line : linesOf(log())) {
        EXPECT_TRUE(hasRecordPrefix(line)) << line;
        stops += line.find("demo stopped after") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(1, stops);
    EXPECT_NE(std::string::npos, log().find(" service    ["));
    EXPECT_NE(std::string::npos, log().find("] main returns"));
    EXPECT_FALSE(exists(scratch / "demo.pid"));
}

TEST_F(DemoDaemonTest, FailedServiceStartGivesStatusOne)
{
    const std::string pidFile = scratch / "missing/demo.pid";
    EXPECT_EQ(1, startDemo(pidFile));
    EXPECT_NE(std::string::npos, log().find("demo: cannot write " + pidFile));
}
