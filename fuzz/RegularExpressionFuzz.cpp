// Random patterns compiled and searched in random texts, in either string
// type: every pattern compiles or fails with one of the six texts; find
// gives the position and the length that the walk written out below gives,
// the matcher's rules taken one step and one entry at a time, with none of
// the matcher's strides and shortcuts; and find, match and replace agree
// with each other on whatever they find.
//
// Input: a flags byte (bit 0 wide, bit 1 replace every match, the rest the
// start offset); the pattern's length; a byte with the replacement's length
// in its low 3 bits and, in its high 3, how many times each character of
// the text stands, less one, since long repeats are where the shortcuts
// apply; then the pattern, the replacement and the text. In the wide form a
// byte is the character of that value, but 0xFF stands for the character
// -1 and 0xFE for U+2603, so that sets hold members beyond one byte.
//
// Left out by design, as they never end: a narrow pattern with a 0x7F
// character (a range up to 0x7F appends for ever); searching with a repeated
// token that consumes nothing (`^*`, `^+`, an empty literal with `*` or `+`);
// and replacing every match when an empty literal can give a match of length
// 0: the next search starts behind the replacement, which is as far from the
// end of the grown text as before, and finds the next empty match there.
#include <vsupt/VornRegularExpression.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kMaxText = 512;

template <class T>
class FuzzedExpression : public VornSupport::VornRegularExpression<T> {
public:
    using Implementation = VornRegularExpressionImplementation<T>;

    bool searchEnds() const
    {
        for (const auto& token : this->m_tokens) {
            const bool repeated = token.m_factor == Implementation::factorZeroOrMore ||
                                  token.m_factor == Implementation::factorOneOrMore;
            if (repeated && consumesNothing(token)) {
                return false;
            }
        }
        return true;
    }

    // The position and the length of the match, as the steps give them;
    // length is left alone where the walk ends with an empty stack.
    unsigned long walkStepByStep(const T& text, unsigned long& length, unsigned long start) const
    {
        const auto& tokens = this->m_tokens;
        std::vector<Entry> stack;
        bool beginSeen = false;
        bool endSeen = false;
        unsigned long pos = start;
        std::size_t current = 0;
        while (current < tokens.size()) {
            const auto& token = tokens[current];
            const unsigned long next = matchToken(text, pos, current, stack, beginSeen, endSeen);
            const auto factor = token.m_factor;
            if (next != T::npos) {
                pos = next;
                if (factor == Implementation::factorOne || factor == Implementation::factorZeroOrOne) {
                    ++current;
                }
            } else if (stack.empty()) {
                if (factor == Implementation::factorOne || factor == Implementation::factorOneOrMore) {
                    break;
                }
                if (++pos >= text.size()) {
                    break;
                }
            } else if (factor == Implementation::factorZeroOrOne || factor == Implementation::factorZeroOrMore ||
                       (factor == Implementation::factorOneOrMore && same(tokens[stack.back().token], token))) {
                ++current;
            } else if (stack.back().backLink != -1) {
                pos = stack.back().position;
                stack.pop_back();
            } else {
                pos = stack.front().position + 1;
                current = stack.front().token;
                stack.clear();
            }
        }
        if (stack.empty()) {
            return T::npos;
        }
        unsigned long result = stack.front().position;
        length = 0;
        for (const Entry& entry : stack) {
            if (entry.position != result + length) {
                return T::npos;
            }
            length += entry.length;
        }
        if ((beginSeen && result != start) || (endSeen && result + length != text.size())) {
            return T::npos;
        }
        return result;
    }

    bool hasEmptyLiteral() const
    {
        for (const auto& token : this->m_tokens) {
            if (token.m_type == Implementation::tokenLiteral && token.m_value.empty()) {
                return true;
            }
        }
        return false;
    }

private:
    using Token = typename Implementation::ExpressionToken;

    struct Entry {
        unsigned long position;
        unsigned long length;
        long backLink;
        std::size_t token;
    };

    static bool same(const Token& a, const Token& b)
    {
        return a.m_value == b.m_value && a.m_type == b.m_type && a.m_factor == b.m_factor;
    }

    unsigned long matchToken(const T& text, unsigned long pos, std::size_t current, std::vector<Entry>& stack,
                             bool& beginSeen, bool& endSeen) const
    {
        const Token& token = this->m_tokens[current];
        switch (token.m_type) {
        case Implementation::tokenBegin: beginSeen = true; return pos;
        case Implementation::tokenEnd: endSeen = true; return pos;
        case Implementation::tokenAny:
            if (pos >= text.size()) {
                return T::npos;
            }
            push(stack, {pos, 1, 0, current});
            return pos + 1;
        case Implementation::tokenLiteral: {
            const unsigned long found = text.find(token.m_value, pos);
            if (found == T::npos || (found != pos && !stack.empty())) {
                return T::npos;
            }
            push(stack, {found, token.m_value.size(), 0, current});
            return found + token.m_value.size();
        }
        default: {
            const bool member = pos < text.size() && token.m_value.find(text[pos]) != T::npos;
            if (pos >= text.size() || member != (token.m_type == Implementation::tokenInSet)) {
                return T::npos;
            }
            push(stack, {pos, 1, 0, current});
            return pos + 1;
        }
        }
    }

    void push(std::vector<Entry>& stack, Entry entry) const
    {
        const Token& token = this->m_tokens[entry.token];
        if (stack.empty()) {
            entry.backLink = -1;
        } else if (token.m_factor == Implementation::factorOneOrMore &&
                   !same(this->m_tokens[stack.back().token], token)) {
            entry.backLink = stack.back().backLink;
        } else {
            entry.backLink = static_cast<long>(stack.size()) - 1;
        }
        stack.push_back(entry);
    }

    static bool consumesNothing(const Token& token)
    {
        return token.m_type == Implementation::tokenBegin ||
               (token.m_type == Implementation::tokenLiteral && token.m_value.empty());
    }
};

bool isKnownError(const std::string& text)
{
    return text == "empty set in pattern" || text == "end token found inside expression" ||
           text == "bad escape expression" || text == "bad regular expression" ||
           text == "end of expression found in pattern" || text == "invalid endpoint in range";
}

void check(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

template <class T>
T fromBytes(const std::uint8_t* data, std::size_t size);

template <>
std::string fromBytes<std::string>(const std::uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

template <>
std::wstring fromBytes<std::wstring>(const std::uint8_t* data, std::size_t size)
{
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        switch (data[i]) {
        case 0xFF: text.push_back(static_cast<wchar_t>(-1)); break;
        case 0xFE: text.push_back(static_cast<wchar_t>(0x2603)); break;
        default: text.push_back(static_cast<wchar_t>(data[i])); break;
        }
    }
    return text;
}

template <class T>
void exercise(const T& pattern, const T& replacement, const T& text, unsigned long start, bool all)
{
    using Expression = FuzzedExpression<T>;
    if (sizeof(typename T::value_type) == 1 && pattern.find(static_cast<typename T::value_type>(0x7F)) != T::npos) {
        return;
    }
    Expression expression;
    std::string errorText;
    if (!expression.setPatternImpl(pattern, errorText)) {
        check(isKnownError(errorText));
    }
    if (!expression.searchEnds()) {
        return;
    }
    constexpr unsigned long untouched = 0xDEAD;
    unsigned long length = untouched;
    unsigned long expectedLength = untouched;
    const unsigned long found = expression.find(text, length, start);
    check(found == expression.walkStepByStep(text, expectedLength, start) && length == expectedLength);
    if (found != T::npos) {
        check(found >= start && found + length <= text.size());
        check(expression.match(text, start) == text.substr(found, length));
        const T first = expression.replace(text, replacement, Expression::occurrenceFirst, start);
        check(first == text.substr(0, found) + replacement + text.substr(found + length));
    } else {
        check(expression.match(text, start).empty());
    }
    if (all && !expression.hasEmptyLiteral()) {
        expression.replace(text, replacement, Expression::occurrenceAll, start);
    }
}

template <class T>
void run(const std::uint8_t* data, std::size_t size)
{
    const unsigned long start = data[0] >> 2;
    const bool all = (data[0] & 2) != 0;
    std::size_t patternLength = data[1];
    std::size_t replacementLength = data[2] % 8;
    const std::size_t copies = 1 + (data[2] >> 5);
    data += 3;
    size -= 3;
    patternLength = patternLength < size ? patternLength : size;
    const T pattern = fromBytes<T>(data, patternLength);
    data += patternLength;
    size -= patternLength;
    replacementLength = replacementLength < size ? replacementLength : size;
    const T replacement = fromBytes<T>(data, replacementLength);
    data += replacementLength;
    size -= replacementLength;
    const T given = fromBytes<T>(data, size < kMaxText ? size : kMaxText);
    T text;
    for (std::size_t i = 0; i < given.size() && text.size() < kMaxText; ++i) {
        text.append(copies, given[i]);
    }
    exercise(pattern, replacement, text, start, all);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 3) {
        return 0;
    }
    if (data[0] & 1) {
        run<std::wstring>(data, size);
    } else {
        run<std::string>(data, size);
    }
    return 0;
}
