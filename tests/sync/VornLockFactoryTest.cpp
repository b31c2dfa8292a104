#include "support/LogRecords.h"
#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornLockFactory.h>
#include <vsupt/VornNoSuchElementException.h>
#include <vsupt/VornReadWriteLock.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using log_records::recordsAt;
using namespace VornSupport;

TEST(VornReadWriteLockTest, CopiesAreOneLockForManyReadersOrOneWriterAndOutliveTheFirst)
{
    auto first = std::make_unique<VornReadWriteLock>();
    VornReadWriteLock copy(*first);
    first->readLock();
    EXPECT_FALSE(copy.tryWriteLock());
    EXPECT_TRUE(copy.tryReadLock());
    copy.readUnLock();
    first->readUnLock();
    first.reset();
    EXPECT_TRUE(copy.tryWriteLock());
    EXPECT_FALSE(copy.tryReadLock());
    copy.writeUnLock();
}

// Taking the lock again while holding it for writing is refused by the
// platform with EDEADLK, which is logged with the status 3.
TEST(VornReadWriteLockTest, AFailedLockWritesOneRecordFromLevelOne)
{
    VornReadWriteLock lock;
    lock.writeLock();
    EXPECT_TRUE(recordsAt(0, [&] { lock.writeLock(); }).empty());
    EXPECT_EQ(recordsAt(1,
                        [&] {
                            lock.readLock();
                            lock.writeLock();
                        }),
              (std::vector<std::string>{
                  "VornReadWriteLock::readLock: Acquiring Readlock exited with the following error 3",
                  "VornReadWriteLock::writeLock: Acquiring Writelock exited with the following error3"}));
    lock.writeUnLock();
}

TEST(VornLockFactoryTest, NamesKeepTheirFirstLockComeBackSortedAndAnUnknownOneIsReported)
{
    VornLockFactory<std::string, VornCriticalSectionObject> factory;
    for (const char* name : {"m", "b", "z"}) {
        factory.createLock(name);
    }
    VornCriticalSectionObject& section = factory.get("m");
    section.lock();
    factory.createLock("m");
    EXPECT_EQ(&factory.get("m"), &section);
    EXPECT_FALSE(testAndSetElsewhere(factory.get("m")));
    section.unlock();
    EXPECT_EQ(factory.getRegisteredLockNames(), (std::vector<std::string>{"b", "m", "z"}));

    VornLockFactory<std::string, VornMutexObject> mutexes;
    EXPECT_FALSE(mutexes.exists("a"));
    VornMutexObject untouched;
    VornMutexObject* lock = &untouched;
    EXPECT_FALSE(mutexes.getImpl("a", lock));
    EXPECT_EQ(lock, &untouched);
    try {
        mutexes.get("a");
        FAIL() << "no exception";
    } catch (const VornNoSuchElementException& error) {
        EXPECT_EQ(error.getText(), "VornNoSuchElementException - a");
    }
}
