#include <vsupt/VornServiceControl.h>
#include <vsupt/VornServiceControlException.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

using namespace VornSupport;

TEST(VornServiceControlTest, EveryOperationThrowsNinetyNineForAnyName)
{
    std::unique_ptr<VornServiceControl> control(VornServiceControl::CreateVornServiceControl(""));
    ASSERT_NE(nullptr, control);
    VornServiceControl& c = *control;
    const std::vector<std::function<void()>> operations = {
        [&] { c.StartService(); },        [&] { c.StopService(); },
        [&] { c.RestartService(); },      [&] { c.GetServiceStatus(); },
        [&] { c.GetServiceStartType(); }, [&] { c.SetServiceStartType(2); },
        [&] { c.IsServiceInstalled(); },
    };
    for (const auto& operation : operations) {
        try {
            operation();
            ADD_FAILURE() << "no exception";
        } catch (VornServiceControlException& error) {
            EXPECT_EQ(99, error.m_nError);
            EXPECT_EQ(0, error.m_nDetail);
        }
    }
}
