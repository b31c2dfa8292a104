// Installation of the library's signal handlers (SIGUSR1, SIGALRM, SIGUSR2).
//
// Each handler stays installed and interrupted calls restart, as with
// signal(). The handlers only hand their signal to the relay thread, so they
// need no mask of their own.
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
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace VornSupport

#endif
