// The short-lived thread that a logger's quiet timer starts at each expiry.
// Marked for death, it calls timerElapsed on its logger and deletes itself.
// It keeps a plain pointer: the logger must outlive it.
#ifndef VSUPT_VORNLOGGINGEVENTTIMERTHREAD_H
#define VSUPT_VORNLOGGINGEVENTTIMERTHREAD_H

#include <vsupt/VornThread.h>

namespace VornSupport {

class VornLogging;

class VornLoggingEventTimerThread : public VornThread {
public:
    explicit VornLoggingEventTimerThread(VornLogging* logger);
    ~VornLoggingEventTimerThread() override;

    int run() override;

private:
    VornLogging* m_pLogger;
};

}  // namespace VornSupport

#endif
