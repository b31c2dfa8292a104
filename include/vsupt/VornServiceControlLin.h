/// @class VornSupport::VornServiceControlLin
/// The Linux form of VornServiceControl: services are not installed on this
/// platform, so each operation throws VornServiceControlException with
/// m_nError 99 and m_nDetail 0 and does nothing else; nothing but that
/// exception leaves an operation or the constructor. No lock, no signal.
#ifndef VSUPT_VORNSERVICECONTROLLIN_H
#define VSUPT_VORNSERVICECONTROLLIN_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornServiceControl.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornServiceControlLin : public VornServiceControl {
public:
    /// Control of the service of this name.
    explicit VornServiceControlLin(const std::string& serviceName) noexcept;
    ~VornServiceControlLin() override;

    /// Throws VornServiceControlException: not available on this platform.
    void StartService() override;
    /// Throws VornServiceControlException: not available on this platform.
    void StopService() override;
    /// Throws VornServiceControlException: not available on this platform.
    void RestartService() override;
    /// Throws VornServiceControlException: not available on this platform.
    unsigned int GetServiceStatus() override;
    /// Throws VornServiceControlException: not available on this platform.
    unsigned int GetServiceStartType() override;
    /// Throws VornServiceControlException: not available on this platform.
    void SetServiceStartType(unsigned int startType) override;
    /// Throws VornServiceControlException: not available on this platform.
    bool IsServiceInstalled() override;
};

}  // namespace VornSupport

#endif
