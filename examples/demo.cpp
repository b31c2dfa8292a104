// A first tour of libvsupt: a logger with levels per category, and an
// exception that gathers messages on its way up.
#include <vsupt/VornException.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornStringUtilities.h>

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

}  // namespace

int main()
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
    return 0;
}
