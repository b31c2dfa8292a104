/// @class VornSupport::VornRegularExpression
/// The library's regular expression dialect, for std::string and std::wstring.
///
/// @code
/// VornRegularExpression<std::string> expression;
/// expression.setPattern("[0-9]+\\.[0-9]+");
/// unsigned long length = 0;
/// unsigned long at = expression.find(text, length, start);
/// @endcode
///
/// A pattern is a row of tokens, each with at most one factor `?`, `*` or
/// `+`: literal segments (a factor applies to the segment's last character
/// only), sets `[...]` and `[^...]` with ranges, `.` for any character, `^`
/// as the first character and `$` as the last. `\t \n \f \r \b` stand for
/// their control characters, `\0 \^ \e \x` for nothing, and a backslash
/// before anything else for that character. There is no grouping, no
/// alternation, no counted repetition and no case folding. The search is a
/// single forward walk: a literal segment may skip ahead only as the first
/// thing matched, a set never does, repeats are greedy and give characters
/// back only to a later mandatory token, `^` means the start offset of the
/// call, and the anchors are checked once, after the walk. No empty match
/// exists. Patterns whose repeated token consumes nothing (`^*`, `^+`, or an
/// empty literal such as `\0` with `*` or `+`) make find run for ever, and so
/// does a replace of every match with a pattern that can match nothing at
/// all (an empty literal), since each search finds the next empty match
/// behind the replacement.
///
/// An object starts with no pattern and finds nothing. A failed setPattern
/// keeps the previous pattern text but leaves the tokens finished before the
/// error in place, and the object matches with those until a pattern
/// compiles. find, match and print may run on several threads at once and
/// beside setPattern: each find walks the tokens as they were compiled when
/// it began, whatever setPattern does meanwhile. m_patternLock
/// serialises pattern changes and whole replace runs, so setPattern waits for
/// a running replace; it is taken before the token lock.
#ifndef VSUPT_VORNREGULAREXPRESSION_H
#define VSUPT_VORNREGULAREXPRESSION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornRegularExpressionImplementation.h>

#include <cstdint>
#include <string>

namespace VornSupport {

template <class T>
class VSUPT_API VornRegularExpression : public VornRegularExpressionImplementation<T> {
public:
    /// Which matches replace replaces. Any value other than occurrenceAll
    /// replaces the first match only.
    enum Occurrence : std::int32_t {
        occurrenceFirst = 0,  ///< The first match only.
        occurrenceAll = 1     ///< Every match.
    };

    /// An object with no pattern, which finds nothing.
    VornRegularExpression();

    /// Compiles pattern. Throws VornException with the reason when the
    /// pattern does not compile.
    void setPattern(const T& pattern);
    /// Compiles pattern; returns false with the reason in errorText when it
    /// does not compile.
    bool setPatternImpl(const T& pattern, std::string& errorText);

    /// Writes the pattern and its tokens to the log when its level is 9.
    void print();
    using VornRegularExpressionImplementation<T>::print;

    /// The index of the match, or T::npos. length receives the
    /// length of a match; it is left alone when nothing matched at all, and
    /// gets the length found when only an anchor turned the match down.
    unsigned long find(const T& text, unsigned long& length, unsigned long start = 0);
    /// The index of the match from start, or T::npos.
    unsigned long find(const T& text, unsigned long start = 0);
    /// The matched text, or an empty text.
    T match(const T& text, unsigned long start = 0);
    /// The text with the first or every match replaced. Each search resumes
    /// behind the inserted replacement, and each is anchored at its own start.
    T replace(const T& text, const T& replacement, Occurrence occurrence, unsigned long start = 0);

private:
    VornCriticalSectionObject m_patternLock;
};

extern template class VornRegularExpression<std::string>;
extern template class VornRegularExpression<std::wstring>;

}  // namespace VornSupport

#endif
