/// @class Module
/// The library's own start-up object and the start and stop functions of its
/// modules.
///
/// Loading libvsupt constructs the one Module, g_ModuleData, which runs the
/// attach sequence: VSUPTInitVornObjectBase, VSUPTInitVornThread,
/// VSUPTInitVornLogging, VSUPTInitVornTimer, VSUPTInitVornLoggingTimer. Its
/// destruction, registered once with __cxa_atexit, runs at process exit or
/// when the library is unloaded, whichever comes first: it destroys the
/// process-wide object factory, then takes the modules down in the opposite
/// order. Functions that do nothing hold the fixed place
/// of their module in the sequence.

/// @file
/// The start-up object and the start and stop functions of the modules.
#ifndef VSUPT_MODULE_H
#define VSUPT_MODULE_H

#include <vsupt/VsuptExport.h>
#include <vsupt/ModuleData.h>

class VSUPT_API Module : public ModuleData {
public:
    Module();
    ~Module() override;

    /// Runs the attach sequence.
    void attach() override;
    /// Runs the detach sequence.
    void detach() override;
};

/// The library's one start-up object, constructed when the library is loaded.
extern VSUPT_API Module& g_ModuleData;

namespace VornSupport {

/// Makes the library-wide section g_pCriticalSection unless it exists.
VSUPT_API void VSUPTInitVornObjectBase();
/// Installs the thread module's handler for SIGUSR2.
VSUPT_API void VSUPTInitVornThread();
/// Holds the logging module's place in the attach sequence; does nothing.
VSUPT_API void VSUPTInitVornLogging();
/// Installs the timer module's handlers for SIGALRM and SIGUSR1.
VSUPT_API void VSUPTInitVornTimer();
/// Holds the logging timer's place in the attach sequence; does nothing.
VSUPT_API void VSUPTInitVornLoggingTimer();

/// Holds the logging timer's place in the detach sequence; does nothing.
VSUPT_API void VSUPTFinitVornLoggingTimer();
/// Deletes the timer manager.
VSUPT_API void VSUPTFinitVornTimer();
/// Holds the logging module's place in the detach sequence; does nothing.
VSUPT_API void VSUPTFinitVornLogging();
/// Holds the thread module's place in the detach sequence; does nothing.
VSUPT_API void VSUPTFinitVornThread();
/// Destroys the library-wide section, if there is one, and leaves its pointer null.
VSUPT_API void VSUPTFinitVornObjectBase();

}  // namespace VornSupport

#endif
