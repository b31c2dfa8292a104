#include <vsupt/VornException.h>
#include <vsupt/VornVersion.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace VornSupport;

namespace {

using Ranges = std::vector<std::pair<VornVersion, VornVersion> >;

std::string thrownText(void (*action)())
{
    try {
        action();
    } catch (const VornException& e) {
        return e.getText();
    }
    return "nothing thrown";
}

int compare(const char* first, const char* second)
{
    return VornVersion::compare(VornVersion(first), VornVersion(second));
}

}  // namespace

TEST(VornVersionTest, PrintsBackNumbersAsNumbersAndTheLabelBehindAPoint)
{
    EXPECT_EQ(VornVersion("1.2.3").toString(), "1.2.3");
    EXPECT_EQ(VornVersion("1.2.beta").toString(), "1.2.beta");
    EXPECT_EQ(VornVersion("01.2").toString(), "1.2");
    EXPECT_EQ(VornVersion("1.2x.3").toString(), "1.2.3");
    EXPECT_EQ(VornVersion("1.2.").toString(), "1.2");
    EXPECT_EQ(VornVersion("beta").toString(), ".beta");
    EXPECT_EQ(VornVersion("-1").toString(), ".-1");
}

TEST(VornVersionTest, EmptyTextAndIntPointerGiveAnEmptyVersion)
{
    int parts[] = {1, 2, 3};
    for (const VornVersion& empty : {VornVersion(""), VornVersion(parts), VornVersion()}) {
        EXPECT_FALSE(empty.isInit());
        EXPECT_EQ(empty.toString(), "");
    }
    EXPECT_TRUE(VornVersion("beta").isInit());
}

TEST(VornVersionTest, ALabelBeforeTheLastPieceThrowsAndKeepsTheNumbersBeforeIt)
{
    EXPECT_EQ(thrownText([] { VornVersion("1.beta.2"); }), "VornVersion::parse: invalid version string: 1.beta.2");
    EXPECT_EQ(thrownText([] { VornVersion("1..2"); }), "VornVersion::parse: invalid version string: 1..2");
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

TEST(VornVersionTest, CompareSkipsTrailingZerosThenRanksLabelsByByteValue)
{
    EXPECT_EQ(compare("1.2", "1.2.0.0"), VornVersion::Equal);
    EXPECT_EQ(compare("1.2", "1.2.1"), VornVersion::Lower);
    EXPECT_EQ(compare("1.2.1", "1.2"), VornVersion::Higher);
    EXPECT_EQ(compare("1.10", "1.9"), VornVersion::Higher);
    EXPECT_EQ(compare("1.0.rc", "1.0.beta"), VornVersion::Higher);
    EXPECT_EQ(compare("1.0", "1.0.rc"), VornVersion::Lower);
    EXPECT_EQ(compare("1.0.Z", "1.0.a"), VornVersion::Lower);
    EXPECT_TRUE(VornVersion("1.9") < VornVersion("1.10"));
    EXPECT_FALSE(VornVersion("2.beta") <= VornVersion("2"));
}

TEST(VornVersionTest, RangeVectorReadsExactVersionsAndRangesInOrder)
{
    const Ranges ranges = VornVersion::createRangeVector("1.0,{2.0-3.0},{2.0-3.0");
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_EQ(ranges[0].first.toString(), "1.0");
    EXPECT_FALSE(ranges[0].second.isInit());
    EXPECT_EQ(ranges[1].first.toString(), "2.0");
    EXPECT_EQ(ranges[1].second.toString(), "3.0");
    // The last character of a range is dropped unseen.
    EXPECT_EQ(ranges[2].second.toString(), "3");
    EXPECT_TRUE(VornVersion::createRangeVector("").empty());
}

TEST(VornVersionTest, RangeVectorRefusesRangesWithoutRoomAroundTheDash)
{
    for (const char* ranges : {"{-3.0}", "{1}", "{1-}", "{1-2", "1.0,{1-2"}) {
        try {
            VornVersion::createRangeVector(ranges);
            ADD_FAILURE() << ranges << " was accepted";
        } catch (const VornException& e) {
            EXPECT_EQ(e.getText(), std::string("VornVersion::createRangeVector: Invalid range specification: ") +
                                       ranges);
        }
    }
    EXPECT_EQ(VornVersion::createRangeVector("{1-2}")[0].second.toString(), "2");
    EXPECT_EQ(thrownText([] { VornVersion::createRangeVector("1.0,{a.b-2}"); }),
              "VornVersion::parse: invalid version string: a.b");
}

TEST(VornVersionTest, RangeHoldsItsLowerBoundButNotItsUpperBound)
{
    const VornVersionRange holds;
    const Ranges ranges = VornVersion::createRangeVector("{1.0-2.0},1.2,");
    EXPECT_TRUE(holds(ranges[0], VornVersion("1.0")));
    EXPECT_TRUE(holds(ranges[0], VornVersion("1.9.9")));
    EXPECT_FALSE(holds(ranges[0], VornVersion("2.0")));
    EXPECT_FALSE(holds(ranges[0], VornVersion("0.9")));
    EXPECT_TRUE(holds(ranges[1], VornVersion("1.2.0")));
    EXPECT_FALSE(holds(ranges[1], VornVersion("1.2.1")));
    // A trailing comma adds an exact empty version.
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_TRUE(holds(ranges[2], VornVersion()));
    EXPECT_FALSE(holds(ranges[2], VornVersion("1")));
}
