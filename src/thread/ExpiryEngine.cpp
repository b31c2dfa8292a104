#include "thread/ExpiryEngine.h"

#include <vsupt/VornException.h>
#include <vsupt/VornTimerManager.h>

#include "thread/KillDeferral.h"
#include "thread/VornTimerThread.h"

#include <semaphore.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <limits>
#include <vector>

namespace VornSupport {

namespace {

static_assert(ATOMIC_INT_LOCK_FREE == 2 && ATOMIC_LLONG_LOCK_FREE == 2,
              "a signal handler may only touch lock-free atomics");

constexpr std::int64_t kNoAlarm = std::numeric_limits<std::int64_t>::max();
constexpr time_t kLingerSeconds = 1;
constexpr int kScanWaitMs = 5000;

// The second by which an alarm or a scan is sure to come: the one the
// interval timer is armed for, or the one a thread asked for on its way to
// raising SIGUSR1. kNoAlarm when neither. It may be later than the truth,
// which costs a needless SIGUSR1, never earlier.
std::atomic<std::int64_t> g_alarmBy{kNoAlarm};
// Counts the alarms armed and the scans started, so that the arming job
// sees whether the manager did either.
std::atomic<unsigned> g_armedOrScanned{0};
// Timer threads made and not yet gone (ScanHold).
std::atomic<unsigned> g_scansUnderWay{0};

// The state of the engine thread, under g_stateMutex. Everything here is
// constant-initialised or built before the library's start-up object, so
// that handlers and the stop sequence find it in place.
pthread_mutex_t g_stateMutex = PTHREAD_MUTEX_INITIALIZER;
pthread_t g_thread;
bool g_hasThread = false;  // started and not yet joined
bool g_running = false;    // started and not yet decided to end
bool g_closed = false;     // the stop sequence has joined it for good
// Threads that have deleted their object and wait to be joined.
std::vector<pthread_t> g_vExitThreads __attribute__((init_priority(101)));

sem_t g_wakeUp;
bool g_initialised = false;
ExpiryEngine::Job* g_pJobs = nullptr;
pthread_mutex_t g_jobMutex = PTHREAD_MUTEX_INITIALIZER;

class MutexHold {
public:
    explicit MutexHold(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    ~MutexHold() { pthread_mutex_unlock(&m_mutex); }
    MutexHold(const MutexHold&) = delete;
    MutexHold& operator=(const MutexHold&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

void startEngineIfNotRunning();

void raiseInProcess(int signalNumber)
{
    kill(getpid(), signalNumber);
}

}  // namespace

// ---------------------------------------------------------------------------
// Step 1: a change to the list asks for an earlier alarm.

// The engine runs before the signal is raised, and g_alarmBy keeps it
// running until the arming job has been done.
void ExpiryEngine::wantAlarmBy(std::int64_t expirySecond)
{
    std::int64_t alarmBy = g_alarmBy.load();
    do {
        if (expirySecond >= alarmBy) {
            return;
        }
    } while (!g_alarmBy.compare_exchange_weak(alarmBy, expirySecond));
    withKillsDeferred([] {
        {
            MutexHold state(g_stateMutex);
            startEngineIfNotRunning();
        }
        raiseInProcess(SIGUSR1);
    });
}

// ---------------------------------------------------------------------------
// Steps 2, 4 and 7: the handlers only post their job.

namespace {

void armForFirstExpiry();
void startScan();
void joinEndedThreads();

ExpiryEngine::Job g_armJob(armForFirstExpiry, false);
ExpiryEngine::Job g_alarmJob(startScan, true);
ExpiryEngine::Job g_joinJob(joinEndedThreads, false);

void armingHandler(int)
{
    g_armJob.post();
}

void alarmHandler(int)
{
    g_alarmJob.post();
}

void reapingHandler(int)
{
    g_joinJob.post();
}

// As signal() installs: the handler stays and interrupted calls restart.
void installHandler(int signalNumber, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void ExpiryEngine::Job::post()
{
    const int savedErrno = errno;
    m_posted.fetch_add(1);
    sem_post(&g_wakeUp);
    errno = savedErrno;
}

unsigned ExpiryEngine::Job::takeRuns()
{
    const unsigned posts = m_posted.exchange(0);
    return m_bEveryPost || posts == 0 ? posts : 1;
}

// ---------------------------------------------------------------------------
// Step 3: the engine thread arms the interval timer.

namespace {

// reset(true) arms for the first timer, or starts a scan if that is due,
// and each of them notes what it did. If it did neither, the list has
// emptied since the alarm was asked for, or a scan is under way, whose end
// may have found this request and relied on it: the alarm is armed for the
// second asked for all the same, or a scan started if that second has
// come. It finds nothing due, and meanwhile the changes that would have
// asked for it again (a record's quiet timer, started and stopped) cost
// nothing. A thread that asked for an earlier alarm meanwhile has raised
// SIGUSR1 again, and the job runs once more.
void armForFirstExpiry()
{
    const std::int64_t askedFor = g_alarmBy.load();
    const unsigned done = g_armedOrScanned.load();
    VornTimerManager* manager;
    try {
        manager = VornTimerManager::getInstance();
    } catch (const VornException&) {
        return;  // The manager is gone: there is nothing left to arm for.
    }
    manager->reset(true);
    if (g_armedOrScanned.load() != done || askedFor == kNoAlarm) {
        return;
    }
    const std::int64_t distance = askedFor - static_cast<std::int64_t>(std::time(nullptr));
    if (distance > 0) {
        ExpiryEngine::armIntervalTimer(VornTimer::TimeInterval(static_cast<long>(distance), 0), askedFor);
    } else {
        ExpiryEngine::startTimerThread(*manager);
    }
}

}  // namespace

// The milliseconds go into the microseconds field as they are: a remainder
// only makes the signal come sooner, and the expiry test counts whole
// seconds anyway.
void ExpiryEngine::armIntervalTimer(const VornTimer::TimeInterval& distance, std::int64_t expirySecond)
{
    itimerval value{};
    value.it_value.tv_sec = static_cast<time_t>(distance.m_seconds);
    value.it_value.tv_usec = static_cast<suseconds_t>(distance.m_milliseconds);
    if (setitimer(ITIMER_REAL, &value, nullptr) == 0) {
        g_alarmBy.store(expirySecond);
        ++g_armedOrScanned;
    }
}

// ---------------------------------------------------------------------------
// Step 5: each SIGALRM starts a timer thread.

namespace {

void startScan()
{
    try {
        ExpiryEngine::startTimerThread(*VornTimerManager::getInstance());
    } catch (const VornException&) {
        // The manager is gone: there is nothing left to scan.
    }
}

}  // namespace

// No alarm is armed any more, or none is needed: the scan asks for the
// next one when it ends.
void ExpiryEngine::startTimerThread(VornTimerManager& manager)
{
    g_alarmBy.store(kNoAlarm);
    ++g_armedOrScanned;
    VornTimerThread* thread = new VornTimerThread(manager);
    thread->setMarkForDeath();
    thread->start();
}

ExpiryEngine::ScanHold::ScanHold()
{
    ++g_scansUnderWay;
}

ExpiryEngine::ScanHold::~ScanHold()
{
    --g_scansUnderWay;
}

// ---------------------------------------------------------------------------
// Step 7: a thread that deleted itself is joined.

// The thread has nothing left to do but return, so the join is short. The
// engine runs before SIGUSR2 is raised, and the list keeps it running until
// the join.
void ExpiryEngine::announceEnd(pthread_t thread)
{
    withKillsDeferred([thread] {
        {
            MutexHold state(g_stateMutex);
            g_vExitThreads.push_back(thread);
            startEngineIfNotRunning();
        }
        raiseInProcess(SIGUSR2);
    });
}

namespace {

void joinEndedThreads()
{
    std::vector<pthread_t> ended;
    {
        MutexHold state(g_stateMutex);
        ended.swap(g_vExitThreads);
    }
    for (pthread_t thread : ended) {
        pthread_join(thread, nullptr);
    }
}

}  // namespace

// ---------------------------------------------------------------------------
// The engine thread: it performs what the handlers posted, and ends once it
// has nothing to wait for.

namespace {

void performPostedJobs()
{
    for (ExpiryEngine::Job* job = g_pJobs; job != nullptr; job = job->next()) {
        for (unsigned runs = job->takeRuns(); runs > 0; --runs) {
            MutexHold performing(g_jobMutex);
            job->run();
        }
    }
}

bool anythingPosted()
{
    for (const ExpiryEngine::Job* job = g_pJobs; job != nullptr; job = job->next()) {
        if (job->isPosted()) {
            return true;
        }
    }
    return false;
}

enum class NextStep { Wait, Linger, End };

// With g_stateMutex held. Only the engine thread itself forgets an alarm or
// an ended thread, so while it waits for either, no time limit is needed.
NextStep nextStep(bool lingeredInVain)
{
    if (g_closed) {
        g_running = false;
        return NextStep::End;
    }
    if (g_alarmBy.load() != kNoAlarm || !g_vExitThreads.empty() || anythingPosted()) {
        return NextStep::Wait;
    }
    if (lingeredInVain) {
        g_running = false;
        return NextStep::End;
    }
    return NextStep::Linger;
}

// False when the linger passed without a post.
bool waitForPost(NextStep step)
{
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += kLingerSeconds;
    for (;;) {
        const int result = step == NextStep::Wait ? sem_wait(&g_wakeUp)
                                                  : sem_clockwait(&g_wakeUp, CLOCK_MONOTONIC, &deadline);
        if (result == 0) {
            return true;
        }
        if (errno != EINTR) {
            return false;
        }
    }
}

// The engine takes every signal, like a thread the client made itself.
void* engineMain(void*)
{
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    NextStep step = NextStep::Linger;
    for (;;) {
        const bool posted = waitForPost(step);
        performPostedJobs();
        MutexHold state(g_stateMutex);
        step = nextStep(step == NextStep::Linger && !posted);
        if (step == NextStep::End) {
            return nullptr;
        }
    }
}

// With g_stateMutex held, and kills held back. An engine that has decided
// to end holds nothing, so joining it here is short.
void startEngineIfNotRunning()
{
    if (g_running || g_closed) {
        return;
    }
    if (g_hasThread) {
        const KillsOff whileJoining;
        pthread_join(g_thread, nullptr);
        g_hasThread = false;
    }
    if (pthread_create(&g_thread, nullptr, engineMain, nullptr) == 0) {
        g_hasThread = true;
        g_running = true;
    }
}

// ---------------------------------------------------------------------------
// Start and stop, and fork.

// The child has none of the parent's other threads, and no interval timer:
// it starts its own engine when it first needs one. The job mutex is not
// taken before a fork, since the forking thread may hold a lock a job
// needs; the child makes it anew.
void lockBeforeFork()
{
    pthread_mutex_lock(&g_stateMutex);
}

void unlockInParent()
{
    pthread_mutex_unlock(&g_stateMutex);
}

void forgetEngineInChild()
{
    g_hasThread = false;
    g_running = false;
    g_vExitThreads.clear();
    g_alarmBy.store(kNoAlarm);
    g_scansUnderWay.store(0);
    sem_init(&g_wakeUp, 0, 0);
    pthread_mutex_init(&g_jobMutex, nullptr);
    pthread_mutex_unlock(&g_stateMutex);
}

void initialiseOnce()
{
    if (g_initialised) {
        return;
    }
    g_initialised = true;
    sem_init(&g_wakeUp, 0, 0);
    pthread_atfork(lockBeforeFork, unlockInParent, forgetEngineInChild);
}

}  // namespace

void ExpiryEngine::enlist(Job& job)
{
    initialiseOnce();
    MutexHold performing(g_jobMutex);
    job.m_pNext = g_pJobs;
    g_pJobs = &job;
}

void ExpiryEngine::withdraw(Job& job)
{
    MutexHold performing(g_jobMutex);
    job.m_bWithdrawn = true;
}

void ExpiryEngine::installReaper()
{
    enlist(g_joinJob);
    installHandler(SIGUSR2, reapingHandler);
}

void ExpiryEngine::installAlarm()
{
    enlist(g_armJob);
    enlist(g_alarmJob);
    installHandler(SIGALRM, alarmHandler);
    installHandler(SIGUSR1, armingHandler);
}

// No timer thread starts once the jobs are withdrawn; one that has started
// may still be scanning the manager's list, or about to. A timer thread
// whose start failed keeps its hold for good, so the wait is bounded.
void ExpiryEngine::withdrawAlarm()
{
    withdraw(g_armJob);
    withdraw(g_alarmJob);
    for (int waited = 0; g_scansUnderWay.load() != 0 && waited < kScanWaitMs; ++waited) {
        usleep(1000);
    }
}

void ExpiryEngine::shutDown()
{
    bool join;
    {
        MutexHold state(g_stateMutex);
        g_closed = true;
        join = g_hasThread;
        g_hasThread = false;
    }
    sem_post(&g_wakeUp);
    if (join) {
        pthread_join(g_thread, nullptr);
    }
}

}  // namespace VornSupport
