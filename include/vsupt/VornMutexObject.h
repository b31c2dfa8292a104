/// @class VornSupport::VornMutexObject
/// The critical section under a second type name, for the named lock factory
/// and for members of other classes that want to call their lock a mutex. It
/// behaves exactly as VornCriticalSectionObject.
#ifndef VSUPT_VORNMUTEXOBJECT_H
#define VSUPT_VORNMUTEXOBJECT_H

#include <vsupt/VornCriticalSectionObject.h>

namespace VornSupport {

class VSUPT_API VornMutexObject : public VornCriticalSectionObject {
public:
    /// A section whose lock is made on first use.
    VornMutexObject();
    /// Drops the section's reference; the last one destroys the lock.
    ~VornMutexObject();
};

}  // namespace VornSupport

#endif
