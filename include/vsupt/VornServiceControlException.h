/// @class VornSupport::VornServiceControlException
/// The failure of a service control operation: an error number and a
/// detail, nothing else. It stands outside the VornException family, so a
/// handler of VornException does not see it. Thrown by value, caught by
/// reference; a plain value without a lock.
#ifndef VSUPT_VORNSERVICECONTROLEXCEPTION_H
#define VSUPT_VORNSERVICECONTROLEXCEPTION_H

#include <vsupt/VsuptExport.h>

#include <cstdint>

namespace VornSupport {

class VSUPT_API VornServiceControlException {
public:
    /// An exception with an error and its detail.
    VornServiceControlException(std::int32_t error, std::int32_t detail);

    /// The error.
    std::int32_t m_nError;
    /// Its detail.
    std::int32_t m_nDetail;
};

}  // namespace VornSupport

#endif
