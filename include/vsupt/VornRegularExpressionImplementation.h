/// @class VornRegularExpressionImplementation
/// The library's small regular expression dialect: compiler and matcher.
///
/// A pattern is compiled in one left-to-right pass into a flat vector of
/// tokens (literal segments, sets, any character, the two anchors), each with
/// one repetition factor. There is no grouping, no alternation and no counted
/// repetition: parentheses, the bar and braces are ordinary characters. find
/// walks the tokens forward over a text with a match stack, greedy repeats and
/// a narrow form of backing up. The corners of both passes are what existing
/// patterns rely on and stay exactly as they are; VornRegularExpression.h
/// describes the language as its users see it.
///
/// The class is provided for std::string and std::wstring. The object owns
/// its tokens; m_tokenLock guards them, and compile holds it for its whole
/// run. compile ends by publishing an immutable compiled copy of the tokens,
/// with each set's members in a table, even when the pattern failed part
/// way. find takes that copy without any lock, counting itself on it, so
/// that finds on one object run side by side, never see a half-built list,
/// and keep the pattern they started with when setPattern replaces it; the
/// copy goes when the last find walking it is done. So find copies nothing
/// and takes no lock, where copying the tokens under m_tokenLock would give
/// the same guarantees at several times the cost of a short search.
///
/// The walk keeps its match stack as runs of one token's entries and takes a
/// repeat's whole stretch at once. Start overs that can only go as an
/// earlier one went are not walked again: one inside the first token's own
/// repeat resumes behind the repeat, a start over from where a literal or
/// set the walk still needs occurs nowhere ends the search, and what the
/// walk did above an entry it fell back through is remembered for later
/// starts. Results and lengths are those of the walk one step at a time, in
/// about n log n where that walk took n squared. When the logger's level is
/// 9 or more the walk takes every step, since the trace records each one;
/// the level-9 diagnostics go to the installed VornLogging.
#ifndef VSUPT_VORNREGULAREXPRESSIONIMPLEMENTATION_H
#define VSUPT_VORNREGULAREXPRESSIONIMPLEMENTATION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

template <class T>
class VSUPT_API VornRegularExpressionImplementation {
public:
    /// What a token matches.
    enum tTokenType : std::int32_t {
        tokenInSet = 0,     ///< One character of a set `[...]`.
        tokenNotInSet = 1,  ///< One character outside a set `[^...]`.
        tokenLiteral = 2,   ///< A literal segment.
        tokenAny = 3,       ///< Any one character, `.`.
        tokenBegin = 4,     ///< The start offset of the call, `^`.
        tokenEnd = 5        ///< The end of the text, `$`.
    };

    /// How often a token may match.
    enum tFactor : std::int32_t {
        factorOne = 0,          ///< Once.
        factorZeroOrOne = 1,    ///< At most once, `?`.
        factorZeroOrMore = 2,   ///< Any number of times, `*`.
        factorOneOrMore = 3     ///< At least once, `+`.
    };

    /// One token of a compiled pattern.
    struct ExpressionToken {
        tTokenType m_type;  ///< What the token matches.
        tFactor m_factor;   ///< How often it may match.
        /// A literal's segment, or a set's members with ranges spelled out;
        /// empty for the other types.
        T m_value;
    };

    /// One entry of the match stack, as the level-9 trace shows it.
    struct MatchToken {
        /// The text the entry matched.
        T m_value;
        /// Where the entry's match begins.
        std::uint64_t m_position = static_cast<std::uint64_t>(-1);
        /// How long the entry's match is.
        std::uint64_t m_length = 0;
        /// Index of the entry below, or -1 where backing up must stop.
        std::int32_t m_backLink = -1;
        /// The token that made the entry.
        const ExpressionToken* m_pToken = nullptr;
    };

    /// An object with no tokens, which finds nothing.
    VornRegularExpressionImplementation();
    /// A copy has the pattern, the tokens and the lock of the original, as a
    /// copy of each would, and compiles a copy of the tokens to walk.
    VornRegularExpressionImplementation(const VornRegularExpressionImplementation& other);
    /// Takes the pattern, the tokens and the lock of other, as the copy does.
    VornRegularExpressionImplementation& operator=(const VornRegularExpressionImplementation& other);
    /// Lets go of the compiled tokens; a find still walking them keeps them.
    ~VornRegularExpressionImplementation();

    /// One record at level 9 for the token.
    void print(ExpressionToken& token);

protected:
    /// Compiles into m_tokens. On failure errorText says why, and m_tokens
    /// keeps the tokens finished before the error.
    bool compile(const T& pattern, std::string& errorText);
    /// The index of the match from start, or T::npos. length receives the
    /// length of a match; it is left alone when nothing matched at all, and
    /// gets the length found when only an anchor turned the match down.
    unsigned long find(const T& text, unsigned long& length, unsigned long start);

    /// The pattern that compiled last.
    T m_pattern;
    /// The tokens compile made last.
    std::vector<ExpressionToken> m_tokens;
    /// Guards m_tokens; compile holds it for its whole run.
    VornSupport::VornCriticalSectionObject m_tokenLock;

private:
    // Defined and used inside the library only.
    struct __attribute__((visibility("hidden"))) CompiledPattern;

    // The compiled copy of m_tokens that find walks, with the number of finds
    // walking it: the source says how. 0 before the first compile.
    std::atomic<std::uintptr_t> m_published;
};

extern template class VornRegularExpressionImplementation<std::string>;
extern template class VornRegularExpressionImplementation<std::wstring>;

#endif
