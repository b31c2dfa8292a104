// Helpers shared by the regular expression tests: one table of narrow
// patterns and texts runs over both instantiations.
#ifndef VSUPT_TESTS_REGULAREXPRESSIONTESTING_H
#define VSUPT_TESTS_REGULAREXPRESSIONTESTING_H

#include <vsupt/VornLogging.h>
#include <vsupt/VornRegularExpression.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace regex_testing {

using StringTypes = testing::Types<std::string, std::wstring>;

// The text in the instantiation's string type, character for character;
// the tables hold ASCII only.
template <class T>
T as(const std::string& text)
{
    return T(text.begin(), text.end());
}

template <class T>
std::string narrowed(const T& text)
{
    return std::string(text.begin(), text.end());
}

// The texts of the log lines in output, without their prefixes.
inline std::vector<std::string> recordTexts(const std::string& output)
{
    std::vector<std::string> texts;
    std::string::size_type start = 0;
    while (start < output.size()) {
        const auto end = output.find('\n', start);
        const std::string line = output.substr(start, end - start);
        const auto bracket = line.find("] ");
        texts.push_back(bracket == std::string::npos ? line : line.substr(bracket + 2));
        start = end == std::string::npos ? output.size() : end + 1;
    }
    return texts;
}

// The texts of the records body writes with a logger at the given level
// installed for the while.
template <class Body>
std::vector<std::string> recordsAt(int level, Body body)
{
    VornSupport::VornLogging logger("log", VornSupport::VornLogging::TargetStdout, level);
    VornSupport::VornLogging::setInstance(logger);
    testing::internal::CaptureStdout();
    body();
    return recordTexts(testing::internal::GetCapturedStdout());
}

// Opens the token vector to the tests.
template <class T>
class InspectedExpression : public VornSupport::VornRegularExpression<T> {
public:
    using Token = typename VornRegularExpressionImplementation<T>::ExpressionToken;

    std::vector<Token> tokens() const { return this->m_tokens; }
    const T& pattern() const { return this->m_pattern; }
};

}  // namespace regex_testing

#endif
