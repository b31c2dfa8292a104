#include "thread/VornEventWaitThread.h"

#include <vsupt/VornEvent.h>

#include <unistd.h>

namespace VornSupport {

VornEventWaitThread::VornEventWaitThread(VornEvent& event, int timeoutMs)
    : VornThread("EventWaitThread"), m_pEvent(&event), m_timeout(timeoutMs), m_bStarted(false)
{
}

// A set before the thread sleeps would wake nobody, so the thread must have
// entered run first. One that never started is not waited for.
VornEventWaitThread::~VornEventWaitThread()
{
    while (!m_bStarted && isAlive()) {
        usleep(100000);
    }
    m_pEvent->set();
    wait(-1);
}

int VornEventWaitThread::run()
{
    m_bStarted = true;
    m_pEvent->wait(m_timeout);
    return 0;
}

}  // namespace VornSupport
