// libvsupt end to end: a small service whose heartbeat is a repeating
// timer, shaped to run under the usual service tooling.
//
// main installs a logger, reads its options and a property file, and starts
// the service, as a daemon unless -foreground is given. The parent of the
// daemon leaves with the child's word on the start-up: 0 started, 1 failed,
// so start-stop-daemon and systemd (Type=forking) see a real status. Before
// that word, the daemon lets go of its caller's standard input, output and
// error (so that out=$(vsupt-demo ...) returns at once) and writes its
// process id file, readable by all and writable by its owner alone, as
// start-stop-daemon --pidfile and systemd's PIDFile= expect.
//
// In the service, a VornTimer fires every heartbeat.seconds; its dependent
// writes a record at each expiry, on the timer's own short-lived thread.
// SIGHUP asks for the log file to be opened again by its name (log rotation
// that renames the file and creates a new one): the handler only notes the
// request, and the next heartbeat reopens the file, outside signal context.
// SIGTERM or SIGINT stops the service: serviceStop ends the timer and
// removes the process id file, main returns, and the library takes itself
// down.
//
// Options: -config FILE (-c), -foreground (-f), -pidfile FILE (-p), the
// file that holds the service's process id while it runs (default
// demo.pid). Relative paths are taken from the directory the demo starts
// in; the log file demo<number>.log is written there.
#include <vsupt/VornDependent.h>
#include <vsupt/VornException.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornProgramOptions.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornService.h>
#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornTimer.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace VornSupport;

namespace {

VornLogging& logger()
{
    return *VornLogging::getInstance();
}

// The guard of every call site: a disabled level costs a load and a compare.
bool logsAt(int level)
{
    return VornLogging::isAccessAllowed() && logger().getLogLevel() >= level;
}

// Set by the SIGHUP handler, which may run in the middle of anything (a
// record, malloc) and so does nothing else; a heartbeat takes it up.
std::atomic<bool> g_reopenRequested{false};

void requestReopen(int)
{
    g_reopenRequested = true;
}

void reopenOnSighup()
{
    struct sigaction action = {};
    action.sa_handler = requestReopen;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGHUP, &action, nullptr);
}

// Hears the timer's expiries, each on a thread of its own.
class HeartbeatWriter : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override
    {
        if (g_reopenRequested.exchange(false) && logger().reopenLogFile() && logsAt(5)) {
            logger() << setloglevel("service", 5) << "log file reopened" << endrecord;
        }
        const int beat = ++m_beats;
        if (logsAt(5)) {
            logger() << setloglevel("timer", 5) << "heartbeat " << beat << endrecord;
        }
    }

    int beats() const { return m_beats; }

private:
    std::atomic<int> m_beats{0};
};

class DemoService : public VornService {
public:
    DemoService(const VornProperties<std::string>& settings, const std::string& pidFile)
        : VornService(std::string(), settings.getProperty("service.name", "demo"), std::string(), std::string(), false),
          m_settings(settings),
          m_pidFile(pidFile)
    {
    }

    bool serviceStart(const std::string& greeting) override
    {
        if (m_bDaemon && !releaseStandardStreams()) {
            if (logsAt(1)) {
                logger() << setloglevel("service", 1) << serviceName() << ": cannot open /dev/null" << endrecord;
            }
            return false;
        }
        if (!writePidFile()) {
            if (logsAt(1)) {
                logger() << setloglevel("service", 1) << serviceName() << ": cannot write " << m_pidFile << endrecord;
            }
            return false;
        }
        const long seconds = std::atol(m_settings.getProperty("heartbeat.seconds", "1").c_str());
        reopenOnSighup();
        m_timer.addDependent(m_writer);
        m_timer.start(seconds, 0, false);
        if (logsAt(5)) {
            logger() << setloglevel("service", 5) << serviceName() << " started as process " << static_cast<int>(getpid())
                     << ", heartbeat every " << seconds << " s: " << greeting << endrecord;
        }
        return true;
    }

    bool serviceStop() override
    {
        m_timer.stop();
        m_timer.removeDependent(m_writer);
        std::remove(m_pidFile.c_str());
        if (logsAt(5)) {
            logger() << setloglevel("service", 5) << serviceName() << " stopped after " << m_writer.beats()
                     << " heartbeats" << endrecord;
        }
        return true;
    }

private:
    // The daemon's records go to its log file; standard input, output and
    // error become /dev/null.
    static bool releaseStandardStreams()
    {
        const int null = open("/dev/null", O_RDWR);
        if (null < 0) {
            return false;
        }
        bool moved = true;
        for (int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            moved = dup2(null, standard) == standard && moved;
        }
        if (null > STDERR_FILENO) {
            close(null);
        }
        return moved;
    }

    // Mode 0644 whatever the umask (the daemon runs with 0): a file that
    // others may write is refused by the tools that read it.
    bool writePidFile() const
    {
        const int file = open(m_pidFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (file < 0) {
            return false;
        }
        const std::string text = std::to_string(getpid()) + "\n";
        const bool written = fchmod(file, 0644) == 0 &&
                             write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        return close(file) == 0 && written;
    }

    const VornProperties<std::string>& m_settings;
    std::string m_pidFile;
    HeartbeatWriter m_writer;
    VornTimer m_timer;
};

// The daemon works in "/", so a relative path is fixed before it starts.
std::string absolutePath(const std::string& path)
{
    char directory[4096];
    if (path.empty() || path[0] == '/' || getcwd(directory, sizeof directory) == nullptr) {
        return path;
    }
    return std::string(directory) + "/" + path;
}

std::string option(const VornProgramOptions& options, const std::string& longName, const std::string& shortName,
                   const std::string& otherwise)
{
    std::string value;
    if (options.getOptions().getPropertyValue(longName, value) ||
        options.getOptions().getPropertyValue(shortName, value)) {
        return value;
    }
    return otherwise;
}

bool hasOption(const VornProgramOptions& options, const std::string& longName, const std::string& shortName)
{
    std::string value;
    return options.getOptions().getPropertyValue(longName, value) ||
           options.getOptions().getPropertyValue(shortName, value);
}

}  // namespace

int main(int argc, char** argv)
{
    VornLogging log("demo", VornLogging::TargetFile | VornLogging::TargetStdout, 5);
    VornLogging::setInstance(log);

    VornProperties<std::string> settings;
    std::string pidFile;
    bool foreground = false;
    try {
        const VornProgramOptions options(argc, argv, "c:fp:", ":config.:foreground:pidfile.:", false);
        foreground = hasOption(options, "foreground", "f");
        // A daemon writes its records to the file only.
        if (!foreground) {
            log.setTarget(VornLogging::TargetFile);
        }
        pidFile = absolutePath(option(options, "pidfile", "p", "demo.pid"));
        const std::string configuration = option(options, "config", "c", "");
        if (!configuration.empty()) {
            settings.loadProperties(configuration);
        }
    } catch (VornException& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.getText().c_str());
        return 2;
    }

    DemoService service(settings, pidFile);
    const std::string greeting = VornExpandString(settings.getProperty("greeting", "hello"), settings);
    const bool ran = service.start(greeting, !foreground);
    if (logsAt(5)) {
        logger() << setloglevel("service", 5) << "main returns" << endrecord;
    }
    return ran ? 0 : 1;
}
