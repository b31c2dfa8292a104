// Uses the installed headers and library the way a client does: a section
// locked and unlocked, and a counted object held by a smart pointer.
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <cstdio>

int main()
{
    VornSupport::VornCriticalSectionObject section;
    section.lock();
    if (section.lockCount() != 1) {
        std::fprintf(stderr, "lock count %d while held\n", section.lockCount());
        return 1;
    }
    section.unlock();
    if (section.lockCount() != 0) {
        std::fprintf(stderr, "lock count %d after unlock\n", section.lockCount());
        return 1;
    }

    VornSupport::VornSmartPointer<VornSupport::VornObjectBase> object(new VornSupport::VornObjectBase);
    if (object->refCount() != 1) {
        std::fprintf(stderr, "reference count %ld, expected 1\n", object->refCount());
        return 1;
    }
    return 0;
}
