/// @class VornSupport::ansi_ctype
/// An inert ctype<wchar_t> facet.
///
/// ansi_ctype converts nothing: its narrowing and widening hand back the
/// replacement character, or leave the destination untouched and report that
/// no character was converted. Despite its name it holds no encoding logic;
/// it is the same placeholder as utf8_ctype. The library never installs it.
/// A locale that holds it owns it unless it was made with refs other than 0.
/// It has no state and may be used on any thread.
#ifndef VSUPT_ANSI_CTYPE_H
#define VSUPT_ANSI_CTYPE_H

#include <vsupt/VsuptExport.h>

#include <locale>

namespace VornSupport {

class VSUPT_API ansi_ctype : public std::ctype<wchar_t> {
public:
    /// A facet with the given reference count for std::locale.
    explicit ansi_ctype(unsigned long refs);
    ~ansi_ctype() override;

protected:
    using std::ctype<wchar_t>::do_widen;
    /// Writes nothing and returns lo.
    const char* do_widen(const char* lo, const char* hi, wchar_t* dest) const override;
    /// Returns dfault.
    char do_narrow(wchar_t c, char dfault) const override;
    /// Writes nothing and returns lo.
    const wchar_t* do_narrow(const wchar_t* lo, const wchar_t* hi, char dfault, char* dest) const override;
    /// Returns dfault. The base has no such operation, so nothing calls it
    /// but a derived class.
    virtual wchar_t do_widen(char c, wchar_t dfault) const;
};

}  // namespace VornSupport

#endif
