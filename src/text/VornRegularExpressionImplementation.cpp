#include <vsupt/VornRegularExpressionImplementation.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornLogging.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <type_traits>
#include <utility>

using VornSupport::VornCriticalSection;
using VornSupport::VornLogging;
using VornSupport::endrecord;
using VornSupport::setloglevel;

namespace {

// The logger's level, or -1 when nothing may be logged.
int logLevel()
{
    return VornLogging::isAccessAllowed() ? VornLogging::getInstance()->getLogLevel() : -1;
}

VornLogging& traceRecord()
{
    return *VornLogging::getInstance() << setloglevel(9);
}

// Reads one token at a time from a pattern. Positions index the pattern's
// characters; m_end is the position just past the last one. A token's last
// position is where the character that may carry its factor follows.
template <class T>
class PatternReader {
public:
    using Implementation = VornRegularExpressionImplementation<T>;
    using Token = typename Implementation::ExpressionToken;
    using CharType = typename T::value_type;

    explicit PatternReader(const T& pattern) : m_pattern(pattern), m_end(pattern.size()) {}

    // Reads the token that starts at p; next receives where the following
    // token starts, which is m_end after the last one.
    bool readToken(std::size_t p, Token& token, std::size_t& next, std::string& errorText)
    {
        token = Token{Implementation::tokenLiteral, Implementation::factorOne, T()};
        std::size_t last = p;
        const CharType c = m_pattern[p];
        if (c == '[') {
            if (!readSetStart(p, token, last, errorText)) {
                return false;
            }
        } else if (c == '$') {
            token.m_type = Implementation::tokenEnd;
            if (p + 1 != m_end) {
                return fail("end token found inside expression", errorText);
            }
            last = m_end;
        } else if (c == '.') {
            token.m_type = Implementation::tokenAny;
        } else if (c == '\\') {
            if (p + 1 == m_end) {
                return fail("bad escape expression", errorText);
            }
            // The scan meets the backslash itself and reads the escape.
            if (!scan(p, token, last, errorText)) {
                return false;
            }
        } else if (c == '^' && p == 0) {
            token.m_type = Implementation::tokenBegin;
        } else {
            // Whatever stands here is literal, a factor character included.
            token.m_value.push_back(c);
            if (!scan(p + 1, token, last, errorText)) {
                return false;
            }
        }
        next = readFactor(last, token);
        cutAtFirstNul(token.m_value);
        return true;
    }

private:
    bool readSetStart(std::size_t p, Token& token, std::size_t& last, std::string& errorText)
    {
        token.m_type = Implementation::tokenInSet;
        std::size_t from = p + 1;
        if (endsOrCloses(from)) {
            return fail("empty set in pattern", errorText);
        }
        if (m_pattern[from] == '^') {
            token.m_type = Implementation::tokenNotInSet;
            ++from;
            if (endsOrCloses(from)) {
                return fail("empty set in pattern", errorText);
            }
        }
        return scan(from, token, last, errorText);
    }

    // Reads a literal's or a set's characters from r on. A set needs no
    // closing bracket, and `$`, `.` and `[` close it silently, leaving the
    // rest of the brackets to later tokens.
    bool scan(std::size_t r, Token& token, std::size_t& last, std::string& errorText)
    {
        const bool inSet = token.m_type != Implementation::tokenLiteral;
        T& value = token.m_value;
        for (;; ++r) {
            if (r == m_end) {
                last = m_end;
                return true;
            }
            const CharType c = m_pattern[r];
            if (c == '$' || c == '.' || c == '[') {
                last = r - 1;
                return true;
            }
            if (c == '*' || c == '+' || c == '?') {
                // The factor belongs to the last character alone, which is
                // given back to be read again, raw, as a token of its own.
                if (value.size() > 1) {
                    value.pop_back();
                    last = r - 2;
                } else {
                    last = r - 1;
                }
                return true;
            }
            if (inSet && c == ']') {
                last = r;
                return true;
            }
            if (inSet && c == '-') {
                if (!appendRange(r, value, errorText)) {
                    return false;
                }
            } else if (c == '\\') {
                if (++r == m_end) {
                    return fail("bad regular expression", errorText);
                }
                appendEscaped(m_pattern[r], value);
            } else {
                value.push_back(c);
            }
        }
    }

    // r stands on the `-` and is left on the high end. The low end is the
    // last member so far, or NUL before the first.
    bool appendRange(std::size_t& r, T& value, std::string& errorText)
    {
        using Signed = std::make_signed_t<CharType>;
        using Unsigned = std::make_unsigned_t<CharType>;
        if (++r == m_end) {
            return fail("end of expression found in pattern", errorText);
        }
        const Signed low = value.empty() ? 0 : static_cast<Signed>(value.back());
        const Signed high = static_cast<Signed>(m_pattern[r]);
        if (low > high) {
            return fail("invalid endpoint in range", errorText);
        }
        // The counter is as wide as a character. A narrow range up to 0x7F
        // therefore wraps round and never stops: such patterns must not be
        // written.
        for (Signed c = low; c <= high; c = static_cast<Signed>(static_cast<Unsigned>(c) + 1u)) {
            value.push_back(static_cast<CharType>(c));
        }
        return true;
    }

    static void appendEscaped(CharType c, T& value)
    {
        switch (c) {
        case 't': value.push_back(CharType('\t')); break;
        case 'n': value.push_back(CharType('\n')); break;
        case 'f': value.push_back(CharType('\f')); break;
        case 'r': value.push_back(CharType('\r')); break;
        case 'b': value.push_back(CharType('\b')); break;
        case '0':
        case '^':
        case 'e':
        case 'x':
            break;
        default: value.push_back(c); break;
        }
    }

    // Reads at most one factor character after the last position and
    // returns where the next token starts.
    std::size_t readFactor(std::size_t last, Token& token) const
    {
        if (last == m_end || last + 1 == m_end) {
            return m_end;
        }
        switch (m_pattern[last + 1]) {
        case '+': token.m_factor = Implementation::factorOneOrMore; return last + 2;
        case '?': token.m_factor = Implementation::factorZeroOrOne; return last + 2;
        case '*': token.m_factor = Implementation::factorZeroOrMore; return last + 2;
        default: return last + 1;
        }
    }

    bool endsOrCloses(std::size_t r) const { return r == m_end || m_pattern[r] == ']'; }

    static void cutAtFirstNul(T& value)
    {
        const std::size_t nul = value.find(CharType());
        if (nul != T::npos) {
            value.erase(nul);
        }
    }

    static bool fail(const char* text, std::string& errorText)
    {
        errorText = text;
        return false;
    }

    const T& m_pattern;
    const std::size_t m_end;
};

template <class Token>
bool sameToken(const Token& a, const Token& b)
{
    return a.m_value == b.m_value && a.m_type == b.m_type && a.m_factor == b.m_factor;
}

const char* const g_typeNames[] = {"in set", "not in set", "literal segment=", "any", "begin", "end"};
const char* const g_factorNames[] = {"one", "zero or one", "zero or more", "one or more"};

template <class T>
void printToken(const typename VornRegularExpressionImplementation<T>::ExpressionToken& token)
{
    if (logLevel() < 9) {
        return;
    }
    VornLogging& log = traceRecord() << "ExpressionToken: type=" << g_typeNames[token.m_type];
    if (token.m_type == VornRegularExpressionImplementation<T>::tokenLiteral) {
        log << token.m_value;
    }
    log << " factor=" << g_factorNames[token.m_factor] << endrecord;
}

// Which characters a set admits: a table for the characters of one byte,
// and the wider members sorted for a binary search.
template <class T>
class SetMembers {
public:
    using CharType = typename T::value_type;

    SetMembers(const T& members, bool inSet) : m_inSet(inSet)
    {
        for (const CharType c : members) {
            if (isByte(c)) {
                m_bytes[byteOf(c)] = true;
            } else {
                m_wide.push_back(c);
            }
        }
        std::sort(m_wide.begin(), m_wide.end());
        m_wide.erase(std::unique(m_wide.begin(), m_wide.end()), m_wide.end());
    }

    bool admits(CharType c) const
    {
        const bool member = isByte(c) ? m_bytes[byteOf(c)] : std::binary_search(m_wide.begin(), m_wide.end(), c);
        return member == m_inSet;
    }

private:
    using Unsigned = std::make_unsigned_t<CharType>;

    static bool isByte(CharType c) { return static_cast<Unsigned>(c) < 256; }
    static std::size_t byteOf(CharType c) { return static_cast<Unsigned>(c); }

    std::array<bool, 256> m_bytes{};
    std::vector<CharType> m_wide;
    bool m_inSet;
};

// A token with what the walk asks of it, worked out once when the pattern
// compiles.
template <class T>
struct CompiledToken {
    using Implementation = VornRegularExpressionImplementation<T>;
    using Token = typename Implementation::ExpressionToken;

    CompiledToken(const Token& source, std::size_t sameAs)
        : token(source),
          type(source.m_type),
          factor(source.m_factor),
          repeated(factor == Implementation::factorZeroOrMore || factor == Implementation::factorOneOrMore),
          mandatory(factor == Implementation::factorOne || factor == Implementation::factorOneOrMore),
          needed(mandatory && (isSet() || (type == Implementation::tokenLiteral && !source.m_value.empty()))),
          strides(repeated && (isSet() || type == Implementation::tokenAny ||
                               (type == Implementation::tokenLiteral && source.m_value.size() == 1))),
          sameAs(sameAs),
          value(source.m_value),
          members(source.m_value, type == Implementation::tokenInSet)
    {
    }

    bool isSet() const { return type == Implementation::tokenInSet || type == Implementation::tokenNotInSet; }

    const Token& token;
    const typename Implementation::tTokenType type;
    const typename Implementation::tFactor factor;
    // `*` or `+`: the token stays current until it fails.
    const bool repeated;
    // `+` or no factor: where the token fails, the walk backs up.
    const bool mandatory;
    // A mandatory set or non-empty literal: no walk passes it without a
    // match of its own, or of an equal token, at or after its last start.
    const bool needed;
    // A repeat of one character at a time, whose whole stretch the walk can
    // take at once.
    const bool strides;
    // The first token equal to this one in value, type and factor. Equal
    // tokens count as the same token where a `+` looks at the stack's top.
    const std::size_t sameAs;
    const T& value;
    // Meaningful for sets only.
    const SetMembers<T> members;
};

}  // namespace

// The tokens as find walks them, published whole by compile and never
// changed after.
template <class T>
struct VornRegularExpressionImplementation<T>::CompiledPattern {
    explicit CompiledPattern(const std::vector<ExpressionToken>& source) : tokens(source)
    {
        walked.reserve(tokens.size());
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            std::size_t first = 0;
            while (!sameToken(tokens[first], tokens[i])) {
                ++first;
            }
            walked.emplace_back(tokens[i], first);
        }
    }

    const std::vector<ExpressionToken> tokens;
    std::vector<CompiledToken<T>> walked;
    // The finds that still walk the pattern once it is no longer published,
    // less those that have left it since; see PatternHold.
    mutable std::atomic<std::int64_t> walkers{0};
};

namespace {

// How compile hands its compiled tokens to find without a lock. The word
// m_published holds the pattern's address in its low 48 bits and, in the
// high 16, the number of finds that took the pattern from the word and are
// walking it. A find adds one to the word to take the pattern; when it is
// done it takes one off the word again if the pattern is still there, and
// off the pattern's own count of walkers if compile has replaced it. The
// replacement moves the finds the word counted onto that count, so the
// count is 0 or below before the move and the number of finds still
// walking after it; whoever brings it to 0 deletes the pattern. A find
// thus takes no lock and waits for nothing, and a find killed on its way
// keeps its pattern alive for good. The count in the word must stay below
// 65536: finds running at once on one object, with those killed while
// their pattern was published.
template <class Pattern>
class PatternHold {
public:
    explicit PatternHold(std::atomic<std::uintptr_t>& published)
        : m_published(published),
          m_pattern(addressIn(published.fetch_add(kOneFind, std::memory_order_acquire)))
    {
    }

    PatternHold(const PatternHold&) = delete;
    PatternHold& operator=(const PatternHold&) = delete;

    ~PatternHold()
    {
        std::uintptr_t word = m_published.load(std::memory_order_relaxed);
        while (addressIn(word) == m_pattern) {
            if (m_published.compare_exchange_weak(word, word - kOneFind, std::memory_order_release,
                                                  std::memory_order_relaxed)) {
                return;
            }
        }
        leave(m_pattern, 1);
    }

    // Null before the first compile.
    const Pattern* pattern() const { return m_pattern; }

    // Publishes next, or nothing, in place of the pattern published now.
    static void publish(std::atomic<std::uintptr_t>& published, const Pattern* next)
    {
        const std::uintptr_t word = published.exchange(reinterpret_cast<std::uintptr_t>(next),
                                                       std::memory_order_acq_rel);
        leave(addressIn(word), -static_cast<std::int64_t>(word >> kFindsShift));
    }

private:
    static constexpr int kFindsShift = 48;
    static constexpr std::uintptr_t kOneFind = std::uintptr_t(1) << kFindsShift;

    static const Pattern* addressIn(std::uintptr_t word)
    {
        return reinterpret_cast<const Pattern*>(word & (kOneFind - 1));
    }

    // Takes count walkers off the pattern, and deletes it when none is left.
    static void leave(const Pattern* pattern, std::int64_t count)
    {
        if (pattern != nullptr && pattern->walkers.fetch_sub(count, std::memory_order_acq_rel) == count) {
            delete pattern;
        }
    }

    std::atomic<std::uintptr_t>& m_published;
    const Pattern* const m_pattern;
};

// The match stack, kept as runs: the entries one token made one after the
// other, each beginning where the one before ended, are one run. A repeat
// over a long stretch of text is then one run and not one entry for each
// character. Every entry of a run but the first links to the entry below.
// The first few runs stand in place, so that a short walk allocates nothing.
class MatchStack {
public:
    struct Run {
        std::size_t token;
        std::uint64_t position;
        std::uint64_t step;  // the length of each entry
        std::uint64_t count;
        std::int32_t firstBackLink;
        std::uint64_t firstIndex;

        std::uint64_t end() const { return position + step * count; }
        std::uint64_t positionOf(std::uint64_t i) const { return position + step * i; }
        std::int32_t backLink(std::uint64_t i) const
        {
            return i == 0 ? firstBackLink : static_cast<std::int32_t>(firstIndex + i - 1);
        }
    };

    MatchStack() = default;
    MatchStack(const MatchStack&) = delete;
    MatchStack& operator=(const MatchStack&) = delete;

    bool empty() const { return m_runCount == 0; }
    const Run& bottom() const { return m_runs[0]; }
    const Run& top() const { return m_runs[m_runCount - 1]; }
    const Run* begin() const { return m_runs; }
    const Run* end() const { return m_runs + m_runCount; }
    std::int32_t topBackLink() const { return top().backLink(top().count - 1); }
    // The index the next entry gets.
    std::uint64_t size() const { return m_size; }

    // Pushes count entries of length step from position on. Entries of
    // length 0 stay apart, one run each.
    void push(std::size_t token, std::uint64_t position, std::uint64_t step, std::uint64_t count,
              std::int32_t backLink)
    {
        if (!empty() && step != 0 && top().token == token && top().step == step && top().end() == position) {
            m_runs[m_runCount - 1].count += count;
        } else {
            if (m_runCount == m_capacity) {
                grow();
            }
            m_runs[m_runCount++] = Run{token, position, step, count, backLink, m_size};
        }
        m_size += count;
    }

    // Keeps the first count entries of the top run, and returns the position
    // of the first entry removed.
    std::uint64_t cutTopTo(std::uint64_t count)
    {
        Run& run = m_runs[m_runCount - 1];
        m_size -= run.count - count;
        run.count = count;
        const std::uint64_t position = run.positionOf(count);
        if (count == 0) {
            --m_runCount;
        }
        return position;
    }

    void clear()
    {
        m_runCount = 0;
        m_size = 0;
    }

private:
    static constexpr std::size_t kInPlace = 16;

    void grow()
    {
        std::vector<Run> larger(m_capacity * 2);
        std::copy(m_runs, m_runs + m_runCount, larger.begin());
        m_spilled = std::move(larger);
        m_runs = m_spilled.data();
        m_capacity = m_spilled.size();
    }

    Run m_inPlace[kInPlace];
    std::vector<Run> m_spilled;
    Run* m_runs = m_inPlace;
    std::size_t m_capacity = kInPlace;
    std::size_t m_runCount = 0;
    std::uint64_t m_size = 0;
};

// What the walk learned on its earlier starts: for each token, the ends of
// its entries that the walk fell back through, and the token that was
// current when it did. Backing up passes only entries whose back link is
// not -1, and above such an entry the walk depends on nothing but the
// entry's token and end until it falls back through it: nothing below is
// looked at, and no start over can come first. So a later start that
// pushes an entry with the same token and end, whose back link is not -1
// either, goes on at once as the walk did then: at the entry's position,
// with the entry gone and that token current. Kept from the first start
// over on, so that a search that never starts over pays nothing for it.
class Falls {
public:
    struct Fall {
        std::uint64_t end;
        std::size_t current;
    };

    bool active() const { return !m_byToken.empty(); }
    void activate(std::size_t tokenCount) { m_byToken.resize(tokenCount); }

    void remember(std::size_t token, std::uint64_t firstEnd, std::uint64_t lastEnd, std::size_t current)
    {
        auto& stretches = m_byToken[token];
        auto next = stretches.lower_bound(firstEnd);
        if (next != stretches.begin()) {
            const auto previous = std::prev(next);
            if (previous->second.last + 1 >= firstEnd && previous->second.current == current) {
                firstEnd = previous->first;
                lastEnd = std::max(lastEnd, previous->second.last);
                next = stretches.erase(previous);
            }
        }
        while (next != stretches.end() && next->first <= lastEnd + 1 && next->second.current == current) {
            lastEnd = std::max(lastEnd, next->second.last);
            next = stretches.erase(next);
        }
        stretches.emplace_hint(next, firstEnd, Stretch{lastEnd, current});
    }

    // The first remembered end in [first, last] of an entry of the token.
    bool firstIn(std::size_t token, std::uint64_t first, std::uint64_t last, Fall& fall) const
    {
        const auto& stretches = m_byToken[token];
        const auto next = stretches.upper_bound(first);
        if (next != stretches.begin() && std::prev(next)->second.last >= first) {
            fall = Fall{first, std::prev(next)->second.current};
            return true;
        }
        if (next != stretches.end() && next->first <= last) {
            fall = Fall{next->first, next->second.current};
            return true;
        }
        return false;
    }

private:
    // Ends from the key to last, all with the same current token.
    struct Stretch {
        std::uint64_t last;
        std::size_t current;
    };

    std::vector<std::map<std::uint64_t, Stretch>> m_byToken;
};

// One walk of the tokens over a text, as the steps of the walk are written
// down: greedy repeats, backing up one entry at a time to the last token
// that failed, and starting over one character behind the bottom entry.
//
// When the logger's level is below 9 the walk takes the same decisions in
// larger strides: a repeat takes its whole stretch at once, backing up scans
// a run for the first entry where the failing token matches, and a leading
// optional set is looked for with one scan. Three things spare it the work
// of start overs that can only go as an earlier one went:
//
// - A start over from inside the stretch of the bottom token's first repeat
//   goes on behind the stretch. The walk started over from the repeat's
//   next character takes the same steps as the walk that failed did from
//   its entry there, for they differ only below that entry; so it fails
//   when that walk backs up to the entry, and starts over one further.
// - A start over from where a set or a non-empty literal that no walk can
//   pass without a match of its own (one without `?` or `*`, at or behind
//   the token started over from) matches nowhere ends the search: every
//   walk from there fails with an empty stack.
// - What the walk did above an entry it later fell back through is kept
//   (Falls), and a later start that pushes the same entry goes on at once.
//
// So a search costs about n log n in the length of the text at worst, where
// the walk step by step can cost n squared. At level 9 and above every step
// is taken, since each one is traced.
template <class T>
class Walk {
public:
    using Implementation = VornRegularExpressionImplementation<T>;
    using Token = typename Implementation::ExpressionToken;
    using Entry = typename Implementation::MatchToken;
    using Compiled = CompiledToken<T>;
    using Run = MatchStack::Run;
    using CharType = typename T::value_type;

    Walk(const Compiled* tokens, std::size_t tokenCount, const T& text, int logLevel)
        : m_tokens(tokens),
          m_tokenCount(tokenCount),
          m_text(text),
          m_tracedEntries(logLevel == 9),
          m_stepwise(logLevel >= 9)
    {
    }

    unsigned long find(unsigned long& length, unsigned long start)
    {
        std::size_t current = 0;
        unsigned long pos = start;
        while (current < m_tokenCount) {
            const Compiled& token = m_tokens[current];
            const std::uint64_t entriesBefore = m_stack.size();
            const unsigned long next = matchToken(pos, current);
            if (next != T::npos) {
                // A repeated token stays current until it fails: greedy. A
                // stretch taken at once ends where the token fails, and a
                // repeat that fails on its own entries moves on.
                pos = next;
                const std::size_t matched = current;
                if (!token.repeated || (token.strides && !m_stepwise)) {
                    ++current;
                }
                if (m_falls.active() && m_stack.size() > entriesBefore) {
                    recallFall(matched, m_stack.size() - entriesBefore, pos, current);
                }
            } else if (m_stack.empty()) {
                // An optional token that leads is looked for along the
                // text, never skipped.
                if (token.mandatory) {
                    break;
                }
                pos = nextLeadingTry(pos, token);
                if (pos == T::npos) {
                    break;
                }
            } else if (!token.mandatory || (token.repeated && sameAsTop(token))) {
                ++current;
            } else if (m_stack.topBackLink() != -1) {
                // Give the failing token another chance one entry earlier.
                pos = backUp(current);
            } else {
                // Start over behind the bottom entry. The stretch the walk
                // covered from there is what searches ahead may spend.
                const Run& bottom = m_stack.bottom();
                m_searchBudget += m_reach - bottom.position;
                current = bottom.token;
                pos = startOverPosition();
                m_stack.clear();
                m_reach = 0;
                if (!m_stepwise && !m_falls.active()) {
                    m_falls.activate(m_tokenCount);
                }
                if (!neededTokensOccur(current, pos)) {
                    break;
                }
            }
        }
        if (m_tracedEntries) {
            printStack();
        }
        const unsigned long result = resultOfWalk(length, start);
        if (m_stepwise) {
            traceRecord() << "VornRegularExpressionImplementation::find: match found at " << static_cast<int>(result)
                          << ":" << length << endrecord;
        }
        return result;
    }

private:
    unsigned long matchToken(unsigned long pos, std::size_t index)
    {
        switch (m_tokens[index].type) {
        case Implementation::tokenInSet:
        case Implementation::tokenNotInSet: return matchSet(pos, index);
        case Implementation::tokenLiteral: return matchLiteral(pos, index);
        case Implementation::tokenAny: return matchAny(pos, index);
        case Implementation::tokenBegin: m_beginSeen = true; return pos;
        case Implementation::tokenEnd: m_endSeen = true; return pos;
        }
        return T::npos;
    }

    // A literal met with an empty stack is searched for along the text;
    // otherwise only an occurrence at pos counts, and the search ahead is
    // made for the trace alone.
    unsigned long matchLiteral(unsigned long pos, std::size_t index)
    {
        const Compiled& token = m_tokens[index];
        const T& value = token.value;
        unsigned long found = T::npos;
        if (m_stack.empty() || m_stepwise) {
            found = search(value, pos);
        } else if (occursAt(value, pos)) {
            found = pos;
        }
        if (m_stepwise) {
            traceSearch(value, pos, found);
        }
        if (found == T::npos || (found != pos && !m_stack.empty())) {
            return T::npos;
        }
        unsigned long end = found + value.size();
        if (token.strides && !m_stepwise) {
            const unsigned long limit = stretchLimit(index, found);
            while (end < limit && m_text[end] == value[0]) {
                ++end;
            }
        }
        addMatch(index, found, value.size(), value.size() == 1 ? end - found : 1);
        return end;
    }

    __attribute__((noinline, cold)) void traceSearch(const T& value, unsigned long pos, unsigned long found)
    {
        traceRecord() << m_text << ".find (" << value << ", " << pos << ") = " << found << endrecord;
    }

    // A set never looks ahead: only the character at pos counts.
    unsigned long matchSet(unsigned long pos, std::size_t index)
    {
        const Compiled& token = m_tokens[index];
        if (pos >= m_text.size() || !token.members.admits(m_text[pos])) {
            return T::npos;
        }
        unsigned long end = pos + 1;
        if (token.strides && !m_stepwise) {
            const unsigned long limit = stretchLimit(index, pos);
            while (end < limit && token.members.admits(m_text[end])) {
                ++end;
            }
        }
        addMatch(index, pos, 1, end - pos);
        return end;
    }

    unsigned long matchAny(unsigned long pos, std::size_t index)
    {
        if (pos >= m_text.size()) {
            return T::npos;
        }
        const unsigned long end = m_tokens[index].strides && !m_stepwise ? stretchLimit(index, pos) : pos + 1;
        addMatch(index, pos, 1, end - pos);
        return end;
    }

    // How far a stretch of the token from pos may reach: to the end of the
    // text, or to the first end of an entry that an earlier start fell back
    // through, where the walk goes on at once. The stretch's first entry
    // counts only if backing up may pass it.
    unsigned long stretchLimit(std::size_t index, unsigned long pos) const
    {
        if (!m_falls.active()) {
            return m_text.size();
        }
        Falls::Fall fall;
        const unsigned long first = pos + (backLinkFor(m_tokens[index]) == -1 ? 2 : 1);
        return m_falls.firstIn(index, first, m_text.size(), fall) ? fall.end : m_text.size();
    }

    // Whether the token matches at pos with entries on the stack, without
    // entering the match.
    bool matchesAt(const Compiled& token, unsigned long pos) const
    {
        switch (token.type) {
        case Implementation::tokenInSet:
        case Implementation::tokenNotInSet: return pos < m_text.size() && token.members.admits(m_text[pos]);
        case Implementation::tokenLiteral: return occursAt(token.value, pos);
        case Implementation::tokenAny: return pos < m_text.size();
        default: return true;
        }
    }

    // The next place where a leading optional token that failed at pos is
    // tried, or T::npos when the walk ends. Stepwise it is the next
    // character; otherwise a set is scanned for, and any other token fails
    // at every later place as it did at pos.
    unsigned long nextLeadingTry(unsigned long pos, const Compiled& token) const
    {
        if (++pos >= m_text.size()) {
            return T::npos;
        }
        if (m_stepwise) {
            return pos;
        }
        if (!token.isSet()) {
            return T::npos;
        }
        while (pos < m_text.size() && !token.members.admits(m_text[pos])) {
            ++pos;
        }
        return pos < m_text.size() ? pos : T::npos;
    }

    bool sameAsTop(const Compiled& token) const { return m_tokens[m_stack.top().token].sameAs == token.sameAs; }

    // Pops the top entry, whose back link is not -1, and returns its
    // position, where the failing token is tried again. In strides, pops
    // the top run's entries down to the first where the token matches; the
    // run's first entry may be where backing up stops, and is then left.
    unsigned long backUp(std::size_t current)
    {
        const Run& top = m_stack.top();
        std::uint64_t entry = top.count - 1;
        if (!m_stepwise) {
            const std::uint64_t lowest = top.firstBackLink == -1 ? 1 : 0;
            const Compiled& token = m_tokens[current];
            while (entry > lowest && !matchesAt(token, top.positionOf(entry))) {
                --entry;
            }
            if (m_falls.active()) {
                m_falls.remember(top.token, top.positionOf(entry) + top.step, top.end(), current);
            }
        }
        return m_stack.cutTopTo(entry);
    }

    // Where the entries just pushed include one that an earlier start fell
    // back through, falls back through it at once: pops it with those above
    // it and makes the token that was current then current again, at the
    // entry's position.
    void recallFall(std::size_t token, std::uint64_t pushed, unsigned long& pos, std::size_t& current)
    {
        const Run& top = m_stack.top();
        std::uint64_t first = top.count - pushed;
        if (first == 0 && top.firstBackLink == -1) {
            ++first;
        }
        Falls::Fall fall;
        if (first == top.count || !m_falls.firstIn(token, top.positionOf(first) + top.step, top.end(), fall)) {
            return;
        }
        const std::uint64_t entry = top.step == 0 ? top.count - 1 : (fall.end - top.position) / top.step - 1;
        pos = m_stack.cutTopTo(entry);
        current = fall.current;
    }

    // One character behind the bottom entry, or behind the stretch of the
    // bottom token's first repeat.
    unsigned long startOverPosition() const
    {
        const Run& bottom = m_stack.bottom();
        const unsigned long next = bottom.position + 1;
        if (m_stepwise || !m_tokens[bottom.token].strides) {
            return next;
        }
        return std::max<unsigned long>(next, m_bottomRunEnd);
    }

    // Whether each token from the one started over from on that no walk can
    // pass without a match may still match at or after pos. The searches
    // spend no more than the walks before them covered, so that a search
    // that would soon have ended never pays for a scan of the whole text.
    // What each search found or ruled out is kept, since pos only grows.
    bool neededTokensOccur(std::size_t from, unsigned long pos)
    {
        if (m_stepwise) {
            return true;
        }
        if (m_needs.empty()) {
            m_needs.assign(m_tokenCount, Need{T::npos, 0});
        }
        for (std::size_t i = from; i < m_tokenCount; ++i) {
            const Compiled& token = m_tokens[i];
            Need& need = m_needs[i];
            if (!token.needed || (need.found != T::npos && need.found >= pos)) {
                continue;
            }
            const unsigned long first = std::max(pos, need.searchedTo);
            const unsigned long limit = first + std::min(m_searchBudget, m_text.size() - first);
            need.found = token.isSet() ? scanSet(token, first, limit) : search(token.value, first, limit);
            need.searchedTo = need.found == T::npos ? limit : need.found + 1;
            m_searchBudget -= need.searchedTo - first;
            if (need.found == T::npos && limit == m_text.size()) {
                return false;
            }
        }
        return true;
    }

    // The first character in [pos, limit) that the set admits.
    unsigned long scanSet(const Compiled& token, unsigned long pos, unsigned long limit) const
    {
        for (; pos < limit; ++pos) {
            if (token.members.admits(m_text[pos])) {
                return pos;
            }
        }
        return T::npos;
    }

    // The ordinary substring search, written out: the segments are short,
    // and comparing them in place beats a call for each candidate. Only
    // occurrences that begin before limit count.
    unsigned long search(const T& value, unsigned long pos, unsigned long limit = T::npos) const
    {
        if (value.empty()) {
            return pos <= m_text.size() ? pos : T::npos;
        }
        if (m_text.size() < value.size()) {
            return T::npos;
        }
        const unsigned long end = std::min<unsigned long>(limit, m_text.size() - value.size() + 1);
        while (pos < end) {
            pos = findFirstCharacter(value[0], pos, end);
            if (pos == T::npos || occursAt(value, pos)) {
                return pos;
            }
            ++pos;
        }
        return T::npos;
    }

    // The first c in [pos, end). A near one is found by looking; a call to
    // the library's scan pays only over a longer way.
    unsigned long findFirstCharacter(CharType c, unsigned long pos, unsigned long end) const
    {
        const unsigned long near = end - pos < 8 ? end : pos + 8;
        for (; pos < near; ++pos) {
            if (m_text[pos] == c) {
                return pos;
            }
        }
        if (pos == end) {
            return T::npos;
        }
        const auto* text = m_text.data();
        const auto* found = T::traits_type::find(text + pos, end - pos, c);
        return found == nullptr ? T::npos : static_cast<unsigned long>(found - text);
    }

    bool occursAt(const T& value, unsigned long pos) const
    {
        if (pos > m_text.size() || m_text.size() - pos < value.size()) {
            return false;
        }
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (m_text[pos + i] != value[i]) {
                return false;
            }
        }
        return true;
    }

    void addMatch(std::size_t index, std::uint64_t position, std::uint64_t step, std::uint64_t count)
    {
        const std::int32_t backLink = backLinkFor(m_tokens[index]);
        if (m_tracedEntries) {
            traceAddMatch(index, position, step, backLink);
        }
        if (m_stack.empty()) {
            m_bottomRunEnd = position + step * count;
        }
        m_reach = std::max<unsigned long>(m_reach, position + step * count);
        m_stack.push(index, position, step, count, backLink);
    }

    // The back link of an entry of the token pushed now. The first repeat
    // of a `+` links past the entry below, so that backing up never gives
    // away the one occurrence it demands.
    std::int32_t backLinkFor(const Compiled& token) const
    {
        if (m_stack.empty()) {
            return -1;
        }
        if (token.factor == Implementation::factorOneOrMore && !sameAsTop(token)) {
            return m_stack.topBackLink();
        }
        return static_cast<std::int32_t>(m_stack.size() - 1);
    }

    // Kept out of line, so that the walk's own path stays short.
    __attribute__((noinline, cold)) void traceAddMatch(std::size_t index, std::uint64_t position, std::uint64_t step,
                                                       std::int32_t backLink)
    {
        traceRecord() << "VornRegularExpressionImplementation::addMatch: begin" << endrecord;
        printEntry(entry(index, position, step, backLink));
        traceRecord() << "VornRegularExpressionImplementation::addMatch: end" << endrecord;
    }

    Entry entry(std::size_t index, std::uint64_t position, std::uint64_t length, std::int32_t backLink) const
    {
        const Token& token = m_tokens[index].token;
        T value = token.m_type == Implementation::tokenLiteral ? token.m_value : m_text.substr(position, 1);
        return Entry{std::move(value), position, length, backLink, &token};
    }

    void printEntry(const Entry& entry)
    {
        printToken<T>(*entry.m_pToken);
        traceRecord() << "\tmatch token:" << endrecord;
        traceRecord() << "\t\tsegment: " << entry.m_value << ":" << static_cast<unsigned long>(entry.m_position)
                      << ":" << static_cast<unsigned long>(entry.m_length) << ":"
                      << static_cast<int>(entry.m_backLink) << endrecord;
    }

    __attribute__((noinline, cold)) void printStack()
    {
        traceRecord() << "VornRegularExpressionImplementation::find: match stack begin" << endrecord;
        for (const Run& run : m_stack) {
            for (std::uint64_t i = 0; i < run.count; ++i) {
                printEntry(entry(run.token, run.positionOf(i), run.step, run.backLink(i)));
            }
        }
        traceRecord() << "VornRegularExpressionImplementation::find: match stack end" << endrecord;
    }

    // The match is the stack from its bottom entry, as far as each entry
    // begins where the one before ended; the anchors are checked only now.
    unsigned long resultOfWalk(unsigned long& length, unsigned long start) const
    {
        if (m_stack.empty()) {
            return T::npos;
        }
        unsigned long result = m_stack.bottom().position;
        length = 0;
        for (const Run& run : m_stack) {
            if (run.position != result + length) {
                return T::npos;
            }
            length += run.step * run.count;
        }
        if (m_beginSeen && result != start) {
            return T::npos;
        }
        if (m_endSeen && result + length != m_text.size()) {
            return T::npos;
        }
        return result;
    }

    const Compiled* const m_tokens;
    const std::size_t m_tokenCount;
    const T& m_text;
    const bool m_tracedEntries;
    const bool m_stepwise;
    MatchStack m_stack;
    bool m_beginSeen = false;
    bool m_endSeen = false;
    // Where the bottom entry's first push ended, with all of its repeat.
    std::uint64_t m_bottomRunEnd = 0;
    // The furthest end of an entry since the last start over.
    unsigned long m_reach = 0;
    unsigned long m_searchBudget = 0;
    // For each token, where it matches at or after the last start over, or
    // T::npos, and how far that was searched.
    struct Need {
        unsigned long found;
        unsigned long searchedTo;
    };
    std::vector<Need> m_needs;
    // Kept from the first start over on.
    Falls m_falls;
};

}  // namespace

template <class T>
VornRegularExpressionImplementation<T>::VornRegularExpressionImplementation() : m_tokenLock(false), m_published(0)
{
}

template <class T>
VornRegularExpressionImplementation<T>::VornRegularExpressionImplementation(
    const VornRegularExpressionImplementation& other)
    : m_pattern(other.m_pattern), m_tokens(other.m_tokens), m_tokenLock(other.m_tokenLock), m_published(0)
{
    PatternHold<CompiledPattern>::publish(m_published, new CompiledPattern(m_tokens));
}

template <class T>
VornRegularExpressionImplementation<T>& VornRegularExpressionImplementation<T>::operator=(
    const VornRegularExpressionImplementation& other)
{
    if (this != &other) {
        m_pattern = other.m_pattern;
        m_tokens = other.m_tokens;
        m_tokenLock = other.m_tokenLock;
        PatternHold<CompiledPattern>::publish(m_published, new CompiledPattern(m_tokens));
    }
    return *this;
}

template <class T>
VornRegularExpressionImplementation<T>::~VornRegularExpressionImplementation()
{
    PatternHold<CompiledPattern>::publish(m_published, nullptr);
}

template <class T>
void VornRegularExpressionImplementation<T>::print(ExpressionToken& token)
{
    printToken<T>(token);
}

template <class T>
bool VornRegularExpressionImplementation<T>::compile(const T& pattern, std::string& errorText)
{
    VornCriticalSection guard(m_tokenLock, true);
    m_tokens.clear();
    PatternReader<T> reader(pattern);
    bool compiled = true;
    for (std::size_t p = 0; compiled && p != pattern.size();) {
        ExpressionToken token;
        compiled = reader.readToken(p, token, p, errorText);
        if (compiled) {
            m_tokens.push_back(std::move(token));
        }
    }
    // A pattern that failed is walked with the tokens finished before the
    // error, like any other.
    PatternHold<CompiledPattern>::publish(m_published, new CompiledPattern(m_tokens));
    return compiled;
}

template <class T>
unsigned long VornRegularExpressionImplementation<T>::find(const T& text, unsigned long& length, unsigned long start)
{
    const PatternHold<CompiledPattern> hold(m_published);
    const CompiledPattern* compiled = hold.pattern();
    if (compiled == nullptr) {
        return Walk<T>(nullptr, 0, text, logLevel()).find(length, start);
    }
    return Walk<T>(compiled->walked.data(), compiled->walked.size(), text, logLevel()).find(length, start);
}

template class VornRegularExpressionImplementation<std::string>;
template class VornRegularExpressionImplementation<std::wstring>;
