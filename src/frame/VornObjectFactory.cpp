#include <vsupt/VornObjectFactory.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornObjectFactoryRegistration.h>

namespace VornSupport {

VornObjectFactory* VornObjectFactory::m_pGlobalInstance = nullptr;

VornObjectFactory* VornObjectFactory::getGlobalInstance()
{
    if (m_pGlobalInstance == nullptr) {
        m_pGlobalInstance = new VornObjectFactory();
    }
    return m_pGlobalInstance;
}

void VornObjectFactory::deleteGlobalInstance()
{
    if (m_pGlobalInstance != nullptr) {
        delete m_pGlobalInstance;
    }
}

VornObjectFactory::VornObjectFactory() = default;

VornObjectFactory::VornObjectFactory(const VornObjectFactory& other) : m_creators(other.m_creators) {}

VornObjectFactory& VornObjectFactory::operator=(const VornObjectFactory& other)
{
    if (&m_creators != &other.m_creators) {
        m_creators = other.m_creators;
    }
    return *this;
}

VornObjectFactory::~VornObjectFactory()
{
    m_registrations.clear();
    m_creators.clear();
}

void VornObjectFactory::add(const std::string& name, Creator creator)
{
    VornCriticalSection guard(m_lock, true);
    m_creators[name] = creator;
}

void VornObjectFactory::add(const std::string& name, VornObjectFactoryRegistration& registration)
{
    VornCriticalSection guard(m_lock, true);
    m_registrations[name] = &registration;
}

void VornObjectFactory::remove(const std::string& name)
{
    VornCriticalSection guard(m_lock, true);
    if (m_registrations.erase(name) == 0) {
        m_creators.erase(name);
    }
}

VornSmartPointer<VornObjectBase> VornObjectFactory::construct(const std::string& name)
{
    VornSmartPointer<VornObjectBase> result;
    VornCriticalSection guard(m_lock, true);
    const auto registration = m_registrations.find(name);
    if (registration != m_registrations.end()) {
        VornObjectFactoryRegistration* maker = registration->second;
        guard.unlock();
        result = maker->construct();
        return result;
    }
    const auto creator = m_creators.find(name);
    if (creator != m_creators.end()) {
        const Creator make = creator->second;
        guard.unlock();
        result = make();
    }
    return result;
}

std::vector<std::string> VornObjectFactory::getRegisteredClasses() const
{
    std::vector<std::string> names;
    names.reserve(m_creators.size() + m_registrations.size());
    for (const auto& creator : m_creators) {
        names.push_back(creator.first);
    }
    for (const auto& registration : m_registrations) {
        names.push_back(registration.first);
    }
    return names;
}

}  // namespace VornSupport
