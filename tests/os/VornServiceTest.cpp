#include <vsupt/VornService.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

using namespace VornSupport;
using namespace std::chrono_literals;

namespace {

class RecordingService : public VornService {
public:
    explicit RecordingService(bool startResult, std::chrono::seconds startDelay = 0s)
        : VornService("zero", "recorder", "two", "three", true), m_bStartResult(startResult), m_startDelay(startDelay)
    {
    }

    bool serviceStart(const std::string&) override
    {
        ++m_starts;
        std::this_thread::sleep_for(m_startDelay);
        return m_bStartResult;
    }

    bool serviceStop() override { return ++m_stops > 0; }

    void markStopped() { m_state = Stopped; }

    const bool m_bStartResult;
    const std::chrono::seconds m_startDelay;
    std::atomic<int> m_starts{0};
    std::atomic<int> m_stops{0};
};

}  // namespace

TEST(VornServiceTest, ForegroundServiceRunsUntilStoppedAndIgnoresASecondStart)
{
    RecordingService service(true);
    bool secondStart = false;
    std::thread stopper([&] {
        while (service.state() != VornService::Running) {
            std::this_thread::sleep_for(5ms);
        }
        secondStart = service.start("again", false);
        service.stop();
    });
    EXPECT_TRUE(service.start("first", false));
    stopper.join();
    EXPECT_TRUE(secondStart);
    EXPECT_EQ(1, service.m_starts);
    EXPECT_EQ(1, service.m_stops);
    EXPECT_EQ(VornService::Stopped, service.state());
}

TEST(VornServiceTest, FailedForegroundStartReturnsFalseWithoutStopping)
{
    RecordingService service(false);
    EXPECT_FALSE(service.start("", false));
    EXPECT_EQ(0, service.m_stops);
    EXPECT_EQ(VornService::Stopped, service.state());
}

// The handler remembers the first signal for the life of the process, so
// the test runs in a child of its own. The service made last is stopped.
TEST(VornServiceDeathTest, ControlHandlerStopsOnlyAtTheFirstTerminationSignal)
{
    EXPECT_EXIT(
        {
            RecordingService service(false);
            ControlHandler(SIGHUP);
            const bool otherIgnored = service.state() == VornService::Stopped;
            ControlHandler(SIGTERM);
            const bool stopped = service.state() == VornService::StopRequested;
            service.markStopped();
            ControlHandler(SIGINT);
            _exit(otherIgnored && stopped && service.state() == VornService::Stopped ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

// The daemon's child reports its failed start after 62 seconds, to a
// parent that left after 60.
TEST(VornServiceSlowTest, ParentGivesUpAfterSixtySecondsWithMinusThree)
{
    const pid_t parent = fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        RecordingService(false, 62s).start("", true);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(parent, waitpid(parent, &status, 0));
    EXPECT_EQ(253, WEXITSTATUS(status));
}
