#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include <gtest/gtest.h>

using VornSupport::VornLocaleFactory;

TEST(VornLocaleFactoryTest, TheDefaultLocaleIsTheEnvironmentsWhateverTheFlag)
{
    const std::string environment = VornSupport::GetAppropriateLocaleObject().name();
    EXPECT_EQ(VornLocaleFactory::getDefaultLocale(true).name(), environment);
    EXPECT_EQ(VornLocaleFactory::getDefaultLocale(false).name(), environment);
}
