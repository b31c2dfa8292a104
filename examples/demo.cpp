// A first tour of libvsupt: a logger with levels per category, an exception
// that gathers messages on its way up, a repeating timer whose dependent
// writes a record at each expiry, and a configuration read from a property
// file named on the command line.
#include <vsupt/VornException.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornProgramOptions.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornTimer.h>

#include <atomic>
#include <cstdio>
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

void openStore(const std::string& name)
{
    if (logsAt(5)) {
        logger() << setloglevel("store", 5) << "opening store " << name << endrecord;
    }
    throw VornException("store " + name + " is not reachable", 0);
}

void loadConfiguration()
{
    try {
        openStore("settings");
    } catch (VornException& error) {
        error.pushMessage(L"while loading the configuration");
        throw;
    }
}

// Hears the timer's expiries on the timer's own short-lived threads, and
// wakes main from the last beat it waits for on. The event is a pulse: a
// wake-up that comes before main sleeps is lost, and the next beat, a
// second later, sends another.
class HeartbeatWriter : public VornDependent {
public:
    HeartbeatWriter(int beats, VornEvent& done) : m_beats(beats), m_done(done) {}

    void handleNotification(VornCollaborator&, const VornNotification&) override
    {
        const int beat = ++m_heard;
        if (beat > m_beats) {
            m_done.set();
            return;
        }
        if (logsAt(5)) {
            logger() << setloglevel("timer", 5) << "heartbeat " << beat << " of " << m_beats << endrecord;
        }
        if (beat == m_beats) {
            m_done.set();
        }
    }

    bool finished() const { return m_heard >= m_beats; }

private:
    const int m_beats;
    std::atomic<int> m_heard{0};
    VornEvent& m_done;
};

// A repeating timer of one second, for a few beats, while the main thread
// sleeps in an event.
void runHeartbeat(int beats)
{
    VornEvent done;
    HeartbeatWriter writer(beats, done);
    VornTimer timer(1000, false);
    timer.addDependent(writer);
    timer.reset();
    while (!writer.finished()) {
        done.wait(-1);
    }
    timer.stop();
    timer.removeDependent(writer);
    if (logsAt(1)) {
        logger() << setloglevel("timer", 1) << "timer stopped after " << beats << " beats" << endrecord;
    }
}

// Options: -v (verbose), -config FILE or -c FILE, --help; anything else is
// a positional argument.
void readConfiguration(int argc, char** argv)
{
    try {
        const VornProgramOptions options(argc, argv, "vc:", ":help:config.:", false);
        std::string file;
        if (!options.getOptions().getPropertyValue("config", file)) {
            options.getOptions().getPropertyValue("c", file);
        }
        if (logsAt(1)) {
            logger() << setloglevel("config", 1) << options.getProgramName() << ": " << options.getOptions().size()
                     << " options, " << options.getArgumentCount() << " positional arguments" << endrecord;
        }
        for (const auto& option : options.getOptions().getProperties()) {
            if (logsAt(1)) {
                logger() << setloglevel("config", 1) << "option " << option.first << " = '" << option.second.front()
                         << "'" << endrecord;
            }
        }
        for (const std::string& argument : options.getArguments()) {
            if (logsAt(1)) {
                logger() << setloglevel("config", 1) << "argument " << argument << endrecord;
            }
        }
        if (file.empty()) {
            return;
        }
        VornProperties<std::string> settings;
        settings.loadProperties(file);
        for (const auto& setting : settings.getProperties()) {
            if (logsAt(1)) {
                logger() << setloglevel("config", 1) << setting.first << " = "
                         << VornExpandString(setting.second.front(), settings) << endrecord;
            }
        }
    } catch (VornException& error) {
        if (logsAt(1)) {
            logger() << setloglevel("config", 1) << "no configuration: " << error.getText() << endrecord;
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    // Records up to level 5 go to stdout; the "net" category is narrowed
    // to failures.
    VornLogging log("demo", VornLogging::TargetStdout, 5);
    VornLogging::setInstance(log);
    log.setLogLevel("net", 1);

    if (logsAt(1)) {
        logger() << setloglevel(1) << "demo started, logger level " << logger().getLogLevel() << endrecord;
    }
    if (logsAt(1)) {
        logger() << setloglevel("net", 1) << "connection lost after " << 3 << " retries" << endrecord;
    }
    if (logsAt(9)) {
        logger() << setloglevel(9) << "never built: level 9 is above the logger's level" << endrecord;
    }

    try {
        loadConfiguration();
    } catch (VornException& error) {
        error.pushMessage(L"demo start-up failed");
        std::printf("Caught VornException, newest message first:\n%s\n",
                    VornStringUtilities::narrow(error.getFormattedMessages(), VornLocaleFactory::getDefaultLocale(true)).c_str());
    }

    if (logsAt(0)) {
        logger() << setloglevel(0) << "level 0 records carry no prefix" << endrecord;
    }

    runHeartbeat(3);
    readConfiguration(argc, argv);
    return 0;
}
