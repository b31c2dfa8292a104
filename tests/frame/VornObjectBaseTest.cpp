#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <stdexcept>

using VornSupport::VornObjectBase;
using VornSupport::VornSmartPointer;

namespace {

class Tracked : public VornObjectBase {
public:
    explicit Tracked(bool* destroyed) : m_destroyed(destroyed) {}
    ~Tracked() override
    {
        *m_destroyed = true;
        m_globalLockDepthAtDestruction = VornSupport::g_pCriticalSection->lockCount();
    }

    bool* m_destroyed;
    static int m_globalLockDepthAtDestruction;
};

int Tracked::m_globalLockDepthAtDestruction = -1;

class Derived : public Tracked {
public:
    using Tracked::Tracked;
};

}  // namespace

TEST(VornObjectBaseTest, LastReleaseDestroysOutsideTheGlobalSection)
{
    bool destroyed = false;
    auto* object = new Tracked(&destroyed);
    EXPECT_EQ(object->refCount(), 0);
    EXPECT_EQ(object->addRef(), 1);
    EXPECT_EQ(object->addRef(), 2);
    EXPECT_EQ(object->release(), 1);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(object->release(), 0);
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(Tracked::m_globalLockDepthAtDestruction, 0);
}

TEST(VornObjectBaseTest, ReleaseOfAnUncountedObjectDestroysNothing)
{
    bool destroyed = false;
    Tracked object(&destroyed);
    EXPECT_EQ(object.release(), -1);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(object.refCount(), -1);
}

TEST(VornObjectBaseTest, CopiesAndAssignmentsStartUncounted)
{
    bool destroyed = false;
    Tracked source(&destroyed);
    for (int i = 0; i < 5; ++i) {
        source.addRef();
    }
    Tracked copy(source);
    EXPECT_EQ(copy.refCount(), 0);

    Tracked target(&destroyed);
    target.addRef();
    target = source;
    EXPECT_EQ(target.refCount(), 0);
    EXPECT_EQ(source.refCount(), 5);

    Tracked& alias = source;
    source = alias;
    EXPECT_EQ(source.refCount(), 5);
}

TEST(VornObjectBaseTest, ClassNamesOfNamespacedClassesKeepTheirEncoding)
{
    VornObjectBase object;
    EXPECT_EQ(object.getClassName(), "VornSupport14VornObjectBaseE");
    EXPECT_TRUE(object.isA("VornSupport14VornObjectBaseE"));
    EXPECT_FALSE(object.isA("VornSupport::VornObjectBase"));
}

TEST(VornObjectBaseTest, IsAKnowsOnlyTheMostDerivedClass)
{
    bool destroyed = false;
    Derived object(&destroyed);
    const std::string name = object.getClassName();
    EXPECT_NE(name.find("Derived"), std::string::npos);
    EXPECT_TRUE(object.isA(name));
    EXPECT_FALSE(object.isA(Tracked(&destroyed).getClassName()));
    EXPECT_FALSE(object.isA(VornObjectBase().getClassName()));
}

TEST(VornObjectBaseTest, NormalizeClassNameGivesTheWorkedResults)
{
    EXPECT_EQ(VornObjectBase::normalizeClassName("6Module"), "Module");
    EXPECT_EQ(VornObjectBase::normalizeClassName("8LockBase"), "LockBase");
    EXPECT_EQ(VornObjectBase::normalizeClassName("Q211VornSupport14VornObjectBase"), "VornSupport::VornObjectBase");
    EXPECT_EQ(VornObjectBase::normalizeClassName("Q_2_11VornSupport14VornObjectBase"), "VornSupport::VornObjectBase");
    EXPECT_EQ(VornObjectBase::normalizeClassName("N11VornSupport14VornObjectBaseE"), "VornSupport14VornObjectBaseE");
    EXPECT_EQ(VornObjectBase::normalizeClassName("xName"), "Name");
    EXPECT_EQ(VornObjectBase::normalizeClassName("Q3A1B1C"), "A1B1C");
    EXPECT_EQ(VornObjectBase::normalizeClassName("Q31A1B1C"), "A::B::C");
}

TEST(VornObjectBaseTest, NormalizeClassNameThrowsPastTheEnd)
{
    for (const char* name : {"", "Q25Abc"}) {
        try {
            VornObjectBase::normalizeClassName(name);
            ADD_FAILURE() << "no exception for \"" << name << "\"";
        } catch (const std::out_of_range& error) {
            EXPECT_EQ(std::string(error.what()).rfind("basic_string::substr", 0), 0u) << error.what();
        }
    }
}
