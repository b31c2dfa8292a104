// For tests whose busy threads must leave the library's signals to the
// test's main thread, which waits idle while timers fire.
#ifndef VSUPT_TESTS_LIBRARYSIGNALS_H
#define VSUPT_TESTS_LIBRARYSIGNALS_H

#include <pthread.h>
#include <signal.h>

inline void blockLibrarySignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigaddset(&set, SIGUSR2);
    sigaddset(&set, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

#endif
