#include "support/LogRecords.h"

#include <vsupt/VornEventTimerThread.h>
#include <vsupt/VornTimer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using Records = std::vector<std::string>;

namespace {

// Notes the thread of each timerExpired in a list of the test's.
struct Ticker : VornEventTimerThread {
    Ticker(VornTimer& timer, std::vector<unsigned long>& threads) : VornEventTimerThread("Ticker", timer), threads(threads) {}
    void timerExpired() override
    {
        threads.push_back(getCurrentThreadId());
        ++count;
    }
    std::vector<unsigned long>& threads;
    std::atomic<std::size_t> count{0};
};

// The destructor's own records, without those of the timer.
Records destroy(Ticker* ticker)
{
    const std::string own = "VornEventTimerThread::~VornEventTimerThread: ";
    Records texts;
    for (const std::string& text : log_records::recordsAt(9, [&] { delete ticker; })) {
        if (text.rfind(own, 0) == 0) {
            texts.push_back(text.substr(own.size()));
        }
    }
    return texts;
}

}  // namespace

// The test's own thread sleeps while the timer fires, and destroys the
// object just after an expiry, so that the destructor finds it asleep. A
// thread never started is destroyed without waiting.
TEST(VornEventTimerThreadTest, EachExpiryRunsOnTheThreadItselfUntilTheObjectGoes)
{
    VornTimer timer;
    std::vector<unsigned long> threads;
    EXPECT_EQ(destroy(new Ticker(timer, threads)), (Records{"entering", "exiting"}));

    auto* ticker = new Ticker(timer, threads);
    ticker->start();
    timer.start(1, 0, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(2200));
    for (const std::size_t seen = ticker->count; ticker->count == seen;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::size_t expiries = ticker->count;
    EXPECT_EQ(destroy(ticker), (Records{"entering", "setting exit event", "waiting for thread to exit", "exiting"}));
    timer.stop();

    EXPECT_EQ(threads.size(), expiries) << "the destructor's wake-up is no expiry";
    EXPECT_TRUE(expiries >= 2 && expiries <= 4) << expiries;
    EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), long(expiries))
        << "every expiry on the same thread, not on the timer's";
    EXPECT_NE(threads.front(), VornThread::getCurrentThreadId());
}
