// For tests that must know whether a critical section is free for threads
// other than the one that asks.
#ifndef VSUPT_TESTS_TESTANDSETELSEWHERE_H
#define VSUPT_TESTS_TESTANDSETELSEWHERE_H

#include <vsupt/VornCriticalSectionObject.h>

#include <thread>

// Runs a check on a thread of its own, where the section is not owned.
inline bool testAndSetElsewhere(VornSupport::VornCriticalSectionObject& section)
{
    bool taken = false;
    std::thread other([&] {
        taken = section.testAndSet();
        if (taken) {
            section.unlock();
        }
    });
    other.join();
    return taken;
}

#endif
