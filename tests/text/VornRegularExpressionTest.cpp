// How patterns compile and match, the texts of the errors, and the level-9
// print and trace; one table of narrow patterns runs over both string types.
#include "support/ThrownText.h"
#include "support/LogRecords.h"

#include <vsupt/VornRegularExpression.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using log_records::recordsAt;
using VornSupport::VornRegularExpression;

namespace {


template <class T>
T as(const std::string& text)
{
    return T(text.begin(), text.end());
}

// Opens the tokens to the tests and spells them as "type factor 'value'",
// for instance "lit+'b'" or "any".
template <class T>
class Inspected : public VornRegularExpression<T> {
public:
    std::string tokens() const
    {
        static const char* const types[] = {"set", "notset", "lit", "any", "begin", "end"};
        static const char* const factors[] = {"", "?", "*", "+"};
        std::string text;
        for (const auto& token : this->m_tokens) {
            const bool known = token.m_type >= 0 && token.m_type < 6 && token.m_factor >= 0 && token.m_factor < 4;
            text += (text.empty() ? "" : " ") + std::string(known ? types[token.m_type] : "?") +
                    (known ? factors[token.m_factor] : "?");
            if (!token.m_value.empty()) {
                text += "'" + std::string(token.m_value.begin(), token.m_value.end()) + "'";
            }
        }
        return text;
    }
    const T& pattern() const { return this->m_pattern; }
};

template <class T>
class VornRegularExpressionTest : public testing::Test {};

using StringTypes = testing::Types<std::string, std::wstring>;
TYPED_TEST_SUITE(VornRegularExpressionTest, StringTypes);

}  // namespace

TYPED_TEST(VornRegularExpressionTest, PatternsCompileTokenForToken)
{
    const struct {
        std::string pattern;
        std::string error;  // empty when the pattern compiles
        std::string tokens;
    } rows[] = {
        {"", "", ""},
        {"ab+", "", "lit'a' lit+'b'"},
        {"*a", "", "lit'*a'"},
        {"a**", "", "lit*'a' lit'*'"},
        {"[a-c]+", "", "set+'aabc'"},
        {"[ab*]", "", "set'a' lit*'b' lit']'"},
        {"[-a]", "", "set"},
        {"[^ab]?", "", "notset?'ab'"},
        {"[\\t\\]]", "", "set'\t]'"},
        {"a\\.b", "", "lit'a.b'"},
        {"a\\n*", "", "lit'a' lit*'n'"},
        {"ab\\.*", "", "lit'ab' any*"},
        {"\\f\\r\\b\\e\\0\\q\\x41", "", "lit'\f\r\bq41'"},
        {"^a^", "", "begin lit'a^'"},
        {std::string("ab\0cd[x\0y]", 10), "", "lit'ab' set'x'"},
        {"a$b", "end token found inside expression", "lit'a'"},
        {"a[^", "empty set in pattern", "lit'a'"},
        {"\\", "bad escape expression", ""},
        {"a\\", "bad regular expression", ""},
        {"[a-", "end of expression found in pattern", ""},
        {"[a-]", "invalid endpoint in range", ""},
        {"ab.[c-a]", "invalid endpoint in range", "lit'ab' any"},
    };
    for (const auto& row : rows) {
        Inspected<TypeParam> expression;
        std::string errorText;
        EXPECT_EQ(expression.setPatternImpl(as<TypeParam>(row.pattern), errorText), row.error.empty()) << row.pattern;
        EXPECT_EQ(errorText, row.error) << row.pattern;
        EXPECT_EQ(expression.tokens(), row.tokens) << row.pattern;
    }
}

TYPED_TEST(VornRegularExpressionTest, AFailedPatternThrowsAndKeepsTheOldTextWithItsOwnPartialTokens)
{
    Inspected<TypeParam> expression;
    expression.setPattern(as<TypeParam>("xyz"));
    EXPECT_EQ(thrownTextAndCode([&] { expression.setPattern(as<TypeParam>("ab$c")); }),
              "end token found inside expression (0)");
    EXPECT_EQ(expression.pattern(), as<TypeParam>("xyz"));
    EXPECT_EQ(expression.tokens(), "lit'ab'");
    EXPECT_EQ(expression.find(as<TypeParam>("xyzab")), 3u);
}

TEST(VornRegularExpressionRangeTest, EndpointsCompareAsSignedCharactersOfEachWidth)
{
    // 0xE9 is below 'a' as a narrow character and above it as a wide one.
    VornRegularExpression<std::string> narrow;
    std::string errorText;
    EXPECT_FALSE(narrow.setPatternImpl("[a-\xE9]", errorText));
    EXPECT_EQ(errorText, "invalid endpoint in range");
    EXPECT_TRUE(narrow.setPatternImpl("[\xE9-a]", errorText));
    EXPECT_EQ(narrow.find("\xF0"), 0u);

    VornRegularExpression<std::wstring> wide;
    EXPECT_TRUE(wide.setPatternImpl(L"[a-\xE9]", errorText));
    EXPECT_EQ(wide.find(L"\xE0"), 0u);
    EXPECT_FALSE(wide.setPatternImpl(L"[\xE9-a]", errorText));
}

TYPED_TEST(VornRegularExpressionTest, TextsMatchPositionForPosition)
{
    constexpr long none = -1;
    // The length a search is given; a search that ends with an empty match
    // stack leaves it alone, one that only an anchor turns down does not.
    constexpr unsigned long untouched = 99;
    const struct {
        const char* pattern;
        const char* text;
        unsigned long start;
        long position;
        unsigned long length;
    } rows[] = {
        {"abc", "xxabcx", 0, 2, 3},
        // A set never skips ahead; a literal does only as the first token.
        {"[ab]c", "xac", 0, none, untouched},
        {"[ab]*c", "xac", 0, 1, 2},
        {"[0-9]+\\.[0-9]+", "x1.25", 0, none, untouched},
        {"[0-9]+\\.[0-9]+", "x1.25", 1, 1, 4},
        {"a*b", "bbb", 0, none, untouched},
        {"a*ab", "aaab", 0, 0, 4},
        {"a.*c", "abcabc", 0, 0, 6},
        {".", "\n", 0, 0, 1},
        // Equal tokens count as one: the second `+` needs no occurrence of its own.
        {"[ab]+[ab]+c", "abc", 0, 0, 3},
        {"ab[cd]e", "abcfabde", 0, 4, 4},
        {"abc$", "abcabc", 0, none, 3},
        {"^abc", "xabc", 0, none, 3},
        {"^abc", "xabc", 1, 1, 3},
        {"b", "abc", 4, none, untouched},
        {"", "abc", 0, none, untouched},
    };
    for (const auto& row : rows) {
        VornRegularExpression<TypeParam> expression;
        expression.setPattern(as<TypeParam>(row.pattern));
        unsigned long length = untouched;
        const unsigned long found = expression.find(as<TypeParam>(row.text), length, row.start);
        const std::string where = std::string(row.pattern) + " in " + row.text + " from " + std::to_string(row.start);
        EXPECT_EQ(found, row.position == none ? TypeParam::npos : row.position) << where;
        EXPECT_EQ(length, row.length) << where;
    }
}

TYPED_TEST(VornRegularExpressionTest, MatchAndReplaceUseTheFoundText)
{
    using Expression = VornRegularExpression<TypeParam>;
    const auto all = Expression::occurrenceAll;
    Expression expression;
    expression.setPattern(as<TypeParam>("[0-9]+\\.[0-9]+"));
    EXPECT_EQ(expression.match(as<TypeParam>("pi=3.14;"), 3), as<TypeParam>("3.14"));
    EXPECT_EQ(expression.match(as<TypeParam>("pi=3.14;")), TypeParam());

    expression.setPattern(as<TypeParam>("a"));
    const TypeParam text = as<TypeParam>("aXa");
    const TypeParam b = as<TypeParam>("b");
    EXPECT_EQ(expression.replace(text, b, all), as<TypeParam>("bXb"));
    EXPECT_EQ(expression.replace(text, b, Expression::occurrenceFirst), as<TypeParam>("bXa"));
    EXPECT_EQ(expression.replace(text, b, static_cast<typename Expression::Occurrence>(7)), as<TypeParam>("bXa"));
    EXPECT_EQ(expression.replace(text, b, all, 1), as<TypeParam>("aXb"));
    EXPECT_EQ(expression.replace(text, as<TypeParam>("aa"), all), as<TypeParam>("aaXaa"));
    EXPECT_EQ(expression.replace(as<TypeParam>("XY"), b, all), as<TypeParam>("XY"));
    // Each search is anchored at its own start.
    expression.setPattern(as<TypeParam>("^a"));
    EXPECT_EQ(expression.replace(as<TypeParam>("aaa"), b, all), as<TypeParam>("bbb"));
}

TYPED_TEST(VornRegularExpressionTest, PrintsThePatternAndEachTokenAtLevelNineOnly)
{
    VornRegularExpression<TypeParam> expression;
    expression.setPattern(as<TypeParam>("^[a-c]+x.?[^d]*$"));
    const std::vector<std::string> expected = {
        "regular expression: ^[a-c]+x.?[^d]*$",
        "ExpressionToken: type=begin factor=one",
        "ExpressionToken: type=in set factor=one or more",
        "ExpressionToken: type=literal segment=x factor=one",
        "ExpressionToken: type=any factor=zero or one",
        "ExpressionToken: type=not in set factor=zero or more",
        "ExpressionToken: type=end factor=one",
    };
    EXPECT_EQ(recordsAt(9, [&] { expression.print(); }), expected);
    EXPECT_TRUE(recordsAt(8, [&] { expression.print(); }).empty());
}

TYPED_TEST(VornRegularExpressionTest, TracesEachEntryTheStackAndTheResultAtLevelNineOnly)
{
    const auto traced = [](int level, const char* pattern, const char* text) {
        VornRegularExpression<TypeParam> expression;
        expression.setPattern(as<TypeParam>(pattern));
        unsigned long length = 7;
        return recordsAt(level, [&] { expression.find(as<TypeParam>(text), length, 0); });
    };
    // Entry, token and "segment: value:position:length:back link". The
    // first repeat of a `+` copies the back link of the entry below it.
    const std::vector<std::vector<std::string>> entries = {
        {"ExpressionToken: type=literal segment=a factor=one", "\tmatch token:", "\t\tsegment: a:1:1:-1"},
        {"ExpressionToken: type=any factor=one", "\tmatch token:", "\t\tsegment: y:2:1:0"},
        {"ExpressionToken: type=in set factor=one or more", "\tmatch token:", "\t\tsegment: b:3:1:0"},
        {"ExpressionToken: type=in set factor=one or more", "\tmatch token:", "\t\tsegment: b:4:1:2"},
    };
    std::vector<std::string> expected = {"xaybb.find (a, 0) = 1"};
    for (const auto& entry : entries) {
        expected.push_back("VornRegularExpressionImplementation::addMatch: begin");
        expected.insert(expected.end(), entry.begin(), entry.end());
        expected.push_back("VornRegularExpressionImplementation::addMatch: end");
    }
    expected.push_back("VornRegularExpressionImplementation::find: match stack begin");
    for (const auto& entry : entries) {
        expected.insert(expected.end(), entry.begin(), entry.end());
    }
    expected.push_back("VornRegularExpressionImplementation::find: match stack end");
    expected.push_back("VornRegularExpressionImplementation::find: match found at 1:4");
    EXPECT_EQ(traced(9, "a.[b]+", "xaybb"), expected);

    // A failed search reports minus one and the untouched length.
    const std::vector<std::string> failed = traced(9, "a", "xyz");
    ASSERT_EQ(failed.size(), 4u);
    EXPECT_EQ(failed.front(), "xyz.find (a, 0) = 18446744073709551615");
    EXPECT_EQ(failed.back(), "VornRegularExpressionImplementation::find: match found at -1:7");
    EXPECT_TRUE(traced(8, "a[b]+", "xab").empty());
}

TYPED_TEST(VornRegularExpressionTest, LongSearchesThatStartOverAndOverGiveTheStepByStepResult)
{
    constexpr long none = -1;
    constexpr unsigned long untouched = 99;
    const auto repeated = [](const std::string& unit, std::size_t size) {
        std::string text;
        while (text.size() < size) {
            text += unit;
        }
        return text.substr(0, size);
    };
    // No `c` and no `x` in these words.
    const std::string words100k = repeated("a brown owl jumps over the lazy dog ", 100000);
    const std::string words1m = repeated("a brown owl jumps over the lazy dog ", 1 << 20);
    const std::string a32k(32768, 'a');
    const struct {
        const char* pattern;
        std::string text;
        long position;
        unsigned long length;
    } rows[] = {
        {".*.*.*x", words100k, none, untouched},
        {".*.*.*x", "x" + words100k, none, untouched},
        {".*.*.*x", words100k + "x", 0, 100001},
        {"a*a*a*a*b", a32k, none, untouched},
        {"a*a*a*a*b", a32k + "cb", none, untouched},
        {"a*a*a*a*b", a32k + "b", 0, 32769},
        {"bb*aa", std::string(32768, 'b') + "xaa", none, untouched},
        {".*c", words1m, none, untouched},
        {"a.*b.*c", words1m, none, untouched},
        {"[0-9]+x", repeated("3141592653", 1 << 20), none, untouched},
    };
    for (const auto& row : rows) {
        VornRegularExpression<TypeParam> expression;
        expression.setPattern(as<TypeParam>(row.pattern));
        unsigned long length = untouched;
        const unsigned long found = expression.find(as<TypeParam>(row.text), length, 0);
        const std::string what = std::string(row.pattern) + " in " + std::to_string(row.text.size()) + " characters";
        EXPECT_EQ(found, row.position == none ? TypeParam::npos : row.position) << what;
        EXPECT_EQ(length, row.length) << what;
    }
}

TEST(VornRegularExpressionThreadTest, FindsBesidePatternChangesSeeTheOldOrTheNewPatternWhole)
{
    // Each pattern finds its own place in the text; a mix of the two token
    // lists would find neither.
    VornRegularExpression<std::string> expression;
    expression.setPattern("c 1[0-9]*x");
    const std::string text = "abc 123x def 45y";
    std::atomic<bool> done(false);
    std::atomic<int> strays(0);
    const auto find = [&] {
        while (!done) {
            unsigned long length = 0;
            const unsigned long found = expression.find(text, length, 0);
            if (!(found == 2 && length == 6) && !(found == 11 && length == 5)) {
                ++strays;
            }
        }
    };
    std::thread first(find);
    std::thread second(find);
    for (int i = 0; i < 4000; ++i) {
        expression.setPattern(i % 2 ? "c 1[0-9]*x" : "f 4[0-9]*y");
    }
    done = true;
    first.join();
    second.join();
    EXPECT_EQ(strays, 0);
}

TEST(VornRegularExpressionCopyTest, ACopyKeepsItsPatternWhenTheOriginalChanges)
{
    VornRegularExpression<std::string> original;
    original.setPattern("[0-9]+");
    VornRegularExpression<std::string> copy(original);
    VornRegularExpression<std::string> assigned;
    assigned = original;
    original.setPattern("[a-z]+");
    EXPECT_EQ(copy.match("12ab"), "12");
    EXPECT_EQ(assigned.match("12ab"), "12");
    EXPECT_EQ(original.match("12ab"), "");
}
