#include <vsupt/VornException.h>
#include <vsupt/VornInvalidDateException.h>
#include <vsupt/VornInvalidEncryptionException.h>
#include <vsupt/VornKeyDataNotSupportedException.h>
#include <vsupt/VornMissingMessageException.h>
#include <vsupt/VornNoSuchElementException.h>
#include <vsupt/VornPropertyNotFound.h>

#include <gtest/gtest.h>

#include <deque>
#include <string>

using namespace VornSupport;

TEST(VornExceptionTest, TheTextStartsTheStackAndACodeAloneLeavesBothEmpty)
{
    const VornException error("disk full", 3);
    EXPECT_EQ(error.getUText(), L"disk full");
    EXPECT_EQ(error.getCode(), 3);
    EXPECT_EQ(error.getCallStack(), std::deque<std::wstring>{L"disk full"});

    VornException bare(7);
    EXPECT_EQ(bare.getText(), "");
    EXPECT_EQ(bare.popMessage(), L"");
    EXPECT_TRUE(bare.getCallStack().empty());
}

TEST(VornExceptionTest, FormattedMessagesStandNewestFirstAndSetTextLeavesTheStack)
{
    VornException error("a", 0);
    error.pushMessage(L"b");
    error.pushMessage(L"c");
    error.setText("second");
    EXPECT_EQ(error.getText(), "second");
    error.setText(std::wstring(L"third"));
    EXPECT_EQ(error.getUText(), L"third");
    EXPECT_EQ(error.getFormattedMessages(), L"c\nb\na");
    EXPECT_EQ(error.popMessage(), L"c");
    EXPECT_EQ(error.getFormattedMessages(), L"b\na");
}

TEST(VornExceptionTest, CopiesHaveStacksOfTheirOwn)
{
    VornException original("a", 0);
    original.pushMessage(L"b");
    VornException copy(original);
    copy.pushMessage(L"c");
    VornException assigned(5);
    assigned = original;
    assigned.popMessage();
    EXPECT_EQ(copy.getFormattedMessages(), L"c\nb\na");
    EXPECT_EQ(assigned.getFormattedMessages(), L"a");
    EXPECT_EQ(assigned.getCode(), 0);
    EXPECT_EQ(original.getFormattedMessages(), L"b\na");
    VornException& same = copy;
    copy = same;
    EXPECT_EQ(copy.getFormattedMessages(), L"c\nb\na");
}

TEST(VornExceptionTest, TheFamilyPrefixesItsTextsWithCodeZero)
{
    EXPECT_EQ(VornKeyDataNotSupportedException("HKEY").getText(), "VornKeyDataNotSupportedException - HKEY");
    EXPECT_EQ(VornInvalidDateException("bad").getText(), "VornInvalidDateException - bad");
    EXPECT_EQ(VornInvalidEncryptionException("empty").getText(), "VornInvalidEncryptionException - empty");
    EXPECT_EQ(VornMissingMessageException("greeting").getText(), "VornMissingMessageException - Missing greeting");
    EXPECT_EQ(VornNoSuchElementException("lockA").getText(), "VornNoSuchElementException - lockA");
    EXPECT_EQ(VornNoSuchElementException("lockA").getCode(), 0);
}

TEST(VornExceptionTest, PropertyNotFoundNamesThePropertyInEveryStringKind)
{
    EXPECT_EQ(VornPropertyNotFound(std::string("port")).getText(), "Property not found: port");
    EXPECT_EQ(VornPropertyNotFound(ci_string("ab\0cd", 5)).getText(), "Property not found: ab");
    EXPECT_EQ(VornPropertyNotFound(ci_wstring(L"Ab\0cd", 5)).getUText(), L"Property not found: Ab");
    // A wide name passes through the narrow form, where a character no
    // single byte holds turns into a blank.
    EXPECT_EQ(VornPropertyNotFound(std::wstring(L"a\u4e2db")).getUText(), L"Property not found: a b");
    EXPECT_EQ(VornPropertyNotFound().getText(), "");
}
