// Helpers shared by the regular expression tests: one table of narrow
// patterns and texts runs over both instantiations.
#ifndef VSUPT_TESTS_REGULAREXPRESSIONTESTING_H
#define VSUPT_TESTS_REGULAREXPRESSIONTESTING_H

#include "support/LogRecords.h"

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

using log_records::recordsAt;
using log_records::recordTexts;

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
