#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornLockFactory.h>
#include <vsupt/VornNoSuchElementException.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VornSupport;

using Names = std::vector<std::string>;
using Sections = VornLockFactory<std::string, VornCriticalSectionObject>;

TEST(VornLockFactoryTest, CreatingANameAgainKeepsTheLockAndItsHolder)
{
    Sections factory;
    factory.createLock("a");
    VornCriticalSectionObject& section = factory.get("a");
    section.lock();
    factory.createLock("a");
    EXPECT_EQ(&factory.get("a"), &section);
    EXPECT_FALSE(testAndSetElsewhere(factory.get("a")));
    section.unlock();
    EXPECT_EQ(factory.getRegisteredLockNames(), Names{"a"});
}

TEST(VornLockFactoryTest, NamesComeBackSortedAndAnUnknownOneIsReportedByEachLookUp)
{
    VornLockFactory<std::string, VornMutexObject> factory;
    EXPECT_TRUE(factory.getRegisteredLockNames().empty());
    for (const char* name : {"m", "b", "z"}) {
        factory.createLock(name);
    }
    EXPECT_EQ(factory.getRegisteredLockNames(), (Names{"b", "m", "z"}));
    EXPECT_FALSE(factory.exists("a"));
    VornMutexObject untouched;
    VornMutexObject* lock = &untouched;
    EXPECT_FALSE(factory.getImpl("a", lock));
    EXPECT_EQ(lock, &untouched);
    try {
        factory.get("a");
        FAIL() << "no exception";
    } catch (const VornNoSuchElementException& error) {
        EXPECT_EQ(error.getText(), "VornNoSuchElementException - a");
    }
}
