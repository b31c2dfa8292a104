// Random patterns compiled and searched in random texts, in either string
// type: every pattern compiles or fails with one of the six texts, and find,
// match and replace agree with each other on whatever they find.
//
// Input: a flags byte (bit 0 wide, bit 1 replace every match, the rest the
// start offset), the pattern's length, the replacement's length, then the
// pattern, the replacement and the text. In the wide form a byte is the
// character of that value, but 0xFF stands for the character -1.
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
    template <class Token>
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
        text.push_back(data[i] == 0xFF ? static_cast<wchar_t>(-1) : static_cast<wchar_t>(data[i]));
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
    unsigned long length = 0;
    const unsigned long found = expression.find(text, length, start);
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
    const T text = fromBytes<T>(data, size < kMaxText ? size : kMaxText);
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
