#include <vsupt/VornServiceControl.h>
#include <vsupt/VornServiceControlLin.h>

namespace VornSupport {

VornServiceControl* VornServiceControl::CreateVornServiceControl(const std::string& serviceName)
{
    return new VornServiceControlLin(serviceName);
}

VornServiceControl::VornServiceControl(const std::string& serviceName) : m_serviceName(serviceName) {}

VornServiceControl::~VornServiceControl() = default;

}  // namespace VornSupport
