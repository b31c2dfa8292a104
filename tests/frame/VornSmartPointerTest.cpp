#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <set>

using VornSupport::VornObjectBase;
using VornSupport::VornSmartPointer;

namespace {

class Counted : public VornObjectBase {
public:
    ~Counted() override { ++m_destroyed; }
    long addRef() override
    {
        ++m_addRefs;
        return VornObjectBase::addRef();
    }
    long release() override
    {
        ++m_releases;
        return VornObjectBase::release();
    }

    int m_addRefs = 0;
    int m_releases = 0;
    static int m_destroyed;
};

int Counted::m_destroyed = 0;

}  // namespace

TEST(VornSmartPointerTest, HoldsOneReferenceForItsLifetimeAndTheLastReleaseDeletes)
{
    const int before = Counted::m_destroyed;
    auto* object = new Counted;
    {
        VornSmartPointer<Counted> first(object);
        VornSmartPointer<Counted> second(first);
        EXPECT_EQ(object->refCount(), 2);
        EXPECT_TRUE(first == second);
        EXPECT_EQ(&*first, object);
    }
    EXPECT_EQ(Counted::m_destroyed, before + 1);
}

TEST(VornSmartPointerTest, AssignmentReleasesTheOldAndCountsTheNewUnlessTheyAreTheSame)
{
    Counted first;
    Counted second;
    first.addRef();
    second.addRef();
    VornSmartPointer<Counted> pointer(&first);
    VornSmartPointer<Counted> other(&first);
    pointer = &first;
    pointer = other;
    pointer = pointer;
    EXPECT_EQ(first.m_addRefs, 3);
    EXPECT_EQ(first.m_releases, 0);
    pointer = &second;
    EXPECT_EQ(first.refCount(), 2);
    EXPECT_EQ(second.refCount(), 2);
    pointer = nullptr;
    EXPECT_EQ(second.refCount(), 1);
    EXPECT_EQ(second.m_releases, 1);
}

TEST(VornSmartPointerTest, GetOwnershipHandsOverWithoutRelease)
{
    EXPECT_EQ(VornSmartPointer<Counted>().getOwnership(), nullptr);
    auto* object = new Counted;
    {
        VornSmartPointer<Counted> pointer(object);
        EXPECT_EQ(pointer.getOwnership(), object);
        EXPECT_EQ(static_cast<Counted*>(pointer), nullptr);
    }
    EXPECT_EQ(object->m_releases, 0);
    EXPECT_EQ(object->refCount(), 1);
    object->release();
}

TEST(VornSmartPointerTest, CarriesNoOrder)
{
    VornSmartPointer<Counted> a(new Counted);
    VornSmartPointer<Counted> b(new Counted);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(b < a);
    EXPECT_EQ((std::set<VornSmartPointer<Counted>>{a, b}).size(), 1u);
}
