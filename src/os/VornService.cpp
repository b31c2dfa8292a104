#include <vsupt/VornService.h>
#include <vsupt/VornDependent.h>

#include "log/LibraryLog.h"

#include <fcntl.h>
#include <semaphore.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace VornSupport {

namespace {

// What the parent of a daemon leaves the process with.
constexpr std::int32_t kStarted = 0;
constexpr std::int32_t kStartFailed = 1;
constexpr std::int32_t kNoAnswer = -3;
constexpr std::int32_t kWaitFailed = -4;

constexpr long kAnswerSeconds = 60;
constexpr useconds_t kStopPauseMicroseconds = 10000;

// ---------------------------------------------------------------------------
// Platform calls

void installControlHandler(std::initializer_list<int> signalNumbers)
{
    for (int signalNumber : signalNumbers) {
        signal(signalNumber, ControlHandler);
    }
}

// Waits for the child's status word. A child that ends without writing it
// has not started: that reads as a failed start.
std::int32_t awaitChildStatus(int readEnd)
{
    timeval timeout{kAnswerSeconds, 0};
    int ready;
    do {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(readEnd, &readable);
        // Linux leaves the time not yet waited in timeout, so an interrupted
        // wait goes on with the rest.
        ready = select(FD_SETSIZE, &readable, nullptr, nullptr, &timeout);
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) {
        return kNoAnswer;
    }
    if (ready < 0) {
        return kWaitFailed;
    }
    std::int32_t status = kStartFailed;
    char* into = reinterpret_cast<char*>(&status);
    std::size_t got = 0;
    while (got < sizeof status) {
        const ssize_t count = read(readEnd, into + got, sizeof status - got);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return kStartFailed;
        }
        got += static_cast<std::size_t>(count);
    }
    return status;
}

[[noreturn]] void leaveAsParent(int readEnd)
{
    const std::int32_t status = awaitChildStatus(readEnd);
    close(readEnd);
    _exit(status);
}

void detachFromParent()
{
    setsid();
    if (chdir("/") != 0) {
        // The service runs on in the directory it was started in.
    }
    umask(0);
}

// The child's end of the status pipe; it is closed also when serviceStart
// throws, so that the parent hears of the failed start at once.
class StatusPipeEnd {
public:
    explicit StatusPipeEnd(int descriptor) : m_descriptor(descriptor) {}
    StatusPipeEnd(const StatusPipeEnd&) = delete;
    StatusPipeEnd& operator=(const StatusPipeEnd&) = delete;
    ~StatusPipeEnd() { close(); }

    // In host byte order. A parent that gave up waiting is gone: the write
    // then raises SIGPIPE, which ControlHandler ignores.
    void report(std::int32_t status)
    {
        if (write(m_descriptor, &status, sizeof status) != sizeof status) {
            // Nobody is left to tell.
        }
        close();
    }

private:
    void close()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
            m_descriptor = -1;
        }
    }

    int m_descriptor;
};

// ---------------------------------------------------------------------------
// The service manager

// The socket a service manager names in NOTIFY_SOCKET to hear of the
// service's start and stop: a path, or an abstract name behind "@". It is
// looked up once, when the service starts, so that a message later takes
// socket, sendto and close alone, which are safe anywhere, in a signal
// handler too. Without the variable, or with a form it does not know, it
// sends nothing.
class ServiceManagerSocket {
public:
    void locate()
    {
        m_length = 0;
        const char* name = std::getenv("NOTIFY_SOCKET");
        if (name == nullptr || (name[0] != '/' && name[0] != '@')) {
            return;
        }
        const std::size_t nameLength = std::strlen(name);
        if (nameLength < 2 || nameLength >= sizeof m_address.sun_path) {
            return;
        }
        m_address = sockaddr_un{};
        m_address.sun_family = AF_UNIX;
        std::memcpy(m_address.sun_path, name, nameLength);
        if (name[0] == '@') {
            m_address.sun_path[0] = '\0';
        }
        m_length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + nameLength + (name[0] == '/' ? 1 : 0));
    }

    // One datagram; a manager that is not listening misses it.
    void tell(const char* message) const
    {
        if (m_length == 0) {
            return;
        }
        const int savedErrno = errno;
        const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (descriptor >= 0) {
            sendto(descriptor, message, std::strlen(message), MSG_NOSIGNAL,
                   reinterpret_cast<const sockaddr*>(&m_address), m_length);
            close(descriptor);
        }
        errno = savedErrno;
    }

private:
    sockaddr_un m_address{};
    socklen_t m_length = 0;
};

ServiceManagerSocket g_serviceManager;

// With the process that runs the service, which a daemon's parent is not.
void tellServiceManagerReady()
{
    char message[64];
    std::snprintf(message, sizeof message, "READY=1\nMAINPID=%d", static_cast<int>(getpid()));
    g_serviceManager.tell(message);
}

// ---------------------------------------------------------------------------
// The stop's way out of signal context

// A termination signal may land anywhere, inside malloc or with a lock
// held, so ControlHandler only marks the stop requested and posts the
// hand-off; the thread asleep in start wakes and calls stop itself, which
// writes the records and sets the event. Each set of the event, by stop or
// by a client, posts the hand-off as well, so the sleeper wakes whoever
// stops the service, and a post that comes before the sleep begins is kept
// for it.
class StopHandOff {
public:
    StopHandOff() { sem_init(&m_wakeUp, 0, 0); }
    StopHandOff(const StopHandOff&) = delete;
    StopHandOff& operator=(const StopHandOff&) = delete;

    // Safe in a signal handler; keeps errno.
    void post()
    {
        const int savedErrno = errno;
        sem_post(&m_wakeUp);
        errno = savedErrno;
    }

    void postSignal()
    {
        m_bSignalled.store(true);
        post();
    }

    // Before a service runs: the posts of an earlier run are spent. A
    // signal that came after that run is not: the service stops at once.
    void forgetPosts()
    {
        while (sem_trywait(&m_wakeUp) == 0) {
        }
    }

    // Until the next post, or at once if a signal is waiting. True when a
    // signal asked for the stop.
    bool sleep()
    {
        if (!m_bSignalled.load()) {
            while (sem_wait(&m_wakeUp) != 0 && errno == EINTR) {
            }
        }
        return m_bSignalled.exchange(false);
    }

private:
    sem_t m_wakeUp;
    std::atomic<bool> m_bSignalled{false};
};

StopHandOff g_stopHandOff;

// Posts the hand-off at each set of the service's event while the service
// runs.
class EventWatch : public VornDependent {
public:
    explicit EventWatch(VornEvent& event) : m_event(event)
    {
        g_stopHandOff.forgetPosts();
        m_event.addDependent(*this);
    }
    EventWatch(const EventWatch&) = delete;
    EventWatch& operator=(const EventWatch&) = delete;
    ~EventWatch() override { m_event.removeDependent(*this); }

    void handleNotification(VornCollaborator&, const VornNotification&) override { g_stopHandOff.post(); }

private:
    VornEvent& m_event;
};

}  // namespace

// ---------------------------------------------------------------------------
// VornService

VornService* VornService::m_pThis = nullptr;

VornService::VornService() : VornService(std::string(), std::string(), std::string(), std::string(), false) {}

VornService::VornService(const std::string& text0, const std::string& serviceName, const std::string& text2,
                         const std::string& text3, bool option)
    : m_text0(text0),
      m_serviceName(serviceName),
      m_text2(text2),
      m_text3(text3),
      m_bDaemon(false),
      m_bOption(option),
      m_state(Stopped)
{
    m_pThis = this;
}

VornService::VornService(bool option, const std::string& text3)
    : VornService(std::string(), std::string(), std::string(), text3, option)
{
}

VornService::~VornService() = default;

bool VornService::start(const std::string& argument, bool daemonize)
{
    if (state() == Running) {
        return true;
    }
    g_serviceManager.locate();
    const EventWatch watch(m_event);
    const bool result = daemonize ? runAsDaemon(argument) : runInForeground(argument);
    logLibraryRecord(9, "VornService::start: exiting");
    return result;
}

bool VornService::runInForeground(const std::string& argument)
{
    if (!serviceStart(argument)) {
        return false;
    }
    m_state = Running;
    tellServiceManagerReady();
    installControlHandler({SIGINT, SIGTERM, SIGPIPE});
    logLibraryRecord(9, "VornService::start: waiting for service to exit");
    waitForStop();
    logLibraryRecord(9, "VornService::start: service completed.");
    serviceStop();
    m_state = Stopped;
    return true;
}

bool VornService::runAsDaemon(const std::string& argument)
{
    m_bDaemon = true;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    const pid_t child = fork();
    if (child < 0) {
        close(ends[0]);
        close(ends[1]);
        return false;
    }
    if (child > 0) {
        close(ends[1]);
        leaveAsParent(ends[0]);
    }

    close(ends[0]);
    StatusPipeEnd parent(ends[1]);
    detachFromParent();
    installControlHandler({SIGINT, SIGTERM, SIGCHLD, SIGPIPE});
    logLibraryRecord(9, "VornService::start: waiting for service to exit");
    m_state = Running;
    const bool started = serviceStart(argument);
    // The manager learns the new main process before the parent leaves.
    if (started) {
        tellServiceManagerReady();
    }
    parent.report(started ? kStarted : kStartFailed);
    if (started) {
        waitForStop();
        usleep(kStopPauseMicroseconds);
        serviceStop();
    }
    m_state = Stopped;
    return started;
}

// The event keeps no signalled state; the hand-off does, so that a stop
// that came while the service was starting is not lost. A stop that came by
// signal is finished here, out of the handler.
void VornService::waitForStop()
{
    if (g_stopHandOff.sleep()) {
        stop();
    }
}

bool VornService::stop()
{
    g_serviceManager.tell("STOPPING=1");
    logLibraryRecord(9, "VornService::stop: entering");
    m_state = StopRequested;
    m_event.set();
    logLibraryRecord(9, "VornService::stop: exiting");
    return true;
}

bool VornService::install()
{
    return true;
}

bool VornService::remove()
{
    return false;
}

int VornService::state() const
{
    return m_state;
}

const std::string& VornService::serviceName() const
{
    return m_serviceName;
}

VornEvent* VornService::getEventObject()
{
    return &m_event;
}

VornService* VornService::getService()
{
    return m_pThis;
}

// Runs as the signal handler, on whatever thread the signal reached. Only
// the first termination signal counts; later ones find the flag taken. The
// rest of the stop runs on the thread of start.
void ControlHandler(int signalNumber)
{
    if (signalNumber != SIGINT && signalNumber != SIGTERM) {
        return;
    }
    static std::atomic<bool> bEntered{false};
    if (bEntered.exchange(true)) {
        return;
    }
    if (VornService* service = VornService::getService()) {
        service->m_state = VornService::StopRequested;
        g_stopHandOff.postSignal();
    }
}

}  // namespace VornSupport
