#include <vsupt/VornService.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

using namespace VornSupport;

namespace {

// Starts well or not; a good start sends a thread that, once the service
// runs, tries a second start and then stops the service.
class RecordingService : public VornService {
public:
    explicit RecordingService(bool startsWell) : VornService("zero", "recorder", "two", "three", true), m_bStartsWell(startsWell) {}
    ~RecordingService() override
    {
        if (m_stopper.joinable()) {
            m_stopper.join();
        }
    }

    bool serviceStart(const std::string& argument) override
    {
        ++m_starts;
        m_argument = argument;
        if (m_bStartsWell) {
            m_stopper = std::thread([this] {
                while (state() != Running) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
                }
                m_bSecondStart = start("again", false);
                stop();
            });
        }
        return m_bStartsWell;
    }

    bool serviceStop() override
    {
        ++m_stops;
        return true;
    }

    void markStopped() { m_state = Stopped; }

    const bool m_bStartsWell;
    std::thread m_stopper;
    std::atomic<int> m_starts{0};
    std::atomic<int> m_stops{0};
    std::atomic<bool> m_bSecondStart{false};
    std::string m_argument;
};

}  // namespace

TEST(VornServiceTest, ForegroundServiceRunsUntilStoppedAndIgnoresASecondStart)
{
    RecordingService service(true);
    EXPECT_TRUE(service.start("first", false));
    service.m_stopper.join();
    EXPECT_TRUE(service.m_bSecondStart);
    EXPECT_EQ(1, service.m_starts);
    EXPECT_EQ("first", service.m_argument);
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

TEST(VornServiceTest, LastConstructedServiceStaysTheServiceAfterItIsGone)
{
    VornService* last = nullptr;
    {
        RecordingService service(false);
        last = &service;
        EXPECT_EQ("recorder", service.serviceName());
        EXPECT_TRUE(service.install());
        EXPECT_FALSE(service.remove());
    }
    EXPECT_EQ(last, VornService::getService());
}

TEST(VornServiceTest, ControlHandlerStopsOnlyAtTheFirstTerminationSignal)
{
    RecordingService service(false);
    ControlHandler(SIGHUP);
    ControlHandler(SIGQUIT);
    EXPECT_EQ(VornService::Stopped, service.state());
    ControlHandler(SIGTERM);
    EXPECT_EQ(VornService::StopRequested, service.state());
    service.markStopped();
    ControlHandler(SIGINT);
    ControlHandler(SIGTERM);
    EXPECT_EQ(VornService::Stopped, service.state());
}

namespace {

// Takes longer to start than the parent waits, then reports a failure to
// a parent that is gone.
class SlowService : public VornService {
public:
    bool serviceStart(const std::string&) override
    {
        std::this_thread::sleep_for(std::chrono::seconds(62));
        return false;
    }
    bool serviceStop() override { return true; }
};

}  // namespace

TEST(VornServiceSlowTest, ParentGivesUpAfterSixtySecondsWithMinusThree)
{
    const pid_t parent = fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        SlowService service;
        service.start("", true);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(parent, waitpid(parent, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(253, WEXITSTATUS(status));
}
