// Uses the installed headers and library the way a client does: the
// library's version against the headers', a section locked and unlocked, a
// counted object held by a smart pointer, and a case-insensitive string
// (whose traits need C++17).
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>
#include <vsupt/VsuptVersion.h>
#include <vsupt/char_traits_ci.h>

#include <cstdio>
#include <cstring>

int main()
{
    if (std::strcmp(VornSupport::VsuptVersion(), VSUPT_VERSION) != 0) {
        std::fprintf(stderr, "library %s, headers %s\n", VornSupport::VsuptVersion(), VSUPT_VERSION);
        return 1;
    }
    if (ci_string("Vorn") != ci_string("VORN")) {
        std::fprintf(stderr, "case-insensitive strings differ\n");
        return 1;
    }
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
