/// @class VornSupport::VornCollaborator
/// Subject side of the library's notifications.
///
/// A VornCollaborator keeps a list of VornDependent pointers, in order of
/// registration, and notify calls each one's handler synchronously on the
/// calling thread. It owns none of its dependents; the same dependent may be
/// registered several times and is then called as often. The list is guarded
/// by the collaborator's own m_lock, which is never held while a handler
/// runs, so handlers may register, remove and notify on the same collaborator.
/// addDependent, removeDependent and notify may run on several threads, but
/// registering or removing while another thread walks the list makes that
/// walk skip or repeat dependents: change the list at quiet moments.
#ifndef VSUPT_VORNCOLLABORATOR_H
#define VSUPT_VORNCOLLABORATOR_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>

#include <vector>

namespace VornSupport {

class VornDependent;
class VornNotification;

class VSUPT_API VornCollaborator {
public:
    VornCollaborator();
    VornCollaborator(const VornCollaborator&) = delete;
    VornCollaborator& operator=(const VornCollaborator&) = delete;
    virtual ~VornCollaborator();

    /// Calls every dependent by position in the list. A dependent added during
    /// the walk is called too; one removed at or before the current position
    /// makes the walk miss the dependent that moves into its place.
    virtual void notify(const VornNotification& notification);

    /// Adds a dependent to be told of every notification; the collaborator does not own it.
    void addDependent(VornDependent& dependent);
    /// Removes every registration of the dependent; unknown ones are ignored.
    void removeDependent(VornDependent& dependent);

private:
    VornCriticalSectionObject m_lock;
    std::vector<VornDependent*> m_dependents;
};

}  // namespace VornSupport

#endif
