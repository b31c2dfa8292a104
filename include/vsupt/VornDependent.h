/// @class VornSupport::VornDependent
/// Observer side of the library's notifications.
///
/// A VornDependent registers with one or more VornCollaborator objects and
/// has handleNotification called, on the notifying thread and with no lock
/// held, each time one of them notifies. The collaborators do not own their
/// dependents, and a dependent does not know where it is registered: it must
/// remove itself from every collaborator before it is destroyed, since its
/// destructor does not. A handler may run on several threads at once when
/// several collaborators notify at the same time; the class itself holds no
/// state and takes no lock.
#ifndef VSUPT_VORNDEPENDENT_H
#define VSUPT_VORNDEPENDENT_H

#include <vsupt/VsuptExport.h>

namespace VornSupport {

class VornCollaborator;
class VornNotification;

class VSUPT_API VornDependent {
public:
    VornDependent();
    /// A copy is a new dependent, registered nowhere.
    VornDependent(const VornDependent& other);
    /// Assignment keeps nothing: a dependent has no state of its own.
    VornDependent& operator=(const VornDependent& other);
    virtual ~VornDependent();

    /// Does nothing; derived classes override it.
    virtual void handleNotification(VornCollaborator& source, const VornNotification& notification);
};

}  // namespace VornSupport

#endif
