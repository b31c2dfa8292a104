// Loads the library by hand to watch its start and stop sequences.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <future>
#include <thread>

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

// The module's section, as LockingModule.cpp gives it.
struct Section {
    void (*lock)();
    void (*unlock)();
    int (*depth)();
    bool (*isFreeHere)();
};

template <class Function>
Function find(void* module, const char* name)
{
    return module ? reinterpret_cast<Function>(dlsym(module, name)) : nullptr;
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

// The threads' lists of held locks are in the library's static thread-local
// storage, for which a library loaded after start-up must find room in the
// spare space the loader keeps, and which the loader must also give the
// threads already running. One of those takes a lock twice.
TEST(LibraryLoadTest, LocksForThreadsThatRanBeforeItWasLoaded)
{
    ASSERT_FALSE(isLoaded());
    std::promise<Section> loaded;
    std::promise<void> held;
    std::promise<void> released;
    std::thread earlier([&] {
        const Section section = loaded.get_future().get();
        if (section.lock == nullptr) {
            return;
        }
        section.lock();
        section.lock();
        held.set_value();
        released.get_future().wait();
        section.unlock();
        section.unlock();
    });
    void* module = dlopen(VSUPT_LOCKING_MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
    const char* error = module ? "" : dlerror();
    const Section section{find<void (*)()>(module, "lockSection"), find<void (*)()>(module, "unlockSection"),
                          find<int (*)()>(module, "sectionDepth"), find<bool (*)()>(module, "sectionIsFreeHere")};
    loaded.set_value(section);
    if (section.lock == nullptr) {
        earlier.join();
        FAIL() << error;
    }
    held.get_future().wait();
    EXPECT_EQ(section.depth(), 2);
    EXPECT_FALSE(section.isFreeHere());
    released.set_value();
    earlier.join();
    EXPECT_EQ(section.depth(), 0);
    EXPECT_TRUE(section.isFreeHere());
    EXPECT_EQ(dlclose(module), 0);
    EXPECT_FALSE(isLoaded());
}
