#include "log/VornLoggingEventTimerThread.h"

#include <vsupt/VornLogging.h>

namespace VornSupport {

VornLoggingEventTimerThread::VornLoggingEventTimerThread(VornLogging* logger)
    : VornThread("VornLoggingEventTimerThread"), m_pLogger(logger)
{
}

VornLoggingEventTimerThread::~VornLoggingEventTimerThread() = default;

int VornLoggingEventTimerThread::run()
{
    m_pLogger->timerElapsed();
    return 0;
}

}  // namespace VornSupport
