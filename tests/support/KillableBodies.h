// For stress tests whose bodies are killed anywhere: small pieces that keep
// nothing to destroy in their frames.
#ifndef VSUPT_TESTS_KILLABLEBODIES_H
#define VSUPT_TESTS_KILLABLEBODIES_H

#include <vsupt/VornCriticalSectionObject.h>

// A small generator whose state stays in registers: the killed bodies keep
// no addressable locals, which the address sanitizer's frames would need
// to unwind.
inline unsigned nextRandom(unsigned state)
{
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

inline void lockLevels(VornSupport::VornCriticalSectionObject& section, unsigned levels)
{
    for (unsigned level = 0; level < levels; ++level) {
        section.lock();
    }
}

inline void unlockLevels(VornSupport::VornCriticalSectionObject& section, unsigned levels)
{
    for (unsigned level = 0; level < levels; ++level) {
        section.unlock();
    }
}

#endif
