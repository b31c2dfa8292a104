// A localised catalogue of wide message texts.
//
// A set is named by a base path. The constructor loads the base file,
// base.pro, which must exist, then overlays it with the optional files for
// the language, base_language.pro, and for the language and country,
// base_language_country.pro, with the pieces of the locale's name as
// VornLocaleFactory gives them: a key in several files takes the text of the
// last one. The files are property files with '=' as the separator, read
// as VornProperties reads them: a FIFO or a device is a file that cannot be
// opened, and a line past the length limit ends that file's load (the
// constructor throws for the base file; a language or country file keeps
// the messages read before the line). The base path is used as it stands,
// with no search.
//
// Loading happens in the constructor on one thread; getMessage may then run
// on any thread, under the store's own lock.
#ifndef VSUPT_VORNMESSAGESET_H
#define VSUPT_VORNMESSAGESET_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornProperties.h>

#include <locale>
#include <string>

namespace VornSupport {

class VSUPT_API VornMessageSet {
public:
    // Throws VornException when the base file can't be opened.
    VornMessageSet(const std::string& baseName, std::locale locale);
    virtual ~VornMessageSet();

    void loadSet(const std::string& baseName);
    // The message under key, widened with the default locale; throws
    // VornMissingMessageException with the key when there is none.
    std::wstring getMessage(const std::string& key) const;

private:
    std::locale m_locale;
    VornProperties<std::wstring> m_messages;
};

}  // namespace VornSupport

#endif
