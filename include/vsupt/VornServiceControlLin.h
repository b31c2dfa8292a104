// The Linux form of VornServiceControl: services are not installed on this
// platform, so each operation throws VornServiceControlException with
// m_nError 99 and m_nDetail 0 and does nothing else; nothing but that
// exception leaves an operation or the constructor. No lock, no signal.
#ifndef VSUPT_VORNSERVICECONTROLLIN_H
#define VSUPT_VORNSERVICECONTROLLIN_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornServiceControl.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornServiceControlLin : public VornServiceControl {
public:
    explicit VornServiceControlLin(const std::string& serviceName) noexcept;
    ~VornServiceControlLin() override;

    void StartService() override;
    void StopService() override;
    void RestartService() override;
    unsigned int GetServiceStatus() override;
    unsigned int GetServiceStartType() override;
    void SetServiceStartType(unsigned int startType) override;
    bool IsServiceInstalled() override;
};

}  // namespace VornSupport

#endif
