/// @class VornTokenizer
/// Stepwise splitter of a text at a delimiter, taken either as one whole
/// string or as a set of single characters.
///
/// Each next() gives the piece up to the next delimiter; a delimiter at the
/// very end gives one more, empty, piece, and the text after the last
/// delimiter is the last piece. Version strings and version ranges are split
/// with it. Provided for std::string. The class stands in the global
/// namespace, since VornSupport::VornTokenizer names the splitting functions
/// of VornStringUtilities.h; a file that includes both and uses the namespace
/// VornSupport calls those functions by their qualified name. An object
/// belongs to one thread and takes no lock.
#ifndef VSUPT_VORNTOKENIZER_H
#define VSUPT_VORNTOKENIZER_H

#include <vsupt/VsuptExport.h>

#include <cstdint>
#include <string>

template <class T>
class VSUPT_API VornTokenizer {
public:
    /// Tokens of text between delimiters: any of its characters, or the whole string when wholeDelimiter.
    VornTokenizer(const T& text, const T& delimiter, bool wholeDelimiter);

    /// A piece is left while there are a text and a delimiter and the text is
    /// not used up.
    bool hasMoreTokens() const;
    /// The next piece; empty once the text is used up.
    T next();

private:
    T m_text;
    T m_delimiter;
    std::uint64_t m_position;  // T::npos when the text is used up
    bool m_wholeDelimiter;     // false: any one character of m_delimiter
};

extern template class VSUPT_API VornTokenizer<std::string>;

#endif
