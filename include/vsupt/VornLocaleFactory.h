// Locales of the library.
//
// m_oDefaultLocale is the process-wide default locale, taken once from the
// environment while the library is loaded and never changed afterwards;
// every text conversion in the library uses it. getDefaultLocale hands out
// copies and may run on any thread; nothing here takes a lock.
#ifndef VSUPT_VORNLOCALEFACTORY_H
#define VSUPT_VORNLOCALEFACTORY_H

#include <vsupt/VsuptExport.h>

#include <locale>

namespace VornSupport {

class VSUPT_API VornLocaleFactory {
public:
    // The flag is ignored.
    static std::locale getDefaultLocale(bool);

private:
    static std::locale m_oDefaultLocale;
};

}  // namespace VornSupport

#endif
