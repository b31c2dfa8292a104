#include <vsupt/VornLibrary.h>
#include <vsupt/VornException.h>
#include <vsupt/VornSmartPointer.h>

#include "frame/ExceptionBorder.h"

#include <dlfcn.h>
#include <link.h>

namespace VornSupport {

namespace {

std::string loaderError()
{
    const char* text = dlerror();
    return text != nullptr ? std::string(text) : std::string();
}

// The same library once more, found by its handle: the loader hands back the
// same handle with one more load counted on it.
void* loadAgain(void* handle)
{
    link_map* map = nullptr;
    if (handle == nullptr || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr) {
        return nullptr;
    }
    return dlopen(map->l_name, RTLD_NOW | RTLD_NOLOAD);
}

}  // namespace

VornLibrary::VornLibrary(const std::string& name, bool exactName) : m_name(name), m_handle(nullptr)
{
    letOutOnly<VornException>([&] {
        const std::string file = exactName ? name : "lib" + name + ".so";
        m_handle = dlopen(file.c_str(), RTLD_NOW);
        if (m_handle == nullptr) {
            throw VornException("VornLibrary::VornLibrary: failed to load: " + name + ".  " + loaderError(), 0);
        }
    });
}

VornLibrary::VornLibrary(const VornLibrary& other)
    : VornObjectBase(), m_name(other.m_name), m_handle(loadAgain(other.m_handle))
{
}

VornLibrary& VornLibrary::operator=(const VornLibrary& other)
{
    if (this != &other) {
        m_name = other.m_name;
        m_handle = loadAgain(other.m_handle);
    }
    return *this;
}

VornLibrary::~VornLibrary()
{
    if (m_handle != nullptr) {
        dlclose(m_handle);
    }
}

// dlerror belongs directly behind dlsym: a symbol's value may be null
// without an error, and the error is the calling thread's last one.
void* VornLibrary::getProcAddr(const std::string& symbol)
{
    if (m_handle == nullptr) {
        return nullptr;
    }
    dlerror();
    void* address = dlsym(m_handle, symbol.c_str());
    if (dlerror() != nullptr) {
        return nullptr;
    }
    return address;
}

template class VornSmartPointer<VornLibrary>;

}  // namespace VornSupport
