#include <vsupt/Module.h>
#include <vsupt/ModuleDataControl.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornObjectFactory.h>

#include <new>

// ---------------------------------------------------------------------------
// ModuleData

ModuleData* ModuleData::m_pHead = nullptr;

ModuleData::ModuleData(bool automatic)
    : m_bAutomatic(automatic), m_pPrev(nullptr), m_pNext(m_pHead), m_nRefCount(0)
{
    if (m_pHead != nullptr) {
        m_pHead->m_pPrev = this;
    }
    m_pHead = this;
}

// Only the head is truly unlinked; a node destroyed out of order stays
// reachable from its predecessor. The library destroys its start-up objects
// in reverse order and relies on it.
ModuleData::~ModuleData()
{
    if (m_pHead == this) {
        m_pHead = m_pNext;
        if (m_pHead != nullptr) {
            m_pHead->m_pPrev = nullptr;
        }
        return;
    }
    ModuleData* node = m_pHead;
    while (node != nullptr && node->m_pNext != this) {
        node = node->m_pNext;
    }
    if (node == nullptr) {
        return;
    }
    node->m_pNext = this;
    m_pHead->m_pPrev = m_pPrev;
}

void ModuleData::entry()
{
    ModuleData* node = m_pHead;
    while (node->m_pNext != nullptr) {
        node = node->m_pNext;
    }
    for (; node != nullptr; node = node->m_pPrev) {
        if (node->m_nRefCount == 0) {
            node->attach();
        }
        ++node->m_nRefCount;
    }
}

void ModuleData::exit()
{
    for (ModuleData* node = m_pHead; node != nullptr; node = node->m_pNext) {
        if (node->m_nRefCount > 0 && --node->m_nRefCount == 0) {
            node->detach();
        }
    }
}

// ---------------------------------------------------------------------------
// ModuleDataControl

ModuleDataControl::ModuleDataControl()
{
    ModuleData::entry();
}

ModuleDataControl::~ModuleDataControl()
{
    ModuleData::exit();
}

// ---------------------------------------------------------------------------
// Registration of the stop sequence with the C++ run time.
//
// g_ModuleData lives in raw storage so that the compiler registers no
// destructor of its own: the stop sequence is registered exactly once, by the
// constructor, tied to this library's handle, and so runs at exit or at
// dlclose, whichever comes first.

extern "C" {
extern void* __dso_handle;
int __cxa_atexit(void (*function)(void*), void* argument, void* dsoHandle);
}

namespace {
void destroyModule(void* module)
{
    static_cast<Module*>(module)->~Module();
}

alignas(Module) unsigned char g_moduleStorage[sizeof(Module)];
}  // namespace

// ---------------------------------------------------------------------------
// Module

Module::Module() : ModuleData(true)
{
    if (m_bAutomatic) {
        if (m_nRefCount == 0) {
            attach();
        }
        ++m_nRefCount;
    }
    __cxa_atexit(&destroyModule, this, &__dso_handle);
}

Module::~Module()
{
    if (m_bAutomatic && m_nRefCount > 0 && --m_nRefCount == 0) {
        detach();
    }
}

void Module::attach()
{
    using namespace VornSupport;
    VSUPTInitVornObjectBase();
    VSUPTInitVornThread();
    VSUPTInitVornLogging();
    VSUPTInitVornTimer();
    VSUPTInitVornLoggingTimer();
}

void Module::detach()
{
    using namespace VornSupport;
    VornObjectFactory::deleteGlobalInstance();
    VSUPTFinitVornLoggingTimer();
    VSUPTFinitVornTimer();
    VSUPTFinitVornLogging();
    VSUPTFinitVornThread();
    VSUPTFinitVornObjectBase();
}

Module& g_ModuleData = *::new (g_moduleStorage) Module();

// ---------------------------------------------------------------------------
// Start and stop functions of the modules

namespace VornSupport {

VornCriticalSectionObject* g_pCriticalSection = nullptr;

void VSUPTInitVornObjectBase()
{
    if (g_pCriticalSection == nullptr) {
        g_pCriticalSection = new VornCriticalSectionObject();
    }
}

void VSUPTFinitVornObjectBase()
{
    delete g_pCriticalSection;
    g_pCriticalSection = nullptr;
}

// The logger's modules have nothing to start or stop: a program makes and
// installs its own logger. The thread and timer modules live with their
// classes.
void VSUPTInitVornLogging() {}
void VSUPTInitVornLoggingTimer() {}

void VSUPTFinitVornLoggingTimer() {}
void VSUPTFinitVornLogging() {}

}  // namespace VornSupport
