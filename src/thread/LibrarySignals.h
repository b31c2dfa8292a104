// Installation of the library's signal handlers (SIGUSR1, SIGALRM, SIGUSR2).
//
// Each handler stays installed, interrupted calls restart, and while one of
// them runs the other two wait: a SIGALRM handler that creates a thread must
// not interrupt a SIGUSR2 handler in the middle of a join on the same
// thread, since both need the same locks of the thread library.
#ifndef VSUPT_LIBRARYSIGNALS_H
#define VSUPT_LIBRARYSIGNALS_H

#include <signal.h>

namespace VornSupport {

inline void installLibrarySignalHandler(int signalNumber, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaddset(&action.sa_mask, SIGUSR1);
    sigaddset(&action.sa_mask, SIGALRM);
    sigaddset(&action.sa_mask, SIGUSR2);
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace VornSupport

#endif
