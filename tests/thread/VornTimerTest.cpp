#include <vsupt/VornDependent.h>
#include <vsupt/VornException.h>
#include <vsupt/VornTimer.h>
#include <vsupt/VornTimerManager.h>

#include <gtest/gtest.h>

#include "support/ThreadCount.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <condition_variable>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using Clock = std::chrono::steady_clock;
using TimeInterval = VornTimer::TimeInterval;

// ---------------------------------------------------------------------------
// TimeInterval

TEST(VornTimeIntervalTest, SetMovesWholeSecondsOutOfTheMillisecondsTruncating)
{
    const TimeInterval interval(0, 2500);
    EXPECT_EQ(interval.m_seconds, 2);
    EXPECT_EQ(interval.m_milliseconds, 500);
    const TimeInterval negative(1, -1500);
    EXPECT_EQ(negative.m_seconds, 0);
    EXPECT_EQ(negative.m_milliseconds, -500);
}

TEST(VornTimeIntervalTest, ComparisonsLookAtTheSecondsAndAtEqualSecondsAtTheLeftSideAlone)
{
    const TimeInterval early(1000000, 900);
    const TimeInterval late(1000001, 0);
    EXPECT_TRUE(early < late);
    EXPECT_FALSE(late < early);
    EXPECT_TRUE(early <= late);

    // Moments in the same second: each is before the other, and never equal.
    const TimeInterval a(1000000, 100);
    const TimeInterval b(1000000, 800);
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(b < a);
    EXPECT_TRUE(a <= b);
    EXPECT_TRUE(b <= a);
    EXPECT_FALSE(a == a);

    // Small values show the left side read against itself.
    EXPECT_TRUE(TimeInterval(5, 5) == TimeInterval(5, 999));
    EXPECT_FALSE(TimeInterval(5, 5) < TimeInterval(5, 999));
    EXPECT_TRUE(TimeInterval(3, 1) < TimeInterval(3, 7));
    EXPECT_FALSE(TimeInterval(3, 7) < TimeInterval(3, 1));
    EXPECT_FALSE(TimeInterval(3, 7) <= TimeInterval(3, 1));
}

// ---------------------------------------------------------------------------
// Timers. The test's own thread sleeps while timers fire.

namespace {

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Notes every expiry of the timers that tell it, with the timer's label.
class ExpiryRecorder {
public:
    void note(const std::string& label)
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        m_times.push_back(secondsSince(m_start));
        m_labels.push_back(label);
        m_changed.notify_all();
    }

    // Sleeps until count expiries have come or seconds have passed.
    bool waitFor(std::size_t count, double seconds)
    {
        std::unique_lock<std::mutex> hold(m_mutex);
        return m_changed.wait_for(hold, std::chrono::duration<double>(seconds),
                                  [&] { return m_times.size() >= count; });
    }

    void idle(double seconds) { waitFor(static_cast<std::size_t>(-1), seconds); }

    std::vector<double> times()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_times;
    }

    std::vector<std::string> labels()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_labels;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_start = Clock::now();
    std::vector<double> m_times;
    std::vector<std::string> m_labels;
};

// A timer that tells a recorder once its event has been set.
class RecordedTimer : public VornTimer {
public:
    RecordedTimer(ExpiryRecorder& recorder, long milliseconds, bool oneShot, const std::string& label = "timer")
        : VornTimer(milliseconds, oneShot), m_recorder(recorder), m_label(label)
    {
    }
    ~RecordedTimer() override { stop(); }

    void set() override
    {
        VornTimer::set();
        m_recorder.note(m_label);
    }

private:
    ExpiryRecorder& m_recorder;
    std::string m_label;
};

}  // namespace

TEST(VornTimerTest, ATimerDoesNothingUntilStarted)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, false);
    recorder.idle(2.5);
    EXPECT_TRUE(recorder.times().empty());
}

TEST(VornTimerTest, AnIntervalBelowOneSecondFiresAlmostAtOnce)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 0, true);
    timer.start(200, true);
    ASSERT_TRUE(recorder.waitFor(1, 5));
    EXPECT_LT(recorder.times()[0], 0.5);
}

TEST(VornTimerTest, FifteenHundredMillisecondsFireAfterAboutOneSecond)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 0, true);
    timer.start(1500, true);
    ASSERT_TRUE(recorder.waitFor(1, 5));
    EXPECT_GT(recorder.times()[0], 0.9);
    EXPECT_LT(recorder.times()[0], 1.45);
}

TEST(VornTimerTest, AOneShotTimerFiresOnce)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, true);
    timer.reset();
    recorder.idle(3.5);
    EXPECT_EQ(recorder.times().size(), 1u);
}

TEST(VornTimerTest, ARepeatingTimerFiresEverySecondWithoutMakingUpForLostTime)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, false);
    timer.reset();
    recorder.idle(4.6);
    timer.stop();
    const std::vector<double> times = recorder.times();
    ASSERT_GE(times.size(), 3u);
    EXPECT_LE(times.size(), 5u);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GT(times[i] - times[i - 1], 0.5) << "expiry " << i;
    }
}

TEST(VornTimerTest, OfTwoTimersDueInTheSameSecondTheOneStartedLastFiresFirst)
{
    ExpiryRecorder recorder;
    RecordedTimer first(recorder, 0, true, "first");
    RecordedTimer second(recorder, 0, true, "second");
    std::time_t before;
    do {
        before = std::time(nullptr);
        first.start(2000, true);
        second.start(2000, true);
    } while (std::time(nullptr) != before);
    ASSERT_TRUE(recorder.waitFor(2, 6));
    EXPECT_EQ(recorder.labels(), (std::vector<std::string>{"second", "first"}));
}

TEST(VornTimerTest, StartWithNoPositiveIntervalStopsTheTimerAndKeepsTheValues)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, false);
    timer.reset();
    timer.start(0, true);
    EXPECT_TRUE(timer.isOneShot());
    timer.start(0, 0, false);
    EXPECT_FALSE(timer.isOneShot());
    recorder.idle(2.5);
    EXPECT_TRUE(recorder.times().empty());
}

TEST(VornTimerTest, ResetMovesTheExpiryToNowPlusTheInterval)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 3000, true);
    timer.reset();
    recorder.idle(2.0);
    timer.reset();
    ASSERT_TRUE(recorder.waitFor(1, 6));
    EXPECT_GT(recorder.times()[0], 3.9);
}

TEST(VornTimerTest, AHandlerMayStopItsOwnTimer)
{
    struct Stopper : VornDependent {
        void handleNotification(VornCollaborator&, const VornNotification&) override
        {
            ++expiries;
            timer->stop();
        }
        VornTimer* timer = nullptr;
        std::atomic<int> expiries{0};
    };
    ExpiryRecorder recorder;
    Stopper stopper;
    RecordedTimer timer(recorder, 1000, false);
    stopper.timer = &timer;
    timer.addDependent(stopper);
    timer.reset();
    recorder.idle(3.5);
    EXPECT_EQ(stopper.expiries, 1);
    timer.removeDependent(stopper);
}

TEST(VornTimerTest, StoppingATimerThatIsNotRunningDoesNothing)
{
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, false);
    timer.stop();
    timer.stop();
    recorder.idle(1.5);
    EXPECT_TRUE(recorder.times().empty());
}

// The test's thread changes the list without pause while ten timers fire:
// some changes find a timer due, and leave it to a timer thread.
TEST(VornTimerTest, HandlersRunOnTimerThreadsNeverOnAThreadThatChangesTheList)
{
    struct ThreadNoting : VornTimer {
        ThreadNoting(pthread_t changer, std::atomic<int>& fired, std::atomic<int>& onChanger)
            : m_changer(changer), m_fired(fired), m_onChanger(onChanger)
        {
        }
        ~ThreadNoting() override { stop(); }
        void set() override
        {
            ++m_fired;
            m_onChanger += pthread_equal(pthread_self(), m_changer) ? 1 : 0;
        }
        pthread_t m_changer;
        std::atomic<int>& m_fired;
        std::atomic<int>& m_onChanger;
    };
    std::atomic<int> fired{0};
    std::atomic<int> onChanger{0};
    std::vector<std::unique_ptr<ThreadNoting>> timers;
    for (int i = 0; i < 10; ++i) {
        timers.push_back(std::make_unique<ThreadNoting>(pthread_self(), fired, onChanger));
        timers.back()->start(1000, false);
    }
    VornTimer changed;
    const auto start = Clock::now();
    while (secondsSince(start) < 3.5) {
        changed.start(5000, false);
        changed.stop();
    }
    for (auto& timer : timers) {
        timer->stop();
    }
    EXPECT_GE(fired.load(), 20);
    EXPECT_EQ(onChanger.load(), 0);
}

// Nothing is queued or armed once a one-shot timer has fired: the library's
// thread lingers for a second and ends.
TEST(VornTimerTest, TheLibrarysThreadEndsSoonAfterTheLastExpiry)
{
    const int threadsBefore = countThreads();
    ExpiryRecorder recorder;
    RecordedTimer timer(recorder, 1000, true);
    timer.reset();
    ASSERT_TRUE(recorder.waitFor(1, 5));
    const auto fired = Clock::now();
    while (countThreads() > threadsBefore && secondsSince(fired) < 10) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_LE(countThreads(), threadsBefore);
    EXPECT_LT(secondsSince(fired), 4.0);
}

TEST(VornTimerManagerTest, AfterTheManagerIsDeletedTimersDoNothingAndGetInstanceThrows)
{
    EXPECT_EXIT(
        {
            VornTimer timer(1000, false);
            timer.reset();
            VornTimerManager::deleteInstance();
            timer.stop();
            timer.start(1000, false);
            try {
                VornTimerManager::getInstance();
            } catch (const VornException& e) {
                std::exit(e.getText() == "VornTimerManager::getInstance: Exiting system" && e.getCode() == 0 ? 3
                                                                                                              : 4);
            }
            std::exit(5);
        },
        testing::ExitedWithCode(3), "");
}
