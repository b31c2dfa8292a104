// The smart pointer instantiations the library itself uses.
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>
#include <vsupt/VornCriticalSectionObject.h>

namespace VornSupport {

template class VornSmartPointer<VornObjectBase>;
template class VornSmartPointer<LockImplementation>;

}  // namespace VornSupport
