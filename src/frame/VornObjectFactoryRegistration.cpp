#include <vsupt/VornObjectFactoryRegistration.h>
#include <vsupt/VornObjectFactory.h>

namespace VornSupport {

VornObjectFactoryRegistration::~VornObjectFactoryRegistration()
{
    if (m_pFactory != nullptr) {
        m_pFactory->remove(m_name);
    }
}

}  // namespace VornSupport
