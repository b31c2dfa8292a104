/// @class VornSupport::VornVersion
/// Version numbers of any depth with an optional text label, and ranges of
/// them.
///
/// A VornVersion holds its numbers, most significant first, and a label that
/// may be empty: "4.2.1" has three numbers, "4.2.beta" two numbers and the
/// label "beta". Parsing appends to what is there; the constructor and the
/// assignment from a text start from an empty version. createRangeVector
/// reads a range list such as "1.0,{2.0-3.0}": an exact version, or a
/// range from a lower version (inclusive) to an upper one (exclusive).
/// VornVersionRange tests a version against one such range.
///
/// Versions are plain values without a lock: one object belongs to one
/// thread at a time. compare, createRangeVector and the range functor are
/// reentrant.
#ifndef VSUPT_VORNVERSION_H
#define VSUPT_VORNVERSION_H

#include <vsupt/VsuptExport.h>

#include <string>
#include <utility>
#include <vector>

namespace VornSupport {

class VSUPT_API VornVersion {
public:
    /// Results of compare.
    enum { Equal = 0, Lower = 1, Higher = 2 };

    VornVersion();
    /// An empty version: the argument is not read.
    explicit VornVersion(int* parts);
    /// Throws VornException for a text that is no version; lets out nothing else.
    explicit VornVersion(const std::string& text);
    /// Copies the version.
    VornVersion(const VornVersion& other);
    /// Copies the version.
    VornVersion& operator=(const VornVersion& other);
    /// Empties the version, then parses the text.
    VornVersion& operator=(const std::string& text);
    virtual ~VornVersion();

    /// Appends the numbers and the label of text. A piece that is not a
    /// number and not the last throws VornException; the numbers before it
    /// stay.
    void parse(const std::string& text);
    /// The numbers joined by ".", then "." and the label if there is one.
    std::string toString() const;
    /// Whether the version was set.
    bool isInit() const;

    /// Equal, Lower when first is below second, Higher when above. Missing
    /// numbers count as 0; the labels decide last, by byte value, and any
    /// label ranks above none.
    static int compare(const VornVersion& first, const VornVersion& second);
    /// The exact versions and ranges of a range list, in its order; an
    /// upper version that is not isInit marks an exact version. Throws
    /// VornException for a malformed range or version; lets out nothing else.
    static std::vector<std::pair<VornVersion, VornVersion> > createRangeVector(const std::string& ranges);

private:
    std::vector<int> m_components;
    std::string m_suffix;
};

/// Whether the versions compare equal.
inline bool operator==(const VornVersion& a, const VornVersion& b) { return VornVersion::compare(a, b) == VornVersion::Equal; }
/// Whether the versions differ.
inline bool operator!=(const VornVersion& a, const VornVersion& b) { return !(a == b); }
/// Whether a is the lower version.
inline bool operator<(const VornVersion& a, const VornVersion& b) { return VornVersion::compare(a, b) == VornVersion::Lower; }
/// Whether a is the higher version.
inline bool operator>(const VornVersion& a, const VornVersion& b) { return VornVersion::compare(a, b) == VornVersion::Higher; }
/// Whether a is not higher than b.
inline bool operator<=(const VornVersion& a, const VornVersion& b) { return !(a > b); }
/// Whether a is not lower than b.
inline bool operator>=(const VornVersion& a, const VornVersion& b) { return !(a < b); }

/// Tests a version against a range of createRangeVector.
class VSUPT_API VornVersionRange {
public:
    /// Whether version lies within range.
    bool operator()(const std::pair<VornVersion, VornVersion>& range, const VornVersion& version) const;
};

}  // namespace VornSupport

#endif
