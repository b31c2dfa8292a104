#include <vsupt/VsuptVersion.h>

namespace VornSupport {

// Compiled into the library, so it reports the version the library was built
// as, whatever headers the calling program saw.
const char* VsuptVersion()
{
    return VSUPT_VERSION;
}

}  // namespace VornSupport
