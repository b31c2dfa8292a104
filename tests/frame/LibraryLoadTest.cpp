// Loads the library by hand to watch its start and stop sequences.
#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

bool isLoaded()
{
    void* library = dlopen(VSUPT_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

// The global critical section of a freshly loaded library, which its start
// sequence makes.
void** globalSection(void*& library)
{
    library = dlopen(VSUPT_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library ? static_cast<void**>(dlsym(library, "_ZN11VornSupport18g_pCriticalSectionE")) : nullptr;
}

}  // namespace

TEST(LibraryLoadTest, StartsAtLoadAndIsGoneAfterUnload)
{
    ASSERT_FALSE(isLoaded());
    void* library = nullptr;
    void** section = globalSection(library);
    ASSERT_NE(section, nullptr);
    EXPECT_NE(*section, nullptr);

    // Taking back the load's own start request runs the stop sequence, and a
    // new request runs the start sequence again.
    reinterpret_cast<void (*)()>(dlsym(library, "_ZN10ModuleData4exitEv"))();
    EXPECT_EQ(*section, nullptr);
    reinterpret_cast<void (*)()>(dlsym(library, "_ZN10ModuleData5entryEv"))();
    EXPECT_NE(*section, nullptr);

    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(isLoaded());
}

TEST(LibraryLoadTest, LoadsAgainAfterUnload)
{
    for (int round = 0; round < 3; ++round) {
        void* library = nullptr;
        void** section = globalSection(library);
        ASSERT_NE(section, nullptr);
        EXPECT_NE(*section, nullptr);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_FALSE(isLoaded());
    }
}
