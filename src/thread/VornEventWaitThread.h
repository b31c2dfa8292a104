// The thread that sleeps in one event on behalf of VornEvent's static wait.
// Its destructor ends it the only way a sleeping thread can be ended: it
// sets the event, with all the effects of a set, and joins the thread.
#ifndef VSUPT_VORNEVENTWAITTHREAD_H
#define VSUPT_VORNEVENTWAITTHREAD_H

#include <vsupt/VornThread.h>

#include <atomic>

namespace VornSupport {

class VornEvent;

class VornEventWaitThread : public VornThread {
public:
    VornEventWaitThread(VornEvent& event, int timeoutMs);
    ~VornEventWaitThread() override;

    int run() override;

private:
    VornEvent* m_pEvent;
    int m_timeout;
    std::atomic<bool> m_bStarted;
};

}  // namespace VornSupport

#endif
