/// @class VornSupport::VornEventNotification
/// The notification a VornEvent sends to its dependents on each set: id 1 and
/// nothing else. It is made and destroyed by the event for every set and
/// belongs to the event; it takes no lock.
#ifndef VSUPT_VORNEVENTNOTIFICATION_H
#define VSUPT_VORNEVENTNOTIFICATION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornNotification.h>

namespace VornSupport {

class VSUPT_API VornEventNotification : public VornNotification {
public:
    VornEventNotification();
    /// Copies the notification.
    VornEventNotification(const VornEventNotification& other);
    ~VornEventNotification() override;

    /// Copies the notification.
    VornEventNotification& operator=(const VornEventNotification& other);
};

}  // namespace VornSupport

#endif
