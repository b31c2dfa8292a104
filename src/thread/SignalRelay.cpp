#include "thread/SignalRelay.h"

#include <pthread.h>
#include <semaphore.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <ctime>

namespace VornSupport {

namespace {

static_assert(ATOMIC_INT_LOCK_FREE == 2, "a signal handler may only touch lock-free atomics");

constexpr long kLingerNanoseconds = 1000000000L;

struct Performer {
    void (*run)() = nullptr;
    bool everyPost = false;
};

// All of it is constant-initialised, so that a handler finds it in place
// whatever the order of the library's static constructors.
Performer g_performers[SignalRelay::WorkKinds];
std::atomic<unsigned> g_posted[SignalRelay::WorkKinds];
sem_t g_wakeUp;
bool g_initialised = false;

pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t g_performing = PTHREAD_MUTEX_INITIALIZER;
pthread_t g_thread;
bool g_hasThread = false;  // started and not yet joined
bool g_running = false;    // started and not yet decided to end
bool g_closed = false;
bool g_quit = false;
int g_holds = 0;

class MutexGuard {
public:
    explicit MutexGuard(pthread_mutex_t& mutex = g_mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    ~MutexGuard() { pthread_mutex_unlock(&m_mutex); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

bool anythingPosted()
{
    for (const std::atomic<unsigned>& posted : g_posted) {
        if (posted.load() != 0) {
            return true;
        }
    }
    return false;
}

void performPostedWork()
{
    for (int work = 0; work < SignalRelay::WorkKinds; ++work) {
        unsigned posts = g_posted[work].exchange(0);
        MutexGuard performing(g_performing);
        const Performer& performer = g_performers[work];
        if (posts == 0 || performer.run == nullptr) {
            continue;
        }
        if (!performer.everyPost) {
            posts = 1;
        }
        while (posts-- > 0) {
            performer.run();
        }
    }
}

// False when a second passed without a post.
bool waitForPost()
{
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += kLingerNanoseconds / 1000000000L;
    for (;;) {
        if (sem_clockwait(&g_wakeUp, CLOCK_MONOTONIC, &deadline) == 0) {
            return true;
        }
        if (errno != EINTR) {
            return false;
        }
    }
}

bool decideToEnd(bool idle)
{
    MutexGuard guard;
    if (g_quit || (idle && g_holds == 0 && !anythingPosted())) {
        g_running = false;
        return true;
    }
    return false;
}

// The relay takes every signal, like a thread the client made itself, and
// its timer threads inherit that.
void* relayMain(void*)
{
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    for (;;) {
        const bool idle = !waitForPost();
        performPostedWork();
        if (decideToEnd(idle)) {
            return nullptr;
        }
    }
}

// With g_mutex held. A relay that has decided to end holds nothing, so
// joining it here is short.
void startIfNotRunning()
{
    if (g_running || g_closed) {
        return;
    }
    if (g_hasThread) {
        pthread_join(g_thread, nullptr);
        g_hasThread = false;
    }
    if (pthread_create(&g_thread, nullptr, relayMain, nullptr) == 0) {
        g_hasThread = true;
        g_running = true;
    }
}

// The fork handlers keep the relay's state mutex consistent in the child,
// which has no relay and must start its own. The performing mutex is not
// waited for before a fork, since the forking thread may hold a lock the
// performer needs; the child, which has no relay, makes it anew.
void lockBeforeFork()
{
    pthread_mutex_lock(&g_mutex);
}

void unlockInParent()
{
    pthread_mutex_unlock(&g_mutex);
}

void forgetRelayInChild()
{
    g_hasThread = false;
    g_running = false;
    sem_init(&g_wakeUp, 0, 0);
    pthread_mutex_init(&g_performing, nullptr);
    pthread_mutex_unlock(&g_mutex);
}

void initialiseOnce()
{
    if (g_initialised) {
        return;
    }
    g_initialised = true;
    sem_init(&g_wakeUp, 0, 0);
    pthread_atfork(lockBeforeFork, unlockInParent, forgetRelayInChild);
}

}  // namespace

void SignalRelay::setPerformer(Work work, void (*performer)(), bool everyPost)
{
    initialiseOnce();
    g_performers[work].run = performer;
    g_performers[work].everyPost = everyPost;
}

void SignalRelay::withdraw(Work work)
{
    MutexGuard performing(g_performing);
    g_performers[work].run = nullptr;
}

void SignalRelay::post(Work work)
{
    const int savedErrno = errno;
    g_posted[work].fetch_add(1);
    sem_post(&g_wakeUp);
    errno = savedErrno;
}

void SignalRelay::hold()
{
    MutexGuard guard;
    ++g_holds;
    startIfNotRunning();
}

void SignalRelay::release(int holds)
{
    MutexGuard guard;
    g_holds -= holds;
}

void SignalRelay::shutDown()
{
    bool join;
    {
        MutexGuard guard;
        g_closed = true;
        g_quit = true;
        join = g_hasThread;
        g_hasThread = false;
    }
    sem_post(&g_wakeUp);
    if (join) {
        pthread_join(g_thread, nullptr);
    }
}

}  // namespace VornSupport
