#include <vsupt/VornServiceControl.h>
#include <vsupt/VornServiceControlException.h>

#include <gtest/gtest.h>

#include <memory>

using namespace VornSupport;

TEST(VornServiceControlTest, EveryOperationThrowsNinetyNineForAnyName)
{
    std::unique_ptr<VornServiceControl> control(VornServiceControl::CreateVornServiceControl(""));
    try {
        control->IsServiceInstalled();
        FAIL() << "answered";
    } catch (VornServiceControlException& error) {
        EXPECT_EQ(99, error.m_nError);
        EXPECT_EQ(0, error.m_nDetail);
    }
    EXPECT_THROW(control->StartService(), VornServiceControlException);
    EXPECT_THROW(control->StopService(), VornServiceControlException);
    EXPECT_THROW(control->RestartService(), VornServiceControlException);
    EXPECT_THROW(control->GetServiceStatus(), VornServiceControlException);
    EXPECT_THROW(control->GetServiceStartType(), VornServiceControlException);
    EXPECT_THROW(control->SetServiceStartType(2), VornServiceControlException);
}
