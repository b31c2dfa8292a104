#include "thread/VornTimerThread.h"

#include <vsupt/VornTimerManager.h>

namespace VornSupport {

VornTimerThread::VornTimerThread(VornTimerManager& manager) : m_manager(manager) {}

VornTimerThread::~VornTimerThread() = default;

int VornTimerThread::run()
{
    if (VornTimerManager::m_bExiting || m_manager.m_bCancelling) {
        return 0;
    }
    m_manager.elapsed();
    return 0;
}

}  // namespace VornSupport
