/// @class VornSupport::VornExemplar
/// An empty base for programs that want a common root for the exemplars of
/// their classes. The library itself neither derives from it nor uses it.
#ifndef VSUPT_VORNEXEMPLAR_H
#define VSUPT_VORNEXEMPLAR_H

#include <vsupt/VsuptExport.h>

namespace VornSupport {

class VSUPT_API VornExemplar {
public:
    VornExemplar();
    virtual ~VornExemplar();
};

}  // namespace VornSupport

#endif
