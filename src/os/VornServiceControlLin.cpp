#include <vsupt/VornServiceControlLin.h>
#include <vsupt/VornServiceControlException.h>

namespace VornSupport {

namespace {

// Services are not installed on this platform: no operation has an answer.
constexpr std::int32_t kNotSupported = 99;

[[noreturn]] void throwNotSupported()
{
    throw VornServiceControlException(kNotSupported, 0);
}

}  // namespace

// Nothing of the exception's kind can come from storing a name, so
// nothing at all may leave.
VornServiceControlLin::VornServiceControlLin(const std::string& serviceName) noexcept
    : VornServiceControl(serviceName)
{
}

VornServiceControlLin::~VornServiceControlLin() = default;

void VornServiceControlLin::StartService()
{
    throwNotSupported();
}

void VornServiceControlLin::StopService()
{
    throwNotSupported();
}

void VornServiceControlLin::RestartService()
{
    throwNotSupported();
}

unsigned int VornServiceControlLin::GetServiceStatus()
{
    throwNotSupported();
}

unsigned int VornServiceControlLin::GetServiceStartType()
{
    throwNotSupported();
}

void VornServiceControlLin::SetServiceStartType(unsigned int)
{
    throwNotSupported();
}

bool VornServiceControlLin::IsServiceInstalled()
{
    throwNotSupported();
}

}  // namespace VornSupport
