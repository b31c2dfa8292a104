#include <vsupt/VornService.h>
#include <vsupt/VornServiceControl.h>
#include <vsupt/VornServiceControlException.h>

#include <gtest/gtest.h>

#include "OsTesting.h"
#include "support/Watchdog.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

using namespace VornSupport;
using namespace std::chrono_literals;

namespace {

struct RecordingService : VornService {
    explicit RecordingService(bool result, std::chrono::seconds delay = 0s)
        : VornService("zero", "recorder", "two", "three", true), result(result), delay(delay)
    {
    }
    bool serviceStart(const std::string&) override
    {
        ++starts;
        std::this_thread::sleep_for(delay);
        return result;
    }
    bool serviceStop() override { return ++stops > 0; }
    void markStopped() { m_state = Stopped; }

    const bool result;
    const std::chrono::seconds delay;
    std::atomic<int> starts{0}, stops{0};
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
    EXPECT_EQ(1, service.starts);
    EXPECT_EQ(1, service.stops);
    EXPECT_EQ(VornService::Stopped, service.state());

    RecordingService failing(false);
    EXPECT_FALSE(failing.start("", false));
    EXPECT_EQ(0, failing.stops) << "a failed start is not stopped";
    EXPECT_EQ(VornService::Stopped, failing.state());
}

// The event keeps no signalled state; the stop is not lost all the same.
TEST(VornServiceTest, AStopThatComesWhileTheServiceStartsEndsItOnceItRuns)
{
    struct StoppedAtOnce : RecordingService {
        StoppedAtOnce() : RecordingService(true) {}
        bool serviceStart(const std::string& argument) override
        {
            stop();
            return RecordingService::serviceStart(argument);
        }
    };
    const Watchdog watchdog(60s, "VornServiceTest: a stop during serviceStart was lost\n");
    StoppedAtOnce service;
    EXPECT_TRUE(service.start("", false));
    EXPECT_EQ(1, service.stops);
}

// A service manager's socket under an abstract name, as NOTIFY_SOCKET
// names it with a leading "@".
TEST(VornServiceTest, AServiceManagerHearsOfTheStartAndTheStop)
{
    const NotifySocket manager("@vsupt-notify-" + std::to_string(getpid()));
    ASSERT_TRUE(manager.bound());
    setenv("NOTIFY_SOCKET", manager.name().c_str(), 1);
    RecordingService service(true);
    std::string ready;
    std::thread stopper([&] {
        ready = manager.receive();
        service.stop();
    });
    EXPECT_TRUE(service.start("", false));
    stopper.join();
    unsetenv("NOTIFY_SOCKET");
    EXPECT_EQ(ready, "READY=1\nMAINPID=" + std::to_string(getpid()));
    EXPECT_EQ(manager.receive(), "STOPPING=1");
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

TEST(VornServiceControlTest, EveryOperationThrowsNinetyNine)
{
    std::unique_ptr<VornServiceControl> control(VornServiceControl::CreateVornServiceControl(""));
    try {
        control->IsServiceInstalled();
        FAIL() << "answered";
    } catch (VornServiceControlException& error) {
        EXPECT_EQ(99, error.m_nError);
        EXPECT_EQ(0, error.m_nDetail);
    }
    EXPECT_THROW(control->StartService(), VornServiceControlException);
    EXPECT_THROW(control->StopService(), VornServiceControlException);
    EXPECT_THROW(control->RestartService(), VornServiceControlException);
    EXPECT_THROW(control->GetServiceStatus(), VornServiceControlException);
    EXPECT_THROW(control->GetServiceStartType(), VornServiceControlException);
    EXPECT_THROW(control->SetServiceStartType(2), VornServiceControlException);
}
