/// @class VornSupport::VornNotification
/// The value a VornCollaborator hands to its dependents.
///
/// A notification is a small value class with an id; classes derived from it
/// carry whatever else a dependent needs to know. There is no central table
/// of ids: each notification class chooses its own. A notification belongs to
/// whoever made it and is only lent to the handlers for the length of one
/// notify. It takes no lock and is for one thread at a time.
#ifndef VSUPT_VORNNOTIFICATION_H
#define VSUPT_VORNNOTIFICATION_H

#include <vsupt/VsuptExport.h>

namespace VornSupport {

class VSUPT_API VornNotification {
public:
    /// Leaves the id unset: a notification built this way is told apart by
    /// its type or by the collaborator that sends it, not by its id.
    VornNotification();
    /// A notification with the given id.
    VornNotification(int id);
    /// Copies the id.
    VornNotification(const VornNotification& other);
    virtual ~VornNotification();

    /// Copies the id.
    VornNotification& operator=(const VornNotification& other);
    /// Sets the id.
    VornNotification& operator=(int id);

    /// The id.
    int getId() const;
    /// Sets the id.
    void setId(int id);

private:
    int m_id;
};

}  // namespace VornSupport

#endif
