#include <vsupt/VornRegularExpressionImplementation.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornLogging.h>

#include <cstddef>
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

const char* const g_typeNames[] = {"in set", "not in set", "literal segment=", "any", "begin", "end"};
const char* const g_factorNames[] = {"one", "zero or one", "zero or more", "one or more"};

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
    TokenList tokens;
    {
        VornCriticalSection guard(m_tokenLock, true);
        tokens = m_tokens;
    }
    bool beginSeen = false;
    bool endSeen = false;
    unsigned long pos = start;
    MatchStack stack;
    TokenIterator token = tokens.begin();
    while (token != tokens.end()) {
        unsigned long next = T::npos;
        switch (token->m_type) {
        case tokenInSet:
        case tokenNotInSet: next = matchSet(text, pos, token, stack); break;
        case tokenLiteral: next = matchLiteral(text, pos, token, stack); break;
        case tokenAny: next = matchAny(text, pos, token, stack); break;
        case tokenBegin:
            beginSeen = true;
            next = pos;
            break;
        case tokenEnd:
            endSeen = true;
            next = pos;
            break;
        }
        const tFactor factor = token->m_factor;
        if (next != T::npos) {
            // A repeated token stays current until it fails: greedy.
            pos = next;
            if (factor == factorOne || factor == factorZeroOrOne) {
                ++token;
            }
        } else if (stack.empty()) {
            // An optional token that leads is looked for along the text,
            // never skipped.
            if (factor == factorOne || factor == factorOneOrMore) {
                break;
            }
            if (++pos >= text.size()) {
                break;
            }
        } else if (factor == factorZeroOrOne || factor == factorZeroOrMore ||
                   (factor == factorOneOrMore && sameToken(*stack.back().m_pToken, *token))) {
            ++token;
        } else if (stack.back().m_backLink != -1) {
            // Give the failing token another chance one entry earlier.
            pos = stack.back().m_position;
            stack.pop_back();
        } else {
            // Start over one character behind the bottom entry.
            pos = stack.front().m_position + 1;
            token = tokens.begin() + (stack.front().m_pToken - tokens.data());
            stack.clear();
        }
    }
    if (logLevelIs(9)) {
        printStack(stack);
    }
    unsigned long result = T::npos;
    if (!stack.empty()) {
        result = stack.front().m_position;
        length = 0;
        for (const MatchToken& entry : stack) {
            if (entry.m_position != result + length) {
                result = T::npos;
                break;
            }
            length += entry.m_length;
        }
        if (beginSeen && result != start) {
            result = T::npos;
        }
        if (endSeen && result + length != text.size()) {
            result = T::npos;
        }
    }
    if (logLevelAtLeast(9)) {
        traceRecord() << "VornRegularExpressionImplementation::find: match found at " << static_cast<int>(result)
                      << ":" << length << endrecord;
    }
    return result;
}

template <class T>
unsigned long VornRegularExpressionImplementation<T>::matchLiteral(const T& text, unsigned long pos,
                                                                   TokenIterator token, MatchStack& stack)
{
    const T& value = token->m_value;
    const bool traced = logLevelAtLeast(9);
    // Only a literal met with an empty stack may skip forward. Otherwise
    // only an occurrence at pos counts, and the search ahead is made for the
    // trace alone: a failing literal would otherwise cost a scan of the rest
    // of the text.
    unsigned long found = T::npos;
    if (stack.empty() || traced) {
        found = text.find(value, pos);
    } else if (pos <= text.size() && text.compare(pos, value.size(), value) == 0) {
        found = pos;
    }
    if (traced) {
        traceRecord() << text << ".find (" << value << ", " << pos << ") = " << found << endrecord;
    }
    if (found == T::npos || (found != pos && !stack.empty())) {
        return T::npos;
    }
    MatchToken entry{value, found, value.size()};
    addMatch(entry, token, stack);
    return found + value.size();
}

template <class T>
unsigned long VornRegularExpressionImplementation<T>::matchSet(const T& text, unsigned long pos, TokenIterator token,
                                                               MatchStack& stack)
{
    // A set never looks ahead, so only the character at pos counts.
    if (pos >= text.size()) {
        return T::npos;
    }
    const bool member = token->m_value.find(text[pos]) != T::npos;
    if (member != (token->m_type == tokenInSet)) {
        return T::npos;
    }
    MatchToken entry{T(1, text[pos]), pos, 1};
    addMatch(entry, token, stack);
    return pos + 1;
}

template <class T>
unsigned long VornRegularExpressionImplementation<T>::matchAny(const T& text, unsigned long pos, TokenIterator token,
                                                               MatchStack& stack)
{
    if (pos >= text.size()) {
        return T::npos;
    }
    MatchToken entry{T(1, text[pos]), pos, 1};
    addMatch(entry, token, stack);
    return pos + 1;
}

template <class T>
void VornRegularExpressionImplementation<T>::addMatch(MatchToken& entry, TokenIterator token, MatchStack& stack)
{
    entry.m_pToken = &*token;
    if (stack.empty()) {
        entry.m_backLink = -1;
    } else if (token->m_factor == factorOneOrMore && !sameToken(*stack.back().m_pToken, *token)) {
        // The first repeat links past the entry below, so that backing up
        // never gives away the one occurrence a `+` demands.
        entry.m_backLink = stack.back().m_backLink;
    } else {
        entry.m_backLink = static_cast<std::int32_t>(stack.size() - 1);
    }
    if (logLevelIs(9)) {
        traceRecord() << "VornRegularExpressionImplementation::addMatch: begin" << endrecord;
        print(*token);
        printMatch(entry);
        traceRecord() << "VornRegularExpressionImplementation::addMatch: end" << endrecord;
    }
    stack.push_back(entry);
}

template <class T>
void VornRegularExpressionImplementation<T>::printMatch(MatchToken& entry)
{
    traceRecord() << "\tmatch token:" << endrecord;
    traceRecord() << "\t\tsegment: " << entry.m_value << ":" << static_cast<unsigned long>(entry.m_position) << ":"
                  << static_cast<unsigned long>(entry.m_length) << ":" << static_cast<int>(entry.m_backLink)
                  << endrecord;
}

template <class T>
void VornRegularExpressionImplementation<T>::printStack(MatchStack& stack)
{
    traceRecord() << "VornRegularExpressionImplementation::find: match stack begin" << endrecord;
    for (MatchToken& entry : stack) {
        print(*entry.m_pToken);
        printMatch(entry);
    }
    traceRecord() << "VornRegularExpressionImplementation::find: match stack end" << endrecord;
}

template class VornRegularExpressionImplementation<std::string>;
template class VornRegularExpressionImplementation<std::wstring>;
