#include <vsupt/VornRegularExpressionImplementation.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornLogging.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

using VornSupport::VornCriticalSection;
using VornSupport::VornLogging;
using VornSupport::endrecord;
using VornSupport::setloglevel;

namespace {

bool logLevelIs(int level)
{
    return VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() == level;
}

bool logLevelAtLeast(int level)
{
    return VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() >= level;
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

template <class T>
bool isMember(const T& members, typename T::value_type c)
{
    for (const auto member : members) {
        if (member == c) {
            return true;
        }
    }
    return false;
}

template <class T>
bool isRepeated(const typename VornRegularExpressionImplementation<T>::ExpressionToken& token)
{
    using Implementation = VornRegularExpressionImplementation<T>;
    return token.m_factor == Implementation::factorZeroOrMore || token.m_factor == Implementation::factorOneOrMore;
}

// Whether a set admits a character, by table for the characters of one
// byte: a repeat over a long stretch asks once for each character.
template <class T>
class SetMembers {
public:
    using CharType = typename T::value_type;

    SetMembers(const T& members, bool inSet) : m_members(members), m_inSet(inSet)
    {
        for (CharType c : members) {
            if (isByte(c)) {
                m_table[byteOf(c)] = true;
            }
        }
    }

    bool admits(CharType c) const
    {
        const bool member = isByte(c) ? m_table[byteOf(c)] : isMember(m_members, c);
        return member == m_inSet;
    }

private:
    using Unsigned = std::make_unsigned_t<CharType>;

    static bool isByte(CharType c) { return static_cast<Unsigned>(c) < 256; }
    static std::size_t byteOf(CharType c) { return static_cast<Unsigned>(c); }

    const T& m_members;
    const bool m_inSet;
    std::array<bool, 256> m_table{};
};

// The match stack, kept as runs: the entries one token made one after the
// other, each beginning where the one before ended, are one run. A repeat
// over a long stretch of text is then one run and not one entry for each
// character. Every entry of a run but the first links to the entry below.
template <class T>
class MatchStack {
public:
    using Implementation = VornRegularExpressionImplementation<T>;
    using Token = typename Implementation::ExpressionToken;

    struct Run {
        Token* token;
        std::uint64_t position;
        std::uint64_t step;  // the length of each entry
        std::uint64_t count;
        std::int32_t firstBackLink;
        std::uint64_t firstIndex;

        std::uint64_t end() const { return position + step * count; }
        std::int32_t backLink(std::uint64_t i) const
        {
            return i == 0 ? firstBackLink : static_cast<std::int32_t>(firstIndex + i - 1);
        }
    };

    bool empty() const { return m_runs.empty(); }
    const Run& bottom() const { return m_runs.front(); }
    const std::vector<Run>& runs() const { return m_runs; }
    Token& topToken() const { return *m_runs.back().token; }
    std::int32_t topBackLink() const { return m_runs.back().backLink(m_runs.back().count - 1); }

    // The back link of an entry of token pushed now. The first repeat of a
    // `+` links past the entry below, so that backing up never gives away
    // the one occurrence it demands.
    std::int32_t backLinkFor(const Token& token) const
    {
        if (empty()) {
            return -1;
        }
        if (token.m_factor == Implementation::factorOneOrMore && !sameToken(topToken(), token)) {
            return topBackLink();
        }
        return static_cast<std::int32_t>(m_size - 1);
    }

    // Pushes count entries of length step from position on. Entries of
    // length 0 stay apart, one run each.
    void push(Token& token, std::uint64_t position, std::uint64_t step, std::uint64_t count)
    {
        if (!empty() && step != 0 && m_runs.back().token == &token && m_runs.back().step == step &&
            m_runs.back().end() == position) {
            m_runs.back().count += count;
        } else {
            m_runs.push_back({&token, position, step, count, backLinkFor(token), m_size});
        }
        m_size += count;
    }

    // Removes the top entry and returns its position.
    std::uint64_t pop()
    {
        Run& top = m_runs.back();
        --top.count;
        --m_size;
        const std::uint64_t position = top.end();
        if (top.count == 0) {
            m_runs.pop_back();
        }
        return position;
    }

    void clear()
    {
        m_runs.clear();
        m_size = 0;
    }

private:
    std::vector<Run> m_runs;
    std::uint64_t m_size = 0;
};

const char* const g_typeNames[] = {"in set", "not in set", "literal segment=", "any", "begin", "end"};
const char* const g_factorNames[] = {"one", "zero or one", "zero or more", "one or more"};

// One walk of the tokens over a text. The per-entry traces are written only
// when the logger's level is 9 as the walk begins; without them a repeated
// set or any character takes its whole stretch at once.
template <class T>
class Matcher {
public:
    using Implementation = VornRegularExpressionImplementation<T>;
    using Token = typename Implementation::ExpressionToken;
    using Entry = typename Implementation::MatchToken;
    using Stack = MatchStack<T>;
    using Run = typename Stack::Run;

    Matcher(Implementation& owner, const T& text)
        : m_owner(owner), m_text(text), m_tracedEntries(logLevelIs(9)), m_tracedSearches(logLevelAtLeast(9))
    {
    }

    unsigned long find(std::vector<Token>& tokens, unsigned long& length, unsigned long start)
    {
        auto token = tokens.begin();
        unsigned long pos = start;
        while (token != tokens.end()) {
            const unsigned long next = matchToken(pos, *token);
            const auto factor = token->m_factor;
            if (next != T::npos) {
                // A repeated token stays current until it fails: greedy.
                pos = next;
                if (!isRepeated<T>(*token)) {
                    ++token;
                }
            } else if (m_stack.empty()) {
                // An optional token that leads is looked for along the
                // text, never skipped.
                if (factor == Implementation::factorOne || factor == Implementation::factorOneOrMore) {
                    break;
                }
                if (++pos >= m_text.size()) {
                    break;
                }
            } else if (factor != Implementation::factorOne &&
                       (factor != Implementation::factorOneOrMore || sameToken(m_stack.topToken(), *token))) {
                ++token;
            } else if (m_stack.topBackLink() != -1) {
                // Give the failing token another chance one entry earlier.
                pos = m_stack.pop();
            } else {
                // Start over one character behind the bottom entry.
                pos = m_stack.bottom().position + 1;
                token = tokens.begin() + (m_stack.bottom().token - tokens.data());
                m_stack.clear();
            }
        }
        if (m_tracedEntries) {
            printStack();
        }
        const unsigned long result = resultOfWalk(length, start);
        if (m_tracedSearches) {
            traceRecord() << "VornRegularExpressionImplementation::find: match found at " << static_cast<int>(result)
                          << ":" << length << endrecord;
        }
        return result;
    }

private:
    unsigned long matchToken(unsigned long pos, Token& token)
    {
        switch (token.m_type) {
        case Implementation::tokenInSet:
        case Implementation::tokenNotInSet: return matchSet(pos, token);
        case Implementation::tokenLiteral: return matchLiteral(pos, token);
        case Implementation::tokenAny: return matchAny(pos, token);
        case Implementation::tokenBegin: m_beginSeen = true; return pos;
        case Implementation::tokenEnd: m_endSeen = true; return pos;
        }
        return T::npos;
    }

    unsigned long matchLiteral(unsigned long pos, Token& token)
    {
        const T& value = token.m_value;
        // Only a literal met with an empty stack may skip forward. Otherwise
        // only an occurrence at pos counts, and the search ahead is made for
        // the trace alone: a failing literal would otherwise cost a scan of
        // the rest of the text.
        unsigned long found = T::npos;
        if (m_stack.empty() || m_tracedSearches) {
            found = search(value, pos);
        } else if (occursAt(value, pos)) {
            found = pos;
        }
        if (m_tracedSearches) {
            traceSearch(value, pos, found);
        }
        if (found == T::npos || (found != pos && !m_stack.empty())) {
            return T::npos;
        }
        addMatch(token, found, value.size(), 1);
        return found + value.size();
    }

    __attribute__((noinline, cold)) void traceSearch(const T& value, unsigned long pos, unsigned long found)
    {
        traceRecord() << m_text << ".find (" << value << ", " << pos << ") = " << found << endrecord;
    }

    // The ordinary substring search, written out: the segments are short,
    // and comparing them in place beats a call for each candidate.
    unsigned long search(const T& value, unsigned long pos) const
    {
        if (value.empty()) {
            return pos <= m_text.size() ? pos : T::npos;
        }
        const std::size_t size = m_text.size();
        while (pos < size && size - pos >= value.size()) {
            pos = findFirstCharacter(value[0], pos, size - value.size() + 1);
            if (pos == T::npos || occursAt(value, pos)) {
                return pos;
            }
            ++pos;
        }
        return T::npos;
    }

    // The first c in [pos, end). A near one is found by looking; a call to
    // the library's scan pays only over a longer way.
    unsigned long findFirstCharacter(typename T::value_type c, unsigned long pos, unsigned long end) const
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

    // A set never looks ahead: only the character at pos counts.
    unsigned long matchSet(unsigned long pos, Token& token)
    {
        if (pos >= m_text.size()) {
            return T::npos;
        }
        const bool inSet = token.m_type == Implementation::tokenInSet;
        unsigned long end = pos;
        if (isRepeated<T>(token) && !m_tracedEntries) {
            const SetMembers<T> members(token.m_value, inSet);
            while (end < m_text.size() && members.admits(m_text[end])) {
                ++end;
            }
        } else if (isMember(token.m_value, m_text[pos]) == inSet) {
            end = pos + 1;
        }
        if (end == pos) {
            return T::npos;
        }
        addMatch(token, pos, 1, end - pos);
        return end;
    }

    unsigned long matchAny(unsigned long pos, Token& token)
    {
        if (pos >= m_text.size()) {
            return T::npos;
        }
        const unsigned long end = isRepeated<T>(token) && !m_tracedEntries ? m_text.size() : pos + 1;
        addMatch(token, pos, 1, end - pos);
        return end;
    }

    void addMatch(Token& token, std::uint64_t position, std::uint64_t step, std::uint64_t count)
    {
        if (m_tracedEntries) {
            traceAddMatch(token, position, step);
        }
        m_stack.push(token, position, step, count);
    }

    // Kept out of line, so that the walk's own path stays short.
    __attribute__((noinline, cold)) void traceAddMatch(Token& token, std::uint64_t position, std::uint64_t step)
    {
        traceRecord() << "VornRegularExpressionImplementation::addMatch: begin" << endrecord;
        printEntry(entry(token, position, step, m_stack.backLinkFor(token)));
        traceRecord() << "VornRegularExpressionImplementation::addMatch: end" << endrecord;
    }

    Entry entry(Token& token, std::uint64_t position, std::uint64_t length, std::int32_t backLink) const
    {
        T value = token.m_type == Implementation::tokenLiteral ? token.m_value : m_text.substr(position, 1);
        return Entry{std::move(value), position, length, backLink, &token};
    }

    void printEntry(const Entry& entry)
    {
        m_owner.print(*entry.m_pToken);
        traceRecord() << "\tmatch token:" << endrecord;
        traceRecord() << "\t\tsegment: " << entry.m_value << ":" << static_cast<unsigned long>(entry.m_position)
                      << ":" << static_cast<unsigned long>(entry.m_length) << ":"
                      << static_cast<int>(entry.m_backLink) << endrecord;
    }

    void printStack()
    {
        traceRecord() << "VornRegularExpressionImplementation::find: match stack begin" << endrecord;
        for (const Run& run : m_stack.runs()) {
            for (std::uint64_t i = 0; i < run.count; ++i) {
                printEntry(entry(*run.token, run.position + i * run.step, run.step, run.backLink(i)));
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
        for (const Run& run : m_stack.runs()) {
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

    Implementation& m_owner;
    const T& m_text;
    const bool m_tracedEntries;
    const bool m_tracedSearches;
    Stack m_stack;
    bool m_beginSeen = false;
    bool m_endSeen = false;
};

}  // namespace

template <class T>
VornRegularExpressionImplementation<T>::VornRegularExpressionImplementation() : m_tokenLock(false)
{
}

template <class T>
void VornRegularExpressionImplementation<T>::print(ExpressionToken& token)
{
    if (!logLevelAtLeast(9)) {
        return;
    }
    VornLogging& log = traceRecord() << "ExpressionToken: type=" << g_typeNames[token.m_type];
    if (token.m_type == tokenLiteral) {
        log << token.m_value;
    }
    log << " factor=" << g_factorNames[token.m_factor] << endrecord;
}

template <class T>
bool VornRegularExpressionImplementation<T>::compile(const T& pattern, std::string& errorText)
{
    VornCriticalSection guard(m_tokenLock, true);
    m_tokens.clear();
    PatternReader<T> reader(pattern);
    for (std::size_t p = 0; p != pattern.size();) {
        ExpressionToken token;
        if (!reader.readToken(p, token, p, errorText)) {
            return false;
        }
        m_tokens.push_back(std::move(token));
    }
    return true;
}

template <class T>
unsigned long VornRegularExpressionImplementation<T>::find(const T& text, unsigned long& length, unsigned long start)
{
    std::vector<ExpressionToken> tokens;
    {
        VornCriticalSection guard(m_tokenLock, true);
        tokens = m_tokens;
    }
    return Matcher<T>(*this, text).find(tokens, length, start);
}

template class VornRegularExpressionImplementation<std::string>;
template class VornRegularExpressionImplementation<std::wstring>;
