/// @class VornSupport::PropertyChanged
/// Notice that a property of a store has changed.
///
/// Property stores never send it themselves: a program that wants its
/// dependents to hear of changes sends one through the store's
/// VornCollaborator base after it has changed the store. The notice carries
/// the name of the property; like every notification it belongs to whoever
/// made it and takes no lock.
#ifndef VSUPT_PROPERTYCHANGED_H
#define VSUPT_PROPERTYCHANGED_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornNotification.h>

#include <string>

namespace VornSupport {

class VSUPT_API PropertyChanged : public VornNotification {
public:
    PropertyChanged();
    /// A notification about the property of this name.
    explicit PropertyChanged(const std::string& name);
    ~PropertyChanged() override;

    /// The name of the property that changed.
    const std::string& getName() const;

private:
    std::string m_name;
};

}  // namespace VornSupport

#endif
