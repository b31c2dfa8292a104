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

using VornSupport::VornException;
using VornSupport::VornPropertyNotFound;

namespace {

VornException exceptionWithMessages()
{
    VornException error("a", 0);
    error.pushMessage(L"b");
    error.pushMessage(L"c");
    return error;
}

}  // namespace

TEST(VornExceptionTest, ANarrowTextArrivesWideAndStartsTheStack)
{
    const VornException error("disk full", 3);
    EXPECT_EQ(error.getUText(), L"disk full");
    EXPECT_EQ(error.getText(), "disk full");
    EXPECT_EQ(error.getCode(), 3);
    EXPECT_EQ(error.getCallStack(), std::deque<std::wstring>{L"disk full"});
}

TEST(VornExceptionTest, ACodeAloneLeavesTextAndStackEmpty)
{
    VornException error(7);
    EXPECT_EQ(error.getCode(), 7);
    EXPECT_EQ(error.getText(), "");
    EXPECT_EQ(error.getFormattedMessages(), L"");
    EXPECT_EQ(error.popMessage(), L"");
    EXPECT_TRUE(error.getCallStack().empty());
}

TEST(VornExceptionTest, FormattedMessagesStandNewestFirstAndLeaveTheStack)
{
    VornException error = exceptionWithMessages();
    EXPECT_EQ(error.getFormattedMessages(), L"c\nb\na");
    EXPECT_EQ(error.getFormattedMessages(), L"c\nb\na");
    EXPECT_EQ(error.popMessage(), L"c");
    EXPECT_EQ(error.getFormattedMessages(), L"b\na");
}

TEST(VornExceptionTest, SetTextReplacesTheTextButNotTheFirstMessage)
{
    VornException error("first", 0);
    error.setText("second");
    EXPECT_EQ(error.getText(), "second");
    error.setText(std::wstring(L"third"));
    EXPECT_EQ(error.getUText(), L"third");
    EXPECT_EQ(error.getFormattedMessages(), L"first");
}

TEST(VornExceptionTest, CopiesHaveStacksOfTheirOwn)
{
    const VornException original = exceptionWithMessages();
    VornException copy(original);
    copy.pushMessage(L"d");
    VornException assigned(5);
    assigned = original;
    assigned.popMessage();
    EXPECT_EQ(copy.getFormattedMessages(), L"d\nc\nb\na");
    EXPECT_EQ(assigned.getFormattedMessages(), L"b\na");
    EXPECT_EQ(assigned.getCode(), 0);
    EXPECT_EQ(original.getFormattedMessages(), L"c\nb\na");

    VornException& same = copy;
    copy = same;
    EXPECT_EQ(copy.getFormattedMessages(), L"d\nc\nb\na");
}

TEST(VornExceptionTest, TheFamilyPrefixesItsTextsWithCodeZero)
{
    EXPECT_EQ(VornSupport::VornKeyDataNotSupportedException("HKEY").getText(), "VornKeyDataNotSupportedException - HKEY");
    EXPECT_EQ(VornSupport::VornNoSuchElementException("lockA").getText(), "VornNoSuchElementException - lockA");
    EXPECT_EQ(VornSupport::VornInvalidDateException("Input does not compute to a valid DateTime object").getText(),
              "VornInvalidDateException - Input does not compute to a valid DateTime object");
    EXPECT_EQ(VornSupport::VornInvalidEncryptionException("The key passed is empty").getText(),
              "VornInvalidEncryptionException - The key passed is empty");
    EXPECT_EQ(VornSupport::VornMissingMessageException("greeting").getText(),
              "VornMissingMessageException - Missing greeting");
    EXPECT_EQ(VornSupport::VornMissingMessageException("greeting").getCode(), 0);
}

TEST(VornExceptionTest, AFamilyMemberIsCaughtAsTheRootAndKeepsItsClass)
{
    try {
        throw VornSupport::VornNoSuchElementException("lockA");
    } catch (VornException& error) {
        EXPECT_NE(dynamic_cast<VornSupport::VornNoSuchElementException*>(&error), nullptr);
        EXPECT_EQ(dynamic_cast<VornSupport::VornInvalidDateException*>(&error), nullptr);
        EXPECT_EQ(error.getCallStack().size(), 1u);
    }
}

TEST(VornExceptionTest, PropertyNotFoundNamesThePropertyInEveryStringKind)
{
    EXPECT_EQ(VornPropertyNotFound(std::string("port")).getText(), "Property not found: port");
    EXPECT_EQ(VornPropertyNotFound(std::wstring(L"port")).getUText(), L"Property not found: port");
    EXPECT_EQ(VornPropertyNotFound(ci_string("ab\0cd", 5)).getText(), "Property not found: ab");
    EXPECT_EQ(VornPropertyNotFound(ci_wstring(L"Ab\0cd", 5)).getUText(), L"Property not found: Ab");

    const VornPropertyNotFound unnamed;
    EXPECT_EQ(unnamed.getText(), "");
    EXPECT_EQ(unnamed.getCode(), 0);
    EXPECT_TRUE(unnamed.getCallStack().empty());
}

// On its way in, a wide name passes through the narrow form, where a
// character no single byte holds turns into a blank.
TEST(VornExceptionTest, AWidePropertyNameIsNarrowedOnItsWayIn)
{
    EXPECT_EQ(VornPropertyNotFound(std::wstring(L"a\u4e2db")).getUText(), L"Property not found: a b");
}
