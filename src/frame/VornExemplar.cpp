#include <vsupt/VornExemplar.h>

namespace VornSupport {

VornExemplar::VornExemplar() = default;

VornExemplar::~VornExemplar() = default;

}  // namespace VornSupport
