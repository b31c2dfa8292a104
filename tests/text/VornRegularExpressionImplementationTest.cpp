// How patterns compile: the token vector, the error texts, and the level-9
// print of a compiled expression.
#include "RegularExpressionTesting.h"

#include <vsupt/VornException.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace regex_testing;
using VornSupport::VornException;

namespace {

using R = VornRegularExpressionImplementation<std::string>;

// A token as the table spells it, with the fields of the real one.
struct TokenRow {
    int m_type;
    int m_factor;
    std::string m_value;
};

struct CompileRow {
    std::string pattern;
    std::string error;  // empty when the pattern compiles
    std::vector<TokenRow> tokens;
};

// "type/factor/'value'" for each token, so that a mismatch shows itself.
template <class Token>
std::vector<std::string> describe(const std::vector<Token>& tokens)
{
    std::vector<std::string> lines;
    for (const Token& token : tokens) {
        lines.push_back(std::to_string(token.m_type) + "/" + std::to_string(token.m_factor) + "/'" +
                        narrowed(token.m_value) + "'");
    }
    return lines;
}

TokenRow literal(const std::string& value, int factor = R::factorOne)
{
    return {R::tokenLiteral, factor, value};
}

TokenRow inSet(const std::string& value, int factor = R::factorOne)
{
    return {R::tokenInSet, factor, value};
}

TokenRow notInSet(const std::string& value, int factor = R::factorOne)
{
    return {R::tokenNotInSet, factor, value};
}

TokenRow any(int factor = R::factorOne)
{
    return {R::tokenAny, factor, ""};
}

const std::vector<CompileRow> g_compileTable = {
    {"", "", {}},
    {"abc", "", {literal("abc")}},
    {"ab+", "", {literal("a"), literal("b", R::factorOneOrMore)}},
    {"a.c", "", {literal("a"), any(), literal("c")}},
    {"*a", "", {literal("*a")}},
    {"a**", "", {literal("a", R::factorZeroOrMore), literal("*")}},
    {"(a|b){2}", "", {literal("(a|b){2}")}},
    {"a]", "", {literal("a]")}},
    {"a-b", "", {literal("a-b")}},
    {"a?b", "", {literal("a", R::factorZeroOrOne), literal("b")}},
    {"[a-c]+", "", {inSet("aabc", R::factorOneOrMore)}},
    {"[a-c-e]", "", {inSet("aabccde")}},
    {"[a", "", {inSet("a")}},
    {"[a.b]", "", {inSet("a"), any(), literal("b]")}},
    {"[a$", "", {inSet("a"), {R::tokenEnd, R::factorOne, ""}}},
    {"[ab*]", "", {inSet("a"), literal("b", R::factorZeroOrMore), literal("]")}},
    {"[-a]", "", {inSet("")}},
    {"[^-a]", "", {notInSet("")}},
    {"[^ab]?", "", {notInSet("ab", R::factorZeroOrOne)}},
    {"[\\^]", "", {inSet("")}},
    {"[\\t\\]]", "", {inSet("\t]")}},
    {"\\ta", "", {literal("\ta")}},
    {"a\\.b", "", {literal("a.b")}},
    {"a\\n*", "", {literal("a"), literal("n", R::factorZeroOrMore)}},
    {"ab\\.*", "", {literal("ab"), any(R::factorZeroOrMore)}},
    {"\\n*", "", {literal("\n", R::factorZeroOrMore)}},
    {"\\^a", "", {literal("a")}},
    {"\\x41", "", {literal("41")}},
    {"\\f\\r\\b\\e\\0\\q", "", {literal("\f\r\bq")}},
    {"\\0*", "", {literal("", R::factorZeroOrMore)}},
    {"^a^", "", {{R::tokenBegin, R::factorOne, ""}, literal("a^")}},
    {"^*", "", {{R::tokenBegin, R::factorZeroOrMore, ""}}},
    {"a$", "", {literal("a"), {R::tokenEnd, R::factorOne, ""}}},
    {"a$b", "end token found inside expression", {literal("a")}},
    {"[]", "empty set in pattern", {}},
    {"[^]", "empty set in pattern", {}},
    {"[", "empty set in pattern", {}},
    {"a[^", "empty set in pattern", {literal("a")}},
    {"\\", "bad escape expression", {}},
    {"a\\", "bad regular expression", {}},
    {"[a\\", "bad regular expression", {}},
    {"[a-", "end of expression found in pattern", {}},
    {"[c-a]", "invalid endpoint in range", {}},
    {"[a-]", "invalid endpoint in range", {}},
    {"ab.[c-a]", "invalid endpoint in range", {literal("ab"), any()}},
};

template <class T>
class VornRegularExpressionCompileTest : public testing::Test {};

TYPED_TEST_SUITE(VornRegularExpressionCompileTest, StringTypes);

}  // namespace

TEST(VornRegularExpressionTokenTest, TypesAndFactorsKeepTheirNumbers)
{
    static_assert(R::tokenInSet == 0 && R::tokenNotInSet == 1 && R::tokenLiteral == 2 && R::tokenAny == 3 &&
                  R::tokenBegin == 4 && R::tokenEnd == 5);
    static_assert(R::factorOne == 0 && R::factorZeroOrOne == 1 && R::factorZeroOrMore == 2 &&
                  R::factorOneOrMore == 3);
    static_assert(sizeof(R::tTokenType) == 4 && sizeof(R::tFactor) == 4);
}

TYPED_TEST(VornRegularExpressionCompileTest, PatternsCompileTokenForToken)
{
    for (const CompileRow& row : g_compileTable) {
        InspectedExpression<TypeParam> expression;
        std::string errorText;
        const bool compiled = expression.setPatternImpl(as<TypeParam>(row.pattern), errorText);
        EXPECT_EQ(compiled, row.error.empty()) << row.pattern;
        if (!compiled) {
            EXPECT_EQ(errorText, row.error) << row.pattern;
        }
        EXPECT_EQ(describe(expression.tokens()), describe(row.tokens)) << row.pattern;
    }
}

TYPED_TEST(VornRegularExpressionCompileTest, TheValueEndsAtTheFirstNul)
{
    InspectedExpression<TypeParam> expression;
    expression.setPattern(as<TypeParam>(std::string("ab\0cd[x\0y]", 10)));
    EXPECT_EQ(describe(expression.tokens()), describe(std::vector<TokenRow>{literal("ab"), inSet("x")}));
}

TYPED_TEST(VornRegularExpressionCompileTest, SetPatternThrowsTheTextWithCodeZero)
{
    InspectedExpression<TypeParam> expression;
    try {
        expression.setPattern(as<TypeParam>("[c-a]"));
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "invalid endpoint in range");
        EXPECT_EQ(error.getCode(), 0);
    }
}

TYPED_TEST(VornRegularExpressionCompileTest, AFailedPatternKeepsTheOldTextAndItsOwnPartialTokens)
{
    InspectedExpression<TypeParam> expression;
    expression.setPattern(as<TypeParam>("xyz"));
    std::string errorText;
    EXPECT_FALSE(expression.setPatternImpl(as<TypeParam>("ab$c"), errorText));
    EXPECT_EQ(expression.pattern(), as<TypeParam>("xyz"));
    EXPECT_EQ(describe(expression.tokens()), describe(std::vector<TokenRow>{literal("ab")}));
    EXPECT_EQ(expression.find(as<TypeParam>("xyzab")), 3u);
}

TEST(VornRegularExpressionRangeTest, EndpointsCompareAsSignedCharactersOfEachWidth)
{
    // 0xE9 is below 'a' as a narrow character and above it as a wide one.
    VornSupport::VornRegularExpression<std::string> narrow;
    std::string errorText;
    EXPECT_FALSE(narrow.setPatternImpl("[a-\xE9]", errorText));
    EXPECT_EQ(errorText, "invalid endpoint in range");
    EXPECT_TRUE(narrow.setPatternImpl("[\xE9-a]", errorText));
    EXPECT_EQ(narrow.find("\xF0"), 0u);

    VornSupport::VornRegularExpression<std::wstring> wide;
    EXPECT_TRUE(wide.setPatternImpl(L"[a-\xE9]", errorText));
    EXPECT_EQ(wide.find(L"\xE0"), 0u);
    EXPECT_FALSE(wide.setPatternImpl(L"[\xE9-a]", errorText));
    EXPECT_EQ(errorText, "invalid endpoint in range");
}

namespace {

template <class T>
class VornRegularExpressionPrintTest : public testing::Test {
protected:
    std::vector<std::string> printed(int level, const std::string& pattern)
    {
        VornSupport::VornRegularExpression<T> expression;
        expression.setPattern(as<T>(pattern));
        return recordsAt(level, [&] { expression.print(); });
    }
};

TYPED_TEST_SUITE(VornRegularExpressionPrintTest, StringTypes);

}  // namespace

TYPED_TEST(VornRegularExpressionPrintTest, PrintsThePatternAndEachTokenAtLevelNine)
{
    const std::vector<std::string> expected = {
        "regular expression: ^[a-c]+x.?[^d]*$",
        "ExpressionToken: type=begin factor=one",
        "ExpressionToken: type=in set factor=one or more",
        "ExpressionToken: type=literal segment=x factor=one",
        "ExpressionToken: type=any factor=zero or one",
        "ExpressionToken: type=not in set factor=zero or more",
        "ExpressionToken: type=end factor=one",
    };
    EXPECT_EQ(this->printed(9, "^[a-c]+x.?[^d]*$"), expected);
}

TYPED_TEST(VornRegularExpressionPrintTest, PrintsNothingBelowLevelNine)
{
    EXPECT_TRUE(this->printed(8, "abc").empty());
}
