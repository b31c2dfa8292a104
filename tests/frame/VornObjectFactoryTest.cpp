#include <vsupt/VornObjectBase.h>
#include <vsupt/VornObjectFactory.h>
#include <vsupt/VornObjectFactoryRegistration.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace VornSupport;

namespace {

class Made : public VornObjectBase {
public:
    explicit Made(std::string origin) : origin(std::move(origin)) {}
    std::string origin;
};

VornObjectBase* makeFirst() { return new Made("first creator"); }
VornObjectBase* makeSecond() { return new Made("second creator"); }
VornObjectBase* makeNothing() { return nullptr; }

class Registration : public VornObjectFactoryRegistration {
public:
    Registration(VornObjectFactory& factory, const std::string& name)
    {
        m_name = name;
        m_pFactory = &factory;
        factory.add(name, *this);
    }
    VornSmartPointer<VornObjectBase> construct() override { return new Made("registration"); }
};

std::string originOf(VornObjectFactory& factory, const std::string& name)
{
    VornSmartPointer<VornObjectBase> object = factory.construct(name);
    return object ? static_cast<Made*>(static_cast<VornObjectBase*>(object))->origin : "null";
}

VornObjectFactory* g_pFactoryUnderTest = nullptr;

// Another thread changes the factory while this creator runs.
VornObjectBase* makeWhileAnotherThreadAdds()
{
    std::thread other([] { g_pFactoryUnderTest->add("added meanwhile", &makeFirst); });
    other.join();
    return new Made("creator");
}

}  // namespace

TEST(VornObjectFactoryTest, TheLastCreatorWinsARegistrationGoesFirstAndEachRemoveOrDeathTakesOneEntry)
{
    VornObjectFactory factory;
    factory.add("thing", &makeSecond);
    factory.add("thing", &makeFirst);
    EXPECT_EQ(originOf(factory, "thing"), "first creator");
    EXPECT_EQ(factory.construct("thing")->refCount(), 1);
    {
        Registration registration(factory, "thing");
        EXPECT_EQ(originOf(factory, "thing"), "registration");
    }
    EXPECT_EQ(originOf(factory, "thing"), "first creator");
    {
        Registration registration(factory, "thing");
        factory.remove("thing");
        EXPECT_EQ(originOf(factory, "thing"), "first creator");
    }
    // With its own entry gone, a dying registration takes the creator's.
    EXPECT_EQ(originOf(factory, "thing"), "null");
    factory.add("empty", &makeNothing);
    EXPECT_EQ(originOf(factory, "empty"), "null");
}

TEST(VornObjectFactoryTest, RegisteredClassesListCreatorsThenRegistrationsEachSorted)
{
    VornObjectFactory factory;
    factory.add("b", &makeFirst);
    factory.add("a", &makeFirst);
    Registration registration(factory, "0");
    Registration twice(factory, "a");
    EXPECT_EQ(factory.getRegisteredClasses(), (std::vector<std::string>{"a", "b", "0", "a"}));
}

TEST(VornObjectFactoryTest, CopiesConstructByCreatorsOnly)
{
    VornObjectFactory factory;
    factory.add("creator", &makeFirst);
    Registration registration(factory, "registration");
    VornObjectFactory copy(factory);
    EXPECT_EQ(originOf(copy, "creator"), "first creator");
    EXPECT_EQ(originOf(copy, "registration"), "null");

    VornObjectFactory assigned;
    Registration own(assigned, "own");
    assigned.add("replaced", &makeSecond);
    assigned = factory;
    EXPECT_EQ(originOf(assigned, "own"), "registration");
    EXPECT_EQ(originOf(assigned, "replaced"), "null");
    EXPECT_EQ(originOf(assigned, "creator"), "first creator");
}

TEST(VornObjectFactoryTest, CreatorRunsWithoutTheFactoryLock)
{
    VornObjectFactory factory;
    g_pFactoryUnderTest = &factory;
    factory.add("thing", &makeWhileAnotherThreadAdds);
    EXPECT_EQ(originOf(factory, "thing"), "creator");
    EXPECT_EQ(originOf(factory, "added meanwhile"), "first creator");
}

TEST(VornObjectFactoryTest, GlobalInstanceIsMadeOnceAndStaysStaleAfterDeletion)
{
    VornObjectFactory* global = VornObjectFactory::getGlobalInstance();
    EXPECT_EQ(VornObjectFactory::getGlobalInstance(), global);
    // Deleting the process-wide factory is the library's last act; a child
    // process leaves without running it again.
    EXPECT_EXIT(
        {
            VornObjectFactory::deleteGlobalInstance();
            _exit(VornObjectFactory::getGlobalInstance() == global ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
