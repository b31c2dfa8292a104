// The record under a VornEvent and a producer-consumer pair: a condition and
// its mutex, both made with default attributes by their owner.
#ifndef VSUPT_EVENTIMPLEMENTATION_H
#define VSUPT_EVENTIMPLEMENTATION_H

#include <pthread.h>

struct EventImplementation {
    pthread_cond_t m_condition;
    pthread_mutex_t m_mutex;
};

#endif
