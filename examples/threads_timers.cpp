// Threads and timers: worker threads summing ranges, and a repeating one-second timer whose expiries reach a
// dependent on the library's timer thread. Leave SIGUSR1, SIGUSR2 and
// SIGALRM to the library.
#include <vsupt/VornDependent.h>
#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <atomic>
#include <cstdio>
#include <unistd.h>

using namespace VornSupport;

namespace {

class Summer : public VornThread {
public:
    Summer(long from, long to) : VornThread("Summer"), m_from(from), m_to(to) {}
    ~Summer() override { waitForThreadExit(); }

    int run() override
    {
        for (long i = m_from; i < m_to; ++i) {
            m_sum += i;
        }
        return 0;
    }

    long m_from, m_to;
    long long m_sum = 0;
};

class Ticks : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override { ++m_count; }
    std::atomic<int> m_count{0};
};

}  // namespace

int main()
{
    Summer low(0, 500000), high(500000, 1000000);
    low.start();
    high.start();
    low.waitForThreadExit();
    high.waitForThreadExit();
    std::printf("both workers done with exit codes %d and %d: sum %lld\n", low.getExitCode(), high.getExitCode(),
                low.m_sum + high.m_sum);

    Ticks ticks;
    VornTimer timer;
    timer.addDependent(ticks);
    timer.start(1, 0, false);
    // Sleeping keeps this thread idle while the timer fires on its own thread; a loaded machine may
    // deliver the third expiry late, so the wait allows ten seconds for three.
    for (int i = 0; i < 100 && ticks.m_count < 3; ++i) {
        usleep(100000);
    }
    timer.stop();
    timer.removeDependent(ticks);
    std::printf("repeating timer fired %s3 times\n", ticks.m_count >= 3 ? "" : "fewer than ");
    return low.m_sum + high.m_sum == 499999500000LL && ticks.m_count >= 3 ? 0 : 1;
}
