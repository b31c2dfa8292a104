#include "support/ThrownText.h"

#include <vsupt/VornException.h>
#include <vsupt/VornVersion.h>

#include <gtest/gtest.h>

#include <string>

using namespace VornSupport;

TEST(VornVersionTest, PrintsBackNumbersAsNumbersAndTheLabelBehindAPoint)
{
    const struct {
        const char* text;
        const char* printed;
    } rows[] = {{"1.2.beta", "1.2.beta"}, {"01.2", "1.2"}, {"1.2x.3", "1.2.3"}, {"1.2.", "1.2"},
                {"beta", ".beta"},        {"-1", ".-1"},   {"", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(VornVersion(row.text).toString(), row.printed) << row.text;
    }
    int parts[] = {1, 2, 3};
    EXPECT_FALSE(VornVersion(parts).isInit());
    EXPECT_FALSE(VornVersion("").isInit());
    EXPECT_TRUE(VornVersion("beta").isInit());
}

TEST(VornVersionTest, ALabelBeforeTheLastPieceThrowsAndKeepsTheNumbersBeforeIt)
{
    EXPECT_EQ(thrownTextAndCode([] { VornVersion("1..2"); }), "VornVersion::parse: invalid version string: 1..2 (0)");
    VornVersion version("1.2");
    version.parse("3.rc");
    EXPECT_EQ(version.toString(), "1.2.3.rc");
    version = std::string("7");
    EXPECT_EQ(thrownTextAndCode([&] { version.parse("8.x.9"); }), "VornVersion::parse: invalid version string: 8.x.9 (0)");
    EXPECT_EQ(version.toString(), "7.8");
}

TEST(VornVersionTest, CompareSkipsTrailingZerosThenRanksLabelsByByteValue)
{
    const auto compare = [](const char* first, const char* second) {
        return VornVersion::compare(VornVersion(first), VornVersion(second));
    };
    EXPECT_EQ(compare("1.2", "1.2.0.0"), VornVersion::Equal);
    EXPECT_EQ(compare("1.2", "1.2.1"), VornVersion::Lower);
    EXPECT_EQ(compare("1.10", "1.9"), VornVersion::Higher);
    EXPECT_EQ(compare("1.0.rc", "1.0.beta"), VornVersion::Higher);
    EXPECT_EQ(compare("1.0", "1.0.rc"), VornVersion::Lower);
    EXPECT_EQ(compare("1.0.Z", "1.0.a"), VornVersion::Lower);
    EXPECT_TRUE(VornVersion("1.9") < VornVersion("1.10"));
    EXPECT_FALSE(VornVersion("2.beta") <= VornVersion("2"));
}

TEST(VornVersionTest, RangesHoldTheirLowerBoundButNotTheUpperOneAndExactVersionsOnlyThemselves)
{
    const VornVersionRange holds;
    // The last character of an unclosed range is dropped unseen; a trailing
    // comma adds an exact empty version.
    const auto ranges = VornVersion::createRangeVector("{1.0-2.0},1.2,");
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_TRUE(holds(ranges[0], VornVersion("1.0")));
    EXPECT_TRUE(holds(ranges[0], VornVersion("1.9.9")));
    EXPECT_FALSE(holds(ranges[0], VornVersion("2.0")));
    EXPECT_FALSE(holds(ranges[0], VornVersion("0.9")));
    EXPECT_TRUE(holds(ranges[1], VornVersion("1.2.0")));
    EXPECT_FALSE(holds(ranges[1], VornVersion("1.2.1")));
    EXPECT_FALSE(ranges[1].second.isInit());
    EXPECT_TRUE(holds(ranges[2], VornVersion()));
    EXPECT_FALSE(holds(ranges[2], VornVersion("1")));
    EXPECT_EQ(VornVersion::createRangeVector("{2.0-3.0")[0].second.toString(), "3");
    EXPECT_TRUE(VornVersion::createRangeVector("").empty());
}

TEST(VornVersionTest, RangeVectorRefusesRangesWithoutRoomAroundTheDash)
{
    for (const char* ranges : {"{-3.0}", "{1}", "{1-}", "1.0,{1-2"}) {
        EXPECT_EQ(thrownTextAndCode([&] { VornVersion::createRangeVector(ranges); }),
                  std::string("VornVersion::createRangeVector: Invalid range specification: ") + ranges + " (0)");
    }
    EXPECT_EQ(VornVersion::createRangeVector("{1-2}")[0].second.toString(), "2");
    EXPECT_EQ(thrownTextAndCode([] { VornVersion::createRangeVector("1.0,{a.b-2}"); }),
              "VornVersion::parse: invalid version string: a.b (0)");
}
