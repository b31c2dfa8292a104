#include <vsupt/VornBaseSynchronizedQueue.h>

namespace VornSupport {

VornBaseSynchronizedQueue::VornBaseSynchronizedQueue() = default;

VornBaseSynchronizedQueue::~VornBaseSynchronizedQueue() = default;

VornCriticalSectionObject& VornBaseSynchronizedQueue::getLock()
{
    return m_lock;
}

}  // namespace VornSupport
