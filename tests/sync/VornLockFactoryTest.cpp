#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornLockFactory.h>
#include <vsupt/VornNoSuchElementException.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VornSupport;

using ReadWriteLocks = VornLockFactory<std::string, VornReadWriteLock>;
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
    EXPECT_TRUE(testAndSetElsewhere(factory.get("a")));
    EXPECT_EQ(factory.getRegisteredLockNames(), std::vector<std::string>{"a"});
}

TEST(VornLockFactoryTest, AnUnknownNameIsReportedByEachLookUp)
{
    VornLockFactory<std::string, VornMutexObject> factory;
    EXPECT_FALSE(factory.exists("nowhere"));
    VornMutexObject untouched;
    VornMutexObject* lock = &untouched;
    EXPECT_FALSE(factory.getImpl("nowhere", lock));
    EXPECT_EQ(lock, &untouched);
    try {
        factory.get("nowhere");
        FAIL() << "no exception";
    } catch (const VornNoSuchElementException& error) {
        EXPECT_EQ(error.getText(), "VornNoSuchElementException - nowhere");
    }
}

TEST(VornLockFactoryTest, NamesComeBackSorted)
{
    ReadWriteLocks factory;
    EXPECT_TRUE(factory.getRegisteredLockNames().empty());
    for (const char* name : {"m", "b", "z", "a"}) {
        factory.createLock(name);
    }
    EXPECT_EQ(factory.getRegisteredLockNames(), (std::vector<std::string>{"a", "b", "m", "z"}));
}

TEST(VornLockFactoryTest, CopiesShareReadWriteLocksAndUsedSectionsOnly)
{
    ReadWriteLocks locks;
    locks.createLock("rw");
    ReadWriteLocks lockCopy(locks);
    locks.get("rw").writeLock();
    EXPECT_FALSE(lockCopy.get("rw").tryReadLock());
    locks.get("rw").writeUnLock();

    Sections sections;
    sections.createLock("used");
    sections.createLock("unused");
    sections.get("used").init();
    Sections assigned;
    assigned.createLock("gone");
    assigned = sections;
    EXPECT_EQ(assigned.getRegisteredLockNames(), (std::vector<std::string>{"unused", "used"}));
    sections.get("used").lock();
    sections.get("unused").lock();
    EXPECT_FALSE(testAndSetElsewhere(assigned.get("used")));
    EXPECT_TRUE(testAndSetElsewhere(assigned.get("unused")));
    sections.get("used").unlock();
    sections.get("unused").unlock();
}
