// For stress tests whose bodies are killed anywhere: small pieces that keep
// nothing to destroy in their frames, the loop that kills them, and the
// check that they left no lock held.
#ifndef VSUPT_TESTS_KILLABLEBODIES_H
#define VSUPT_TESTS_KILLABLEBODIES_H

#include <vsupt/VornCriticalSectionObject.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

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

// Starts one victim after another for runTime, each marked for kill and
// killed after pause(), while the contenders' count of rounds must keep
// moving. Gives the number of kills, or -1 once the contenders have stood
// still for ten seconds.
template <class MakeVictim, class Pause>
long killVictims(std::chrono::seconds runTime, MakeVictim makeVictim, Pause pause,
                 const std::atomic<long>& contenderRounds)
{
    using Clock = std::chrono::steady_clock;
    long kills = 0;
    long lastRounds = 0;
    auto lastProgress = Clock::now();
    const auto start = Clock::now();
    while (Clock::now() - start < runTime) {
        auto victim = makeVictim();
        victim->start();
        victim->setMarkForKill();
        std::this_thread::sleep_for(pause());
        victim->kill();
        ++kills;
        if (contenderRounds != lastRounds) {
            lastRounds = contenderRounds;
            lastProgress = Clock::now();
        } else if (Clock::now() - lastProgress > std::chrono::seconds(10)) {
            return -1;
        }
    }
    return kills;
}

// Every level of every section is free, for this thread to take.
inline void expectAllFree(VornSupport::VornCriticalSectionObject* sections, int count)
{
    for (int s = 0; s < count; ++s) {
        EXPECT_TRUE(sections[s].testAndSet()) << "section " << s;
        EXPECT_EQ(sections[s].lockCount(), 1) << "section " << s;
        sections[s].unwind();
    }
}

#endif
