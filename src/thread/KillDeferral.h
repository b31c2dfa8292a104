// Holding a kill back while the library changes its own state.
//
// VornThread::kill cancels asynchronously: the thread may die at any
// instruction. Dying in the middle of the library's bookkeeping (the text
// and levels of a record, the timer list) would leave it broken, and the
// platform's unwinder ends the process when a cancellation lands between
// the calls of a frame that has clean-ups, or inside a call the compiler
// takes for one that cannot throw (a system call, most of the C library).
//
// So an operation on the record and timer paths runs its work through
// withKillsDeferred: cancellation is deferred for the work, and the
// caller's type is given back as the operation's last step. A kill that
// came meanwhile takes effect there, with every frame on the way up able
// to unwind. The few cancellation points inside the work (a record's
// write, the join of an ended engine thread) run under KillsOff, so that
// no kill unwinds through the library's own frames; one that comes during
// a write waits for the write to return. Threads that are not cancelled
// asynchronously pay two cheap calls.
//
// The calling frame must have nothing to destroy (no local with a
// destructor, no try block): a kill lands in it before the deferral and at
// the give-back. The work runs out of line, so that its clean-ups stay in a
// frame of its own. A destructor cannot let a kill through at all, so an
// operation called from one protects the bookkeeping, but a kill that comes
// meanwhile still ends the process at the give-back.
#ifndef VSUPT_KILLDEFERRAL_H
#define VSUPT_KILLDEFERRAL_H

#include "frame/ExceptionBorder.h"

#include <pthread.h>

#include <cxxabi.h>

#include <type_traits>

namespace VornSupport {

inline int deferKills()
{
    int previous = PTHREAD_CANCEL_DEFERRED;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &previous);
    return previous;
}

// May act on a kill at once.
inline void giveBackKills(int previous)
{
    if (previous != PTHREAD_CANCEL_DEFERRED) {
        pthread_setcanceltype(previous, nullptr);
    }
}

// An exception that leaves the work gives the caller's type back on its
// way; a cancellation that acts inside the work goes on as it is.
template <class Work>
__attribute__((noinline)) VSUPT_CATCHES_FORCED_UNWIND auto runWithKillsDeferred(Work& work, int previous)
    -> decltype(work())
{
    try {
        return work();
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (...) {
        giveBackKills(previous);
        throw;
    }
}

// Turns kills off for a cancellation point inside work run by
// withKillsDeferred. Turning them on again cannot act on a kill there, as
// cancellation is deferred: the kill acts at the give-back.
class KillsOff {
public:
    KillsOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_previous); }
    ~KillsOff() { pthread_setcancelstate(m_previous, nullptr); }
    KillsOff(const KillsOff&) = delete;
    KillsOff& operator=(const KillsOff&) = delete;

private:
    int m_previous = PTHREAD_CANCEL_ENABLE;
};

template <class Work>
auto withKillsDeferred(Work&& work) -> decltype(work())
{
    const int previous = deferKills();
    if constexpr (std::is_void_v<decltype(work())>) {
        runWithKillsDeferred(work, previous);
        giveBackKills(previous);
    } else {
        decltype(auto) result = runWithKillsDeferred(work, previous);
        giveBackKills(previous);
        return result;
    }
}

}  // namespace VornSupport

#endif
