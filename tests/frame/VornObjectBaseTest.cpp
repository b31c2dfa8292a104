#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>

#include <gtest/gtest.h>

#include <stdexcept>

using VornSupport::VornObjectBase;

namespace {

// Notes the depth of the global section at its destruction.
class Tracked : public VornObjectBase {
public:
    ~Tracked() override { m_depthAtDestruction = VornSupport::g_pCriticalSection->lockCount(); }
    static int m_depthAtDestruction;  // -1 until one is destroyed
};

int Tracked::m_depthAtDestruction = -1;

class Derived : public Tracked {};

}  // namespace

TEST(VornObjectBaseTest, LastReleaseDestroysOutsideTheGlobalSectionAndAnUncountedOneNothing)
{
    Tracked::m_depthAtDestruction = -1;
    auto* object = new Tracked;
    EXPECT_EQ(object->addRef(), 1);
    EXPECT_EQ(object->addRef(), 2);
    EXPECT_EQ(object->release(), 1);
    EXPECT_EQ(Tracked::m_depthAtDestruction, -1);
    EXPECT_EQ(object->release(), 0);
    EXPECT_EQ(Tracked::m_depthAtDestruction, 0);

    Tracked::m_depthAtDestruction = -1;
    Tracked uncounted;
    EXPECT_EQ(uncounted.release(), -1);
    EXPECT_EQ(uncounted.refCount(), -1);
    EXPECT_EQ(Tracked::m_depthAtDestruction, -1);
}

TEST(VornObjectBaseTest, CopiesAndAssignmentsStartUncounted)
{
    Tracked source;
    source.addRef();
    Tracked copy(source);
    Tracked target;
    target.addRef();
    target = source;
    Tracked& alias = source;
    source = alias;
    EXPECT_EQ(copy.refCount(), 0);
    EXPECT_EQ(target.refCount(), 0);
    EXPECT_EQ(source.refCount(), 1);
}

TEST(VornObjectBaseTest, IsAKnowsOnlyTheMostDerivedClassByItsEncodedName)
{
    EXPECT_EQ(VornObjectBase().getClassName(), "VornSupport14VornObjectBaseE");
    EXPECT_TRUE(VornObjectBase().isA("VornSupport14VornObjectBaseE"));
    EXPECT_FALSE(VornObjectBase().isA("VornSupport::VornObjectBase"));
    const Derived object;
    EXPECT_NE(object.getClassName().find("Derived"), std::string::npos);
    EXPECT_TRUE(object.isA(object.getClassName()));
    EXPECT_FALSE(object.isA(Tracked().getClassName()));
}

TEST(VornObjectBaseTest, NormalizeClassNameDropsLengthsAndThrowsPastTheEnd)
{
    const struct {
        const char* encoded;
        const char* normalized;
    } rows[] = {
        {"8LockBase", "LockBase"},
        {"Q211VornSupport14VornObjectBase", "VornSupport::VornObjectBase"},
        {"Q_2_11VornSupport14VornObjectBase", "VornSupport::VornObjectBase"},
        {"N11VornSupport14VornObjectBaseE", "VornSupport14VornObjectBaseE"},
        {"xName", "Name"},
        {"Q3A1B1C", "A1B1C"},
        {"Q31A1B1C", "A::B::C"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(VornObjectBase::normalizeClassName(row.encoded), row.normalized) << row.encoded;
    }
    for (const char* name : {"", "Q25Abc"}) {
        try {
            VornObjectBase::normalizeClassName(name);
            ADD_FAILURE() << "no exception for \"" << name << "\"";
        } catch (const std::out_of_range& error) {
            EXPECT_EQ(std::string(error.what()).rfind("basic_string::substr", 0), 0u) << error.what();
        }
    }
}
