#include "support/LogRecords.h"

#include <vsupt/VornEventTimerThread.h>
#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using log_records::recordsAt;

namespace {

// Where each run of timerExpired came from; it outlives the threads.
class Expiries {
public:
    void add(unsigned long thread)
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        m_threads.push_back(thread);
    }

    std::vector<unsigned long> threads()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_threads;
    }

private:
    std::mutex m_mutex;
    std::vector<unsigned long> m_threads;
};

class Ticker : public VornEventTimerThread {
public:
    Ticker(VornTimer& timer, Expiries& expiries) : VornEventTimerThread("Ticker", timer), m_expiries(expiries) {}

    void timerExpired() override { m_expiries.add(getCurrentThreadId()); }

private:
    Expiries& m_expiries;
};

std::vector<std::string> destructorRecords(const std::vector<std::string>& records)
{
    std::vector<std::string> own;
    std::copy_if(records.begin(), records.end(), std::back_inserter(own), [](const std::string& text) {
        return text.rfind("VornEventTimerThread::", 0) == 0;
    });
    return own;
}

const std::string destructor = "VornEventTimerThread::~VornEventTimerThread: ";

}  // namespace

TEST(VornEventTimerThreadTest, AThreadNeverStartedIsDestroyedWithoutWaiting)
{
    VornTimer timer;
    Expiries expiries;
    auto* ticker = new Ticker(timer, expiries);
    EXPECT_EQ(destructorRecords(recordsAt(9, [&] { delete ticker; })),
              (std::vector<std::string>{destructor + "entering", destructor + "exiting"}));
}

// The test's own thread sleeps while the timer fires, and destroys the
// object just after an expiry, so that the destructor finds the thread
// asleep.
TEST(VornEventTimerThreadTest, EachExpiryRunsOnTheThreadItselfUntilTheObjectGoes)
{
    VornTimer timer;
    Expiries expiries;
    auto* ticker = new Ticker(timer, expiries);
    ticker->start();
    timer.start(1, 0, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(2200));
    const std::size_t seen = expiries.threads().size();
    while (expiries.threads().size() == seen) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::vector<unsigned long> threads = expiries.threads();
    const auto records = recordsAt(9, [&] { delete ticker; });
    timer.stop();

    EXPECT_GE(threads.size(), 2u);
    EXPECT_LE(threads.size(), 4u);
    EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), long(threads.size()))
        << "every expiry on the same thread, not on the timer's";
    EXPECT_NE(threads.front(), VornThread::getCurrentThreadId());
    EXPECT_EQ(expiries.threads().size(), threads.size()) << "the destructor's wake-up is no expiry";
    EXPECT_EQ(destructorRecords(records),
              (std::vector<std::string>{destructor + "entering", destructor + "setting exit event",
                                        destructor + "waiting for thread to exit", destructor + "exiting"}));
}
