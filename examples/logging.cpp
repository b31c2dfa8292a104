// Logging: one logger installed at start-up, with a level for the program
// that a category's own level can narrow. A record is written when its
// level is within both; the guard before it costs a disabled call site one
// load and a compare. Records go to stdout here; add VornLogging::TargetFile
// to the targets for a log file as well.
#include <vsupt/VornLogging.h>

#include <string>

using namespace VornSupport;

int main()
{
    VornLogging log("example", VornLogging::TargetStdout, 5);
    VornLogging::setInstance(log);
    log.setLogLevel("net", 2);

    const int bytes = 512;
    if (VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() >= 1) {
        *VornLogging::getInstance() << setloglevel("app", 1) << "started, level " << log.getLogLevel() << endrecord;
    }
    // Above the logger's level 5: not written.
    *VornLogging::getInstance() << setloglevel("app", 9) << "tracing, not written" << endrecord;
    // Within the level of "net", which is 2.
    *VornLogging::getInstance() << setloglevel("net", 2) << "sent " << bytes << " bytes" << endrecord;
    *VornLogging::getInstance() << setloglevel("app", 5) << std::wstring(L"wide text too: ") << 2.5 << endrecord;
    return 0;
}
