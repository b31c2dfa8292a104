// A module for LibraryLoadTest: it links the library, so loading it loads
// the library too, into a program that started without it.
#include <vsupt/VornCriticalSectionObject.h>

namespace {
VornSupport::VornCriticalSectionObject g_section;
}

extern "C" __attribute__((visibility("default"))) void lockSection()
{
    g_section.lock();
}

extern "C" __attribute__((visibility("default"))) void unlockSection()
{
    g_section.unlock();
}

extern "C" __attribute__((visibility("default"))) int sectionDepth()
{
    return g_section.lockCount();
}

// Whether the calling thread may take the section; it gives back what it
// took.
extern "C" __attribute__((visibility("default"))) bool sectionIsFreeHere()
{
    const bool taken = g_section.testAndSet();
    if (taken) {
        g_section.unlock();
    }
    return taken;
}
