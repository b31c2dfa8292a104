#include "thread/VornTimerThread.h"

#include <vsupt/VornTimerManager.h>

namespace VornSupport {

VornTimerThread::VornTimerThread(VornTimerManager& manager) : m_manager(manager) {}

VornTimerThread::~VornTimerThread() = default;

// A change may have left its expiry to this thread's scan, since the alarm
// that started it was armed: one that gives up asks for the next alarm.
int VornTimerThread::run()
{
    if (VornTimerManager::m_bExiting) {
        return 0;
    }
    if (m_manager.m_bCancelling) {
        m_manager.reset(false);
        return 0;
    }
    m_manager.elapsed();
    return 0;
}

}  // namespace VornSupport
