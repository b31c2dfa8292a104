#include <vsupt/VornCollaborator.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornNotification.h>

#include <algorithm>
#include <cstdint>

namespace VornSupport {

// ---------------------------------------------------------------------------
// VornNotification

// The id is left alone on purpose: notifications built this way carry no
// meaningful id.
VornNotification::VornNotification() {}

VornNotification::VornNotification(int id) : m_id(id) {}

VornNotification::VornNotification(const VornNotification& other) : m_id(other.m_id) {}

VornNotification::~VornNotification() = default;

VornNotification& VornNotification::operator=(const VornNotification& other)
{
    if (this != &other) {
        m_id = other.m_id;
    }
    return *this;
}

VornNotification& VornNotification::operator=(int id)
{
    m_id = id;
    return *this;
}

int VornNotification::getId() const
{
    return m_id;
}

void VornNotification::setId(int id)
{
    m_id = id;
}

// ---------------------------------------------------------------------------
// VornDependent

VornDependent::VornDependent() = default;

VornDependent::VornDependent(const VornDependent&) {}

VornDependent& VornDependent::operator=(const VornDependent&)
{
    return *this;
}

VornDependent::~VornDependent() = default;

void VornDependent::handleNotification(VornCollaborator&, const VornNotification&) {}

// ---------------------------------------------------------------------------
// VornCollaborator

VornCollaborator::VornCollaborator() = default;

VornCollaborator::~VornCollaborator() = default;

void VornCollaborator::addDependent(VornDependent& dependent)
{
    VornCriticalSection guard(m_lock, true);
    m_dependents.push_back(&dependent);
}

void VornCollaborator::removeDependent(VornDependent& dependent)
{
    VornCriticalSection guard(m_lock, true);
    m_dependents.erase(std::remove(m_dependents.begin(), m_dependents.end(), &dependent),
                       m_dependents.end());
}

void VornCollaborator::notify(const VornNotification& notification)
{
    VornCriticalSection guard(m_lock, true);
    // The list is walked by position and its size read afresh after every
    // handler, so that handlers may change it. The entry is read while the
    // lock is still held: a concurrent removal cannot move it out of reach
    // between the size check and the read.
    for (std::uint32_t index = 0; index < m_dependents.size(); ++index) {
        VornDependent* dependent = m_dependents[index];
        guard.unlock();
        dependent->handleNotification(*this, notification);
        guard.lock();
    }
}

}  // namespace VornSupport
