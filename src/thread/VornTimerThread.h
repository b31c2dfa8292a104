// The short-lived thread of one timer expiry: started by the expiry engine
// for each SIGALRM, marked for death, it scans the timer list once and
// deletes itself. Its scan hold keeps the manager from being deleted under
// it by the stop sequence.
#ifndef VSUPT_VORNTIMERTHREAD_H
#define VSUPT_VORNTIMERTHREAD_H

#include <vsupt/VornThread.h>

#include "thread/ExpiryEngine.h"

namespace VornSupport {

class VornTimerManager;

class VornTimerThread : public VornThread {
public:
    explicit VornTimerThread(VornTimerManager& manager);
    ~VornTimerThread() override;

    // Gives up at once while the manager is going, and gives up its scan
    // while the manager is cancelling.
    int run() override;

private:
    VornTimerManager& m_manager;
    const ExpiryEngine::ScanHold m_scanHold;
};

}  // namespace VornSupport

#endif
