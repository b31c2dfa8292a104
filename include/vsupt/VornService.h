/// @class VornSupport::VornService
/// The frame that turns a program into a service, in the foreground or as a
/// daemon.
///
/// A program derives from VornService, implements serviceStart and
/// serviceStop, makes one object and calls start. In the foreground, start
/// runs serviceStart and sleeps until the service is told to stop. As a
/// daemon, start forks: the parent waits at most 60 seconds for the child's
/// word on the start-up and leaves the process with it (0 started, 1
/// serviceStart failed or the child ended without a word, -3 no word in
/// time, -4 the wait itself failed); the child starts a new session in "/"
/// with umask 0, runs the service and returns from start when it has
/// stopped. Threads and timers of the parent do not reach the child, so a
/// service sets up its work in serviceStart, on threads of its own.
///
/// The daemon keeps the standard input, output and error it was given: a
/// service that must not hold its caller's terminal or pipe (a start script
/// reading its output waits for every holder to let go) moves them in
/// serviceStart, before its parent is released.
///
/// start installs ControlHandler for SIGINT, SIGTERM and SIGPIPE, and in a
/// daemon for SIGCHLD too; the first SIGINT or SIGTERM stops the service
/// made last, and every later one is ignored. The handler only marks the
/// stop requested (state() tells it at once) and hands the stop on to the
/// thread asleep in start, which calls stop there: stop's records and the
/// event's notification allocate and lock, which is unsafe wherever a
/// signal lands. That thread sleeps in a hand-off that every set of the
/// service's event posts, so that stop, or a set of getEventObject() on
/// any thread, wakes it; and a stop that comes before the sleep begins is
/// kept for it rather than lost, so that a service told to stop while it
/// starts does not run on deaf to every later signal. stop may run on any
/// thread. The object is not copyable and owns only its members; getService
/// keeps pointing at the object made last, even after it is gone.
///
/// Under a service manager that sets NOTIFY_SOCKET (a path, or an abstract
/// name behind "@"), the process running the service tells it "READY=1"
/// with "MAINPID=" its id once serviceStart succeeded (a daemon's child
/// before it releases its parent), and "STOPPING=1" as stop begins: one
/// datagram each, sent with calls safe in a signal handler. Without the
/// variable nothing is sent.
#ifndef VSUPT_VORNSERVICE_H
#define VSUPT_VORNSERVICE_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornEvent.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace VornSupport {

class VSUPT_API VornService {
public:
    /// Values of state().
    enum { Running = 0, Stopped = 1, StopRequested = 2 };

    /// A service with empty texts and the option false.
    VornService();
    /// Keeps the four texts and the option for the subclass; serviceName is
    /// what serviceName() returns.
    VornService(const std::string& text0, const std::string& serviceName, const std::string& text2,
                const std::string& text3, bool option);
    /// Keeps the option and text3 for the subclass; the other texts are empty.
    VornService(bool option, const std::string& text3);
    /// Destroys the members and nothing else.
    virtual ~VornService();

    /// True when the service runs; its work goes on after the return.
    virtual bool serviceStart(const std::string& argument) = 0;
    /// Runs on the thread of start once the service was told to stop. The
    /// result is not used.
    virtual bool serviceStop() = 0;

    /// Returns at once with true when the service runs already. Otherwise
    /// true when the service ran and has stopped, false when serviceStart
    /// failed or no daemon could be made. The parent of a daemon never
    /// returns. Exceptions of serviceStart and serviceStop pass through.
    bool start(const std::string& argument, bool daemonize);
    /// Tells the service to stop: "STOPPING=1" to a service manager, the
    /// records "VornService::stop: entering" and "VornService::stop:
    /// exiting" at level 9 around the state StopRequested and a set of the
    /// event. Returns true.
    bool stop();
    /// Nothing to install on this platform: true.
    bool install();
    /// Nothing to remove on this platform: false.
    bool remove();

    /// Running, Stopped or StopRequested.
    int state() const;
    /// The second text of the constructor.
    const std::string& serviceName() const;
    /// The event that stop sets.
    VornEvent* getEventObject();
    /// The service made last, even if it is gone.
    static VornService* getService();

protected:
    std::string m_text0;  ///< First text of the constructor, for the subclass.
    std::string m_serviceName;  ///< What serviceName() returns.
    std::string m_text2;  ///< Third text of the constructor, for the subclass.
    std::string m_text3;  ///< Fourth text of the constructor, for the subclass.
    std::string m_text4;  ///< Empty from the constructors, for the subclass.
    std::wstring m_wideText;  ///< Empty from the constructors, for the subclass.
    VornEvent m_event;  ///< Set by stop.
    bool m_bDaemon;  ///< Set by start when it forks.
    bool m_bOption;  ///< The option of the constructor, for the subclass.
    /// Written by stop and by ControlHandler inside a signal handler, read
    /// by start.
    std::atomic<std::int32_t> m_state;

    /// The object made last; set by every constructor.
    static VornService* m_pThis;

private:
    bool runInForeground(const std::string& argument);
    bool runAsDaemon(const std::string& argument);
    // Sleeps until the service is told to stop, unless it was already.
    void waitForStop();

    friend void ControlHandler(int signal);
};

/// The process's handler of SIGINT and SIGTERM while a service runs; every
/// other signal it is given is ignored.
VSUPT_API void ControlHandler(int signal);

}  // namespace VornSupport

#endif
