#include <vsupt/VornServiceControlException.h>

namespace VornSupport {

VornServiceControlException::VornServiceControlException(std::int32_t error, std::int32_t detail)
    : m_nError(error), m_nDetail(detail)
{
}

}  // namespace VornSupport
