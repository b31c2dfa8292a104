#include <vsupt/VornCmdLineTokenizer.h>
#include <vsupt/VornTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Words = std::vector<std::string>;

namespace {

template <class Tokenizer>
Words drain(Tokenizer&& tokenizer)
{
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
        {"  a \t b\t", {"", "a", "b"}},
        {"\"a b", {"a b"}},
        {"'' x", {"", "x"}},
        {"", {}},
    };
    for (const auto& c : cases) {
        VornSupport::VornCmdLineTokenizer<std::string> tokenizer(c.text);
        tokenizer.setSeparators(" \t");
        tokenizer.setQuotes("\"'");
        EXPECT_EQ(drain(tokenizer), c.words) << c.text;
    }
    EXPECT_EQ(drain(VornSupport::VornCmdLineTokenizer<std::string>("a b")), Words{});
}

// A separator that is a quote as well opens a quoted run when it is the
// first of them to come.
TEST(VornCmdLineTokenizerTest, ASeparatorThatIsAQuoteOpensARun)
{
    VornSupport::VornCmdLineTokenizer<std::string> tokenizer("ab\"c d\" e");
    tokenizer.setSeparators(" \"");
    tokenizer.setQuotes("\"'");
    EXPECT_EQ(drain(tokenizer), (Words{"abc d", "e"}));
}

TEST(VornCmdLineTokenizerTest, SplitsAQuarterMegabyteOfOptionsInOnePass)
{
    const int count = 256 * 1024 / 3;
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "-a ";
    }
    VornSupport::VornCmdLineTokenizer<std::string> tokenizer(text);
    tokenizer.setSeparators(" \t");
    tokenizer.setQuotes("\"'");
    const Words words = drain(tokenizer);
    EXPECT_EQ(words, Words(count, "-a"));
}

TEST(VornTokenizerClassTest, SplitsAtAWholeDelimiterOrAnyOfItsCharacters)
{
    using Tokenizer = VornTokenizer<std::string>;
    EXPECT_EQ(drain(Tokenizer("1.2.", ".", true)), (Words{"1", "2", ""}));
    EXPECT_EQ(drain(Tokenizer("a::b:c", "::", true)), (Words{"a", "b:c"}));
    EXPECT_EQ(drain(Tokenizer("a,b;c", ",;", false)), (Words{"a", "b", "c"}));
    EXPECT_EQ(drain(Tokenizer("a,b", "", true)), Words{});
}
