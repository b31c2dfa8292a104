// Locks and events: a recursive critical section taken twice by one thread
// through scoped guards, locks found by name, a read-write lock shared by
// readers, and an event whose dependents hear of each set().
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornLockFactory.h>
#include <vsupt/VornReadWriteLock.h>

#include <cstdio>
#include <string>

using namespace VornSupport;

namespace {

class SetCounter : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override { ++m_count; }
    int m_count = 0;
};

}  // namespace

int main()
{
    VornCriticalSectionObject section;
    {
        VornCriticalSection outer(section, true);
        VornCriticalSection inner(section, true);  // the same thread again: one more level
        std::printf("held twice: lock count %d\n", section.lockCount());
    }
    std::printf("guards gone: lock count %d\n", section.lockCount());

    VornLockFactory<std::string, VornCriticalSectionObject> locks;
    locks.createLock("accounts");
    VornCriticalSectionObject& accounts = locks.get("accounts");
    std::printf("lock \"accounts\" found again by name: %s\n", &locks.get("accounts") == &accounts ? "yes" : "no");

    VornReadWriteLock table;
    table.readLock();
    const bool secondReader = table.tryReadLock();
    const bool writerWhileRead = table.tryWriteLock();
    std::printf("readers share the lock: %s; a writer waits: %s\n", secondReader ? "yes" : "no",
                writerWhileRead ? "no" : "yes");
    table.readUnLock();
    if (secondReader) {
        table.readUnLock();
    }

    VornEvent ready;
    SetCounter counter;
    ready.addDependent(counter);
    ready.set();
    ready.set();
    ready.removeDependent(counter);
    std::printf("event set twice: dependent notified %d times\n", counter.m_count);
    return section.lockCount() == 0 && counter.m_count == 2 && secondReader && !writerWhileRead ? 0 : 1;
}
