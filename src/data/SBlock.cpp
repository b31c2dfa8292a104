#include <vsupt/SBlock.h>

namespace VornSupport {

SBlock::~SBlock() = default;

}  // namespace VornSupport
