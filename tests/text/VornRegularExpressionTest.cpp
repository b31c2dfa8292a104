// Where patterns match, match and replace, the level-9 trace of a search,
// and finds beside pattern changes.
#include "RegularExpressionTesting.h"


#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace regex_testing;
using VornSupport::VornRegularExpression;

namespace {

constexpr long kNoMatch = -1;
// The length a search is given; a search that ends with an empty match
// stack leaves it alone.
constexpr unsigned long kUntouched = 99;

struct FindRow {
    std::string pattern;
    std::string text;
    unsigned long start;
    long position;  // kNoMatch for none
    unsigned long length;  // after the search, also without a match
};

const std::vector<FindRow> g_findTable = {
    {"abc", "xxabcx", 0, 2, 3},
    {"[ab]c", "xac", 0, kNoMatch, kUntouched},
    {"[ab]*c", "xac", 0, 1, 2},
    {"[a-c]+", "xxbca", 0, kNoMatch, kUntouched},
    {"[a-c]+", "bcax", 0, 0, 3},
    {"[0-9]+\\.[0-9]+", "x1.25", 0, kNoMatch, kUntouched},
    {"[0-9]+\\.[0-9]+", "x1.25", 1, 1, 4},
    {"a*b", "bbb", 0, kNoMatch, kUntouched},
    {"a*b", "xab", 0, 1, 2},
    {"a?b", "b", 0, kNoMatch, kUntouched},
    {"a*", "bbb", 0, kNoMatch, kUntouched},
    {"a*ab", "aaab", 0, 0, 4},
    {"ab*c", "ac", 0, 0, 2},
    {"a.+c", "ac", 0, kNoMatch, kUntouched},
    {"a.+c", "abbc", 0, 0, 4},
    {"a.?c", "abc", 0, 0, 3},
    {".*", "abc", 0, 0, 3},
    {".*c", "abc", 0, 0, 3},
    {"a.*c", "abcabc", 0, 0, 6},
    {".", "\n", 0, 0, 1},
    {"x*x", "xxx", 0, 0, 3},
    {"a.*b.*c", "aXbYcZb", 0, 0, 5},
    {".+$", "ab", 0, 0, 2},
    // Equal tokens count as one: the second `+` needs no occurrence of its own.
    {"[ab]+[ab]+c", "abc", 0, 0, 3},
    {"abc$", "abcabc", 0, kNoMatch, 3},
    {"abc$", "xabc", 0, 1, 3},
    {"^abc", "xabc", 0, kNoMatch, 3},
    {"^abc", "xabc", 1, 1, 3},
    {"^", "abc", 0, kNoMatch, kUntouched},
    {"$", "abc", 0, kNoMatch, kUntouched},
    {"[ab]c", "axbc", 0, kNoMatch, kUntouched},
    {"ab[cd]e", "abcfabde", 0, 4, 4},
    {"[-a]", "a", 0, kNoMatch, kUntouched},
    {"[^-a]", "a", 0, 0, 1},
    {"[^-a]", "", 0, kNoMatch, kUntouched},
    {"b", "abc", 4, kNoMatch, kUntouched},
    {"", "", 0, kNoMatch, kUntouched},
    {"", "abc", 0, kNoMatch, kUntouched},
    {"ABC", "abc", 0, kNoMatch, kUntouched},
};

template <class T>
class VornRegularExpressionFindTest : public testing::Test {};

TYPED_TEST_SUITE(VornRegularExpressionFindTest, StringTypes);

}  // namespace

TYPED_TEST(VornRegularExpressionFindTest, TextsMatchPositionForPosition)
{
    for (const FindRow& row : g_findTable) {
        VornRegularExpression<TypeParam> expression;
        expression.setPattern(as<TypeParam>(row.pattern));
        unsigned long length = kUntouched;
        const unsigned long found = expression.find(as<TypeParam>(row.text), length, row.start);
        const std::string where = row.pattern + " in " + row.text + " from " + std::to_string(row.start);
        const unsigned long expected = row.position == kNoMatch ? TypeParam::npos : row.position;
        EXPECT_EQ(found, expected) << where;
        EXPECT_EQ(length, row.length) << where;
    }
}

TYPED_TEST(VornRegularExpressionFindTest, ANewObjectFindsNothing)
{
    VornRegularExpression<TypeParam> expression;
    EXPECT_EQ(expression.find(as<TypeParam>("")), TypeParam::npos);
    EXPECT_EQ(expression.find(as<TypeParam>("abc")), TypeParam::npos);
}

TYPED_TEST(VornRegularExpressionFindTest, MatchGivesTheMatchedTextOrNothing)
{
    VornRegularExpression<TypeParam> expression;
    expression.setPattern(as<TypeParam>("[0-9]+\\.[0-9]+"));
    EXPECT_EQ(expression.match(as<TypeParam>("pi=3.14;"), 3), as<TypeParam>("3.14"));
    EXPECT_EQ(expression.match(as<TypeParam>("pi=3.14;")), TypeParam());
}

TYPED_TEST(VornRegularExpressionFindTest, ReplaceTakesTheFirstOrEveryMatch)
{
    using Expression = VornRegularExpression<TypeParam>;
    Expression expression;
    expression.setPattern(as<TypeParam>("a"));
    const TypeParam text = as<TypeParam>("aXa");
    EXPECT_EQ(expression.replace(text, as<TypeParam>("b"), Expression::occurrenceAll), as<TypeParam>("bXb"));
    EXPECT_EQ(expression.replace(text, as<TypeParam>("b"), Expression::occurrenceFirst), as<TypeParam>("bXa"));
    EXPECT_EQ(expression.replace(text, as<TypeParam>("b"), static_cast<typename Expression::Occurrence>(7)),
              as<TypeParam>("bXa"));
    EXPECT_EQ(expression.replace(text, as<TypeParam>("b"), Expression::occurrenceAll, 1), as<TypeParam>("aXb"));
    // The search resumes behind the inserted text.
    EXPECT_EQ(expression.replace(text, as<TypeParam>("aa"), Expression::occurrenceAll), as<TypeParam>("aaXaa"));
    EXPECT_EQ(expression.replace(as<TypeParam>("XY"), as<TypeParam>("b"), Expression::occurrenceAll),
              as<TypeParam>("XY"));
}

TYPED_TEST(VornRegularExpressionFindTest, EachReplacementIsAnchoredAtItsOwnStart)
{
    using Expression = VornRegularExpression<TypeParam>;
    Expression expression;
    expression.setPattern(as<TypeParam>("^a"));
    EXPECT_EQ(expression.replace(as<TypeParam>("aaa"), as<TypeParam>("b"), Expression::occurrenceAll),
              as<TypeParam>("bbb"));
}

namespace {

template <class T>
class VornRegularExpressionTraceTest : public testing::Test {
protected:
    std::vector<std::string> traced(int level, const std::string& pattern, const std::string& text)
    {
        VornRegularExpression<T> expression;
        expression.setPattern(as<T>(pattern));
        unsigned long length = 7;
        return recordsAt(level, [&] { expression.find(as<T>(text), length, 0); });
    }
};

TYPED_TEST_SUITE(VornRegularExpressionTraceTest, StringTypes);

}  // namespace

TYPED_TEST(VornRegularExpressionTraceTest, TracesEachEntryTheStackAndTheResult)
{
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
    EXPECT_EQ(this->traced(9, "a.[b]+", "xaybb"), expected);
}

TYPED_TEST(VornRegularExpressionTraceTest, AFailedSearchReportsMinusOneAndTheUntouchedLength)
{
    const std::vector<std::string> expected = {
        "xyz.find (a, 0) = 18446744073709551615",
        "VornRegularExpressionImplementation::find: match stack begin",
        "VornRegularExpressionImplementation::find: match stack end",
        "VornRegularExpressionImplementation::find: match found at -1:7",
    };
    EXPECT_EQ(this->traced(9, "a", "xyz"), expected);
}

TYPED_TEST(VornRegularExpressionTraceTest, TracesNothingBelowLevelNine)
{
    EXPECT_TRUE(this->traced(8, "a[b]+", "xab").empty());
}

TEST(VornRegularExpressionThreadTest, FindsBesidePatternChangesSeeOneWholePattern)
{
    // Each pattern finds its own place in the text; a half-built token list
    // would find neither.
    VornRegularExpression<std::string> expression;
    expression.setPattern("[0-9]+x");
    const std::string text = "abcdefgh 123x";
    std::atomic<bool> done(false);
    std::atomic<int> strays(0);
    std::thread finder([&] {
        while (!done) {
            unsigned long length = 0;
            const unsigned long found = expression.find(text, length, 9);
            if (found != 9 || length != 4) {
                ++strays;
            }
        }
    });
    for (int i = 0; i < 2000; ++i) {
        expression.setPattern(i % 2 ? "[0-9]+x" : "123[x]");
    }
    done = true;
    finder.join();
    EXPECT_EQ(strays, 0);
}
