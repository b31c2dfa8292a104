/// @class VornSupport::VornObjectFactoryRegistration
/// A class registered with a VornObjectFactory as an object that makes its
/// instances.
///
/// A derived class sets m_name and m_pFactory in its constructor and adds
/// itself to that factory; its destructor takes the name out of the factory
/// again. The factory does not own the registration, and a registration must
/// not outlive its factory. construct runs without the factory's lock, on
/// whatever thread asks the factory.
#ifndef VSUPT_VORNOBJECTFACTORYREGISTRATION_H
#define VSUPT_VORNOBJECTFACTORYREGISTRATION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <string>

namespace VornSupport {

class VornObjectFactory;

class VSUPT_API VornObjectFactoryRegistration {
public:
    /// Removes m_name from m_pFactory, if it was given one.
    virtual ~VornObjectFactoryRegistration();
    /// Makes a new object of the registered class.
    virtual VornSmartPointer<VornObjectBase> construct() = 0;

protected:
    /// The name registered under.
    std::string m_name;
    /// The factory registered with, null before.
    VornObjectFactory* m_pFactory = nullptr;
};

}  // namespace VornSupport

#endif
