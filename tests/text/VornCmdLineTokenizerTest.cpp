#include <vsupt/VornCmdLineTokenizer.h>
#include <vsupt/VornTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VornSupport::VornCmdLineTokenizer;

namespace {

using Words = std::vector<std::string>;

Words optionWords(const std::string& text)
{
    VornCmdLineTokenizer<std::string> tokenizer(text);
    tokenizer.setSeparators(" \t");
    tokenizer.setQuotes("\"'");
    Words words;
    while (tokenizer.hasMoreTokens()) {
        words.push_back(tokenizer.next());
    }
    return words;
}

Words pieces(const std::string& text, const std::string& delimiter, bool whole)
{
    VornTokenizer<std::string> tokenizer(text, delimiter, whole);
    Words words;
    while (tokenizer.hasMoreTokens()) {
        words.push_back(tokenizer.next());
    }
    return words;
}

}  // namespace

TEST(VornCmdLineTokenizerTest, SplitsWordsAndQuotedRunsLikeAShell)
{
    const struct {
        const char* text;
        Words words;
    } cases[] = {
        {"-a \"b c\"", {"-a", "b c"}},
        {"-a \"bc\"", {"-a", "\"bc\""}},
        {"-a 'b''c d' e", {"-a", "b'c d", "e"}},
        {"x\"y z\"w v", {"xy zw", "v"}},
        {"a   b", {"a", "b"}},
        {"  a", {"", "a"}},
        {"\"a b", {"a b"}},
        {"'a \"b' c", {"a \"b", "c"}},
        {"a\tb\t", {"a", "b"}},
        {"'' x", {"", "x"}},
        {"", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(optionWords(c.text), c.words) << c.text;
    }
}

TEST(VornCmdLineTokenizerTest, NothingIsAvailableWithoutSeparators)
{
    VornCmdLineTokenizer<std::string> tokenizer("a b");
    EXPECT_FALSE(tokenizer.hasMoreTokens());
}

TEST(VornTokenizerClassTest, SplitsAtAWholeDelimiterOrAnyOfItsCharacters)
{
    EXPECT_EQ(pieces("1.2.beta", ".", true), (Words{"1", "2", "beta"}));
    EXPECT_EQ(pieces("1.2.", ".", true), (Words{"1", "2", ""}));
    EXPECT_EQ(pieces("a::b:c", "::", true), (Words{"a", "b:c"}));
    EXPECT_EQ(pieces("a,b;c", ",;", false), (Words{"a", "b", "c"}));
    EXPECT_EQ(pieces("", ",", true), Words{});
    EXPECT_EQ(pieces("a,b", "", true), Words{});
}
