/// @class VornSupport::VornCmdLineTokenizer
/// Stepwise splitter of a command line into the words of program options.
///
/// The owner makes it over a text and then sets the separator characters and
/// the quote characters. Each next() gives one word: a quoted run keeps its
/// separators, its quotes are dropped, and a doubled quote inside the run
/// stands for one quote character. Quotes are only looked at while a
/// separator still follows somewhere in the text, so the last word keeps its
/// quotes when nothing follows it; a separator at the very start gives one
/// empty word. Provided for std::string. An object belongs to one thread and
/// takes no lock.
#ifndef VSUPT_VORNCMDLINETOKENIZER_H
#define VSUPT_VORNCMDLINETOKENIZER_H

#include <vsupt/VsuptExport.h>

#include <cstdint>
#include <string>

namespace VornSupport {

template <class T>
class VSUPT_API VornCmdLineTokenizer {
public:
    /// A splitter over a copy of text, with no separators and no quotes yet.
    explicit VornCmdLineTokenizer(const T& text);

    /// The characters that separate words; without any, no word is given.
    void setSeparators(const T& separators);
    /// The characters that open and close a quoted run.
    void setQuotes(const T& quotes);

    /// A word is left while the text is not used up and there are both a text
    /// and separators.
    bool hasMoreTokens() const;
    /// The next word; empty once the text is used up.
    T next();

private:
    T quotedWord();

    T m_text;
    T m_separators;
    T m_quotes;
    std::uint64_t m_position;  // T::npos when the text is used up
};

extern template class VSUPT_API VornCmdLineTokenizer<std::string>;

}  // namespace VornSupport

#endif
