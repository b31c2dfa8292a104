#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

namespace VornSupport {

// Made before the library's other statics and destroyed after them, so that
// text conversions work during the whole start and stop sequence.
std::locale VornLocaleFactory::m_oDefaultLocale __attribute__((init_priority(101))) = GetAppropriateLocaleObject();

std::locale VornLocaleFactory::getDefaultLocale(bool)
{
    return m_oDefaultLocale;
}

}  // namespace VornSupport
