/// @class VornSupport::VornServiceControl
/// Starts, stops and queries an installed service by its name.
///
/// CreateVornServiceControl hands out the platform's implementation, which
/// the caller owns and deletes through this interface. On this platform
/// services are not installed anywhere, so every operation of the
/// implementation throws VornServiceControlException (99, 0) and none gives
/// an answer. An object belongs to one thread at a time; it takes no lock and
/// touches no signal.
#ifndef VSUPT_VORNSERVICECONTROL_H
#define VSUPT_VORNSERVICECONTROL_H

#include <vsupt/VsuptExport.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornServiceControl {
public:
    /// Any name is taken, an empty one too.
    static VornServiceControl* CreateVornServiceControl(const std::string& serviceName);

    virtual ~VornServiceControl();

    /// Starts the service.
    virtual void StartService() = 0;
    /// Stops the service.
    virtual void StopService() = 0;
    /// Stops and starts the service.
    virtual void RestartService() = 0;
    /// The service's status.
    virtual unsigned int GetServiceStatus() = 0;
    /// How the service starts.
    virtual unsigned int GetServiceStartType() = 0;
    /// Sets how the service starts.
    virtual void SetServiceStartType(unsigned int startType) = 0;
    /// Whether the service is installed.
    virtual bool IsServiceInstalled() = 0;

protected:
    /// Control of the service of this name.
    explicit VornServiceControl(const std::string& serviceName);

    /// The service's name.
    std::string m_serviceName;
};

}  // namespace VornSupport

#endif
