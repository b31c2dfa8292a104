#include <vsupt/VornException.h>
#include <vsupt/VornVersion.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace VornSupport;

namespace {

std::string thrownText(void (*action)())
{
    try {
        action();
    } catch (const VornException& e) {
        return e.getText();
    }
    return "nothing thrown";
}

using Ranges = std::vector<std::pair<VornVersion, VornVersion> >;

std::vector<std::pair<std::string, std::string> > texts(const Ranges& ranges)
{
    std::vector<std::pair<std::string, std::string> > result;
    for (const auto& range : ranges) {
        result.emplace_back(range.first.toString(), range.second.toString());
    }
    return result;
}

}  // namespace

TEST(VornVersionTest, NumbersAndLabelPrintBackAsParsed)
{
    EXPECT_EQ(VornVersion("1.2.3").toString(), "1.2.3");
    EXPECT_EQ(VornVersion("1.2.beta").toString(), "1.2.beta");
    EXPECT_EQ(VornVersion("4").toString(), "4");
}

TEST(VornVersionTest, NumbersAreReadAsFarAsTheirDigitsGo)
{
    EXPECT_EQ(VornVersion("01.2").toString(), "1.2");
    EXPECT_EQ(VornVersion("1.2x.3").toString(), "1.2.3");
}

TEST(VornVersionTest, ALabelAlonePrintsWithALeadingPoint)
{
    const VornVersion label("beta");
    EXPECT_TRUE(label.isInit());
    EXPECT_EQ(label.toString(), ".beta");
    EXPECT_EQ(VornVersion("-1").toString(), ".-1");
}

TEST(VornVersionTest, EmptyTextAndIntPointerGiveAnEmptyVersion)
{
    int parts[] = {1, 2, 3};
    for (const VornVersion& empty : {VornVersion(""), VornVersion(parts), VornVersion()}) {
        EXPECT_FALSE(empty.isInit());
        EXPECT_EQ(empty.toString(), "");
    }
}

TEST(VornVersionTest, AnEmptyLastPieceAddsNothing)
{
    const VornVersion version("1.2.");
    EXPECT_EQ(version.toString(), "1.2");
    EXPECT_EQ(VornVersion::compare(version, VornVersion("1.2")), VornVersion::Equal);
}

TEST(VornVersionTest, ALabelBeforeTheLastPieceThrowsTheWholeText)
{
    EXPECT_EQ(thrownText([] { VornVersion("1.beta.2"); }), "VornVersion::parse: invalid version string: 1.beta.2");
    EXPECT_EQ(thrownText([] { VornVersion("1..2"); }), "VornVersion::parse: invalid version string: 1..2");
}

TEST(VornVersionTest, AFailedParseKeepsTheNumbersBeforeTheLabel)
{
    VornVersion version;
    EXPECT_THROW(version.parse("7.x.8"), VornException);
    EXPECT_EQ(version.toString(), "7");
}

TEST(VornVersionTest, ParseAppendsWhileAssignmentStartsAfresh)
{
    VornVersion version("1.2");
    version.parse("3.rc");
    EXPECT_EQ(version.toString(), "1.2.3.rc");
    version = std::string("5");
    EXPECT_EQ(version.toString(), "5");
}

TEST(VornVersionTest, CompareSkipsTrailingZerosAndComparesNumbersAsNumbers)
{
    EXPECT_EQ(VornVersion::compare(VornVersion("1.2"), VornVersion("1.2.0.0")), VornVersion::Equal);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.2"), VornVersion("1.2.1")), VornVersion::Lower);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.2.1"), VornVersion("1.2")), VornVersion::Higher);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.10"), VornVersion("1.9")), VornVersion::Higher);
}

TEST(VornVersionTest, CompareRanksLabelsByByteValueAndAboveNoLabel)
{
    EXPECT_EQ(VornVersion::compare(VornVersion("1.0.rc"), VornVersion("1.0.beta")), VornVersion::Higher);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.0"), VornVersion("1.0.rc")), VornVersion::Lower);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.0.Z"), VornVersion("1.0.a")), VornVersion::Lower);
    EXPECT_EQ(VornVersion::compare(VornVersion("1.1"), VornVersion("1.0.rc")), VornVersion::Higher);
}

TEST(VornVersionTest, OperatorsFollowCompare)
{
    EXPECT_TRUE(VornVersion("1.2") == VornVersion("1.2.0"));
    EXPECT_TRUE(VornVersion("1.9") < VornVersion("1.10"));
    EXPECT_TRUE(VornVersion("2") >= VornVersion("2.0"));
    EXPECT_FALSE(VornVersion("2.beta") <= VornVersion("2"));
}

TEST(VornVersionTest, RangeVectorKeepsExactVersionsAndRangesInOrder)
{
    const Ranges ranges = VornVersion::createRangeVector("1.0,{2.0-3.0}");
    const std::vector<std::pair<std::string, std::string> > expected = {{"1.0", ""}, {"2.0", "3.0"}};
    EXPECT_EQ(texts(ranges), expected);
}

TEST(VornVersionTest, RangeVectorDropsTheLastCharacterOfARangeWhateverItIs)
{
    const Ranges ranges = VornVersion::createRangeVector("{2.0-3.0");
    ASSERT_EQ(ranges.size(), 1u);
    EXPECT_EQ(ranges[0].second.toString(), "3");
    EXPECT_EQ(VornVersion::createRangeVector("{1-2}")[0].second.toString(), "2");
}

TEST(VornVersionTest, RangeVectorRefusesRangesWithoutRoomAroundTheDash)
{
    for (const char* specification : {"{-3.0}", "{1}", "{1-}", "{1-2", "1.0,{1-2"}) {
        try {
            VornVersion::createRangeVector(specification);
            ADD_FAILURE() << specification << " was accepted";
        } catch (const VornException& e) {
            EXPECT_EQ(e.getText(), std::string("VornVersion::createRangeVector: Invalid range specification: ") +
                                       specification);
        }
    }
}

TEST(VornVersionTest, RangeVectorOfBadVersionTextThrowsTheParseText)
{
    EXPECT_EQ(thrownText([] { VornVersion::createRangeVector("1.0,{a.b-2}"); }),
              "VornVersion::parse: invalid version string: a.b");
}

TEST(VornVersionTest, RangeVectorOfEmptyOrTrailingCommaSpecification)
{
    EXPECT_TRUE(VornVersion::createRangeVector("").empty());
    const Ranges ranges = VornVersion::createRangeVector("1.0,");
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_FALSE(ranges[1].first.isInit());
    EXPECT_TRUE(VornVersionRange()(ranges[1], VornVersion()));
    EXPECT_FALSE(VornVersionRange()(ranges[1], VornVersion("1")));
}

TEST(VornVersionTest, RangeHoldsItsLowerBoundButNotItsUpperBound)
{
    const VornVersionRange holds;
    const auto range = VornVersion::createRangeVector("{1.0-2.0}")[0];
    EXPECT_TRUE(holds(range, VornVersion("1.0")));
    EXPECT_TRUE(holds(range, VornVersion("1.9.9")));
    EXPECT_FALSE(holds(range, VornVersion("2.0")));
    EXPECT_FALSE(holds(range, VornVersion("0.9")));
}

TEST(VornVersionTest, ExactRangeHoldsOnlyEqualVersions)
{
    const VornVersionRange holds;
    const auto exact = VornVersion::createRangeVector("1.2")[0];
    EXPECT_TRUE(holds(exact, VornVersion("1.2.0")));
    EXPECT_FALSE(holds(exact, VornVersion("1.2.1")));
}
