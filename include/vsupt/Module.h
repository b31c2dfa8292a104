// The library's own start-up object and the start and stop functions of its
// modules.
//
// Loading libvsupt constructs the one Module, g_ModuleData, which runs the
// attach sequence: VSUPTInitVornObjectBase, VSUPTInitVornThread,
// VSUPTInitVornLogging, VSUPTInitVornTimer, VSUPTInitVornLoggingTimer. Its
// destruction, registered once with __cxa_atexit, runs at process exit or
// when the library is unloaded, whichever comes first: it destroys the
// process-wide object factory, then takes the modules down in the opposite
// order. Functions that do nothing hold the fixed place
// of their module in the sequence.
#ifndef VSUPT_MODULE_H
#define VSUPT_MODULE_H

#include <vsupt/VsuptExport.h>
#include <vsupt/ModuleData.h>

class VSUPT_API Module : public ModuleData {
public:
    Module();
    ~Module() override;

    void attach() override;
    void detach() override;
};

extern VSUPT_API Module& g_ModuleData;

namespace VornSupport {

VSUPT_API void VSUPTInitVornObjectBase();
VSUPT_API void VSUPTInitVornThread();
VSUPT_API void VSUPTInitVornLogging();
VSUPT_API void VSUPTInitVornTimer();
VSUPT_API void VSUPTInitVornLoggingTimer();

VSUPT_API void VSUPTFinitVornLoggingTimer();
VSUPT_API void VSUPTFinitVornTimer();
VSUPT_API void VSUPTFinitVornLogging();
VSUPT_API void VSUPTFinitVornThread();
VSUPT_API void VSUPTFinitVornObjectBase();

}  // namespace VornSupport

#endif
