// Scoped guard of a VornCriticalSectionObject, and the clean-up that frees
// the locks of a cancelled thread.
//
// A guard holds at most one recursion level of its section and gives back
// exactly that level when it goes. unlock and lock let a scope let go of the
// lock around a call out and take it back. A guard belongs to one thread.
#ifndef VSUPT_VORNCRITICALSECTION_H
#define VSUPT_VORNCRITICALSECTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>

namespace VornSupport {

class VSUPT_API VornCriticalSection {
public:
    VornCriticalSection(VornCriticalSectionObject& section, bool lockNow);
    // Not noexcept: a thread cancelled while the guard gives its lock back
    // unwinds through here.
    ~VornCriticalSection() noexcept(false);

    VornCriticalSection(const VornCriticalSection&) = delete;
    VornCriticalSection& operator=(const VornCriticalSection&) = delete;

    void unlock()
    {
        if (m_bLocked) {
            m_bLocked = false;
            m_pObject->unlock();
        }
    }

    void lock()
    {
        m_pObject->lock();
        m_bLocked = true;
    }

private:
    VornCriticalSectionObject* m_pObject;
    bool m_bLocked;
};

}  // namespace VornSupport

// Frees every critical section the calling thread holds, whatever the
// recursion depth, and empties its list of held locks; a section the thread
// was half-way through taking or giving back is freed if the thread holds it
// and left alone otherwise. The thread entry function runs it when a body is
// left by cancellation. The argument is ignored.
VSUPT_API void VornCriticalSectionRecoverFn(void* unused);

#endif
