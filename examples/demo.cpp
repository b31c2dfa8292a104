// libvsupt end to end: a small service whose heartbeat is a repeating
// timer.
//
// main installs a logger, reads its options and a property file, and starts
// the service, as a daemon unless -foreground is given. The parent of the
// daemon leaves with the child's word on the start-up: 0 started, 1 failed.
// In the service, a VornTimer fires every heartbeat.seconds; its dependent
// writes a record at each expiry, on the timer's own short-lived thread.
// SIGTERM or SIGINT stops the service: serviceStop ends the timer, main
// returns, and the library takes itself down.
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

// Hears the timer's expiries, each on a thread of its own.
class HeartbeatWriter : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override
    {
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
        if (!writePidFile()) {
            if (logsAt(1)) {
                logger() << setloglevel("service", 1) << serviceName() << ": cannot write " << m_pidFile << endrecord;
            }
            return false;
        }
        const long seconds = std::atol(m_settings.getProperty("heartbeat.seconds", "1").c_str());
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
    bool writePidFile() const
    {
        FILE* file = std::fopen(m_pidFile.c_str(), "w");
        if (file == nullptr) {
            return false;
        }
        std::fprintf(file, "%d\n", static_cast<int>(getpid()));
        return std::fclose(file) == 0;
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
        pidFile = absolutePath(option(options, "pidfile", "p", "demo.pid"));
        const std::string configuration = option(options, "config", "c", "");
        if (!configuration.empty()) {
            settings.loadProperties(configuration);
        }
    } catch (VornException& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.getText().c_str());
        return 2;
    }

    // A daemon keeps the terminal it was started from, but writes its
    // records to the file only.
    if (!foreground) {
        log.setTarget(VornLogging::TargetFile);
    }
    DemoService service(settings, pidFile);
    const std::string greeting = VornExpandString(settings.getProperty("greeting", "hello"), settings);
    const bool ran = service.start(greeting, !foreground);
    if (logsAt(5)) {
        logger() << setloglevel("service", 5) << "main returns" << endrecord;
    }
    return ran ? 0 : 1;
}
