#include <vsupt/VornObjectStream.h>

namespace VornSupport {

VornObjectStream::~VornObjectStream() = default;

}  // namespace VornSupport
