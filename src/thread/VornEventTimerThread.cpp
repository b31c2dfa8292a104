#include <vsupt/VornEventTimerThread.h>
#include <vsupt/VornTimer.h>

#include "log/LibraryLog.h"

#include <unistd.h>

namespace VornSupport {

namespace {

const char* const destructorName = "VornEventTimerThread::~VornEventTimerThread: ";

}  // namespace

VornEventTimerThread::VornEventTimerThread(const std::string& name, VornTimer& timer)
    : VornThread(name), m_timer(timer), m_bStarted(false), m_bRun(false)
{
}

VornEventTimerThread::~VornEventTimerThread()
{
    logLibraryRecord(9, destructorName, "entering");
    if (getHandle() != nullptr && m_bRun) {
        logLibraryRecord(9, destructorName, "setting exit event");
        // The wake-up must find the thread asleep in the timer, or at least
        // on its way there.
        while (!m_bStarted) {
            usleep(100000);
        }
        m_bRun = false;
        m_timer.set();
        logLibraryRecord(9, destructorName, "waiting for thread to exit");
        waitForThreadExit();
    }
    logLibraryRecord(9, destructorName, "exiting");
}

void VornEventTimerThread::start()
{
    VornThread::start();
    m_bRun = true;
}

int VornEventTimerThread::run()
{
    for (;;) {
        m_bStarted = true;
        m_timer.wait(-1);
        if (!m_bRun) {
            return 0;
        }
        timerExpired();
    }
}

}  // namespace VornSupport
