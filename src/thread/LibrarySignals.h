// Installation of the library's signal handlers (SIGUSR1, SIGALRM, SIGUSR2).
//
// Each handler stays installed, interrupted calls restart, and while one of
// them runs the other two wait: a SIGALRM handler that creates a thread must
// not interrupt a SIGUSR2 handler in the middle of a join on the same
// thread, since both need the same locks of the thread library.
#ifndef VSUPT_LIBRARYSIGNALS_H
#define VSUPT_LIBRARYSIGNALS_H

#include <pthread.h>
#include <signal.h>

namespace VornSupport {

inline void fillWithLibrarySignals(sigset_t& set)
{
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigaddset(&set, SIGALRM);
    sigaddset(&set, SIGUSR2);
}

inline void installLibrarySignalHandler(int signalNumber, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    fillWithLibrarySignals(action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

// For a thread about to end: a handler that ran on it could join a thread
// that waits for the handler's lock, or be joined while it waits itself.
inline void blockLibrarySignalsOnThisThread()
{
    sigset_t set;
    fillWithLibrarySignals(set);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

}  // namespace VornSupport

#endif
