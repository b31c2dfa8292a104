// Loads the library by hand to watch its start and stop sequences.
#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

template <class T>
T symbol(void* library, const char* name)
{
    void* address = dlsym(library, name);
    EXPECT_NE(address, nullptr) << name << ": " << dlerror();
    return reinterpret_cast<T>(address);
}

bool isLoaded()
{
    void* library = dlopen(VSUPT_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

}  // namespace

TEST(LibraryLoadTest, StartsAtLoadAndIsGoneAfterUnload)
{
    ASSERT_FALSE(isLoaded());
    void* library = dlopen(VSUPT_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();

    auto** globalSection = symbol<void**>(library, "_ZN11VornSupport18g_pCriticalSectionE");
    auto stopRequest = symbol<void (*)()>(library, "_ZN10ModuleData4exitEv");
    auto startRequest = symbol<void (*)()>(library, "_ZN10ModuleData5entryEv");
    ASSERT_NE(globalSection, nullptr);
    EXPECT_NE(*globalSection, nullptr);

    // Taking back the load's own start request runs the stop sequence, and a
    // new request runs the start sequence again.
    stopRequest();
    EXPECT_EQ(*globalSection, nullptr);
    startRequest();
    EXPECT_NE(*globalSection, nullptr);

    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(isLoaded());
}

TEST(LibraryLoadTest, LoadsAgainAfterUnload)
{
    for (int round = 0; round < 3; ++round) {
        void* library = dlopen(VSUPT_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        auto** globalSection = symbol<void**>(library, "_ZN11VornSupport18g_pCriticalSectionE");
        EXPECT_NE(*globalSection, nullptr);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_FALSE(isLoaded());
    }
}
