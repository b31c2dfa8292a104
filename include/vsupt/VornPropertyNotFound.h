/// @class VornSupport::VornPropertyNotFound
/// Reports a property name that a property store does not hold.
///
/// The text is "Property not found: " followed by the name, with code 0; the
/// default constructor leaves the text empty. A wide name is narrowed with
/// the library's default locale on its way in, so a character that locale
/// cannot represent arrives as a blank. A case-insensitive name counts up to
/// its first NUL. Like every VornException it belongs to the thread that
/// handles it and takes no lock.
#ifndef VSUPT_VORNPROPERTYNOTFOUND_H
#define VSUPT_VORNPROPERTYNOTFOUND_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>
#include <vsupt/char_traits_ci.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornPropertyNotFound : public VornException {
public:
    VornPropertyNotFound();
    /// The exception for the property name.
    explicit VornPropertyNotFound(const std::string& name);
    /// The exception for the property name.
    explicit VornPropertyNotFound(const ci_string& name);
    /// The exception for the property name.
    explicit VornPropertyNotFound(const std::wstring& name);
    /// The exception for the property name.
    explicit VornPropertyNotFound(const ci_wstring& name);
    /// Copies the exception.
    VornPropertyNotFound(const VornPropertyNotFound& other);
    /// Copies the exception.
    VornPropertyNotFound& operator=(const VornPropertyNotFound& other);
    ~VornPropertyNotFound() override;
};

}  // namespace VornSupport

#endif
