/// @class VornSupport::VornObjectFactory
/// Makes counted objects by a name the program chooses.
///
/// A program registers, under a name, either a creator function or a
/// registration object (VornObjectFactoryRegistration), and later asks for an
/// instance by that name. A registration goes before a creator of the same
/// name. The factory owns neither: a registration takes itself out when it
/// dies, and one that outlives its factory is left dangling.
///
/// There is one process-wide factory, made on first use by getGlobalInstance
/// and destroyed as the first step of the library's detach sequence; programs
/// may make factories of their own too.
///
/// add, remove and construct may run on several threads: they hold the
/// factory's own lock around the maps only, never while a creator or a
/// registration runs, so these may use the factory themselves.
/// getRegisteredClasses and the copy operations read without the lock, and
/// getGlobalInstance takes none: call them at quiet moments.
#ifndef VSUPT_VORNOBJECTFACTORY_H
#define VSUPT_VORNOBJECTFACTORY_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <map>
#include <string>
#include <vector>

namespace VornSupport {

class VornObjectFactoryRegistration;

class VSUPT_API VornObjectFactory {
public:
    /// A function that makes a new object.
    using Creator = VornObjectBase* (*)();

    /// The process-wide factory, made on first use.
    static VornObjectFactory* getGlobalInstance();
    /// Destroys the process-wide factory. The pointer is not cleared: the
    /// library calls this only as the last act of its life.
    static void deleteGlobalInstance();

    VornObjectFactory();
    /// Copies the creators only: each registration points back at one factory.
    VornObjectFactory(const VornObjectFactory& other);
    /// Replaces the creators; the registrations and the lock stay.
    VornObjectFactory& operator=(const VornObjectFactory& other);
    /// Forgets the registrations without telling them.
    virtual ~VornObjectFactory();

    /// Adding a name again replaces what was there under the same kind.
    void add(const std::string& name, Creator creator);
    /// Registers a registration object under name; the factory does not own it.
    void add(const std::string& name, VornObjectFactoryRegistration& registration);
    /// Takes the name out of the registrations, or, if no registration held
    /// it, out of the creators. An unknown name is no error.
    void remove(const std::string& name);
    /// A new object of the class registered under name, null for an unknown
    /// name. Exceptions of the creator or registration pass through.
    VornSmartPointer<VornObjectBase> construct(const std::string& name);
    /// The creators' names in ascending order, then the registrations'.
    std::vector<std::string> getRegisteredClasses() const;

private:
    VornCriticalSectionObject m_lock;
    std::map<std::string, Creator> m_creators;
    std::map<std::string, VornObjectFactoryRegistration*> m_registrations;

    static VornObjectFactory* m_pGlobalInstance;
};

}  // namespace VornSupport

#endif
