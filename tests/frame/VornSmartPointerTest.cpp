#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <set>

using VornSupport::VornObjectBase;
using VornSupport::VornSmartPointer;

namespace {

class Counted : public VornObjectBase {
public:
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
};

}  // namespace

TEST(VornSmartPointerTest, HoldsOneReferenceForItsLifetime)
{
    Counted object;
    {
        VornSmartPointer<Counted> first(&object);
        VornSmartPointer<Counted> second(first);
        EXPECT_EQ(object.refCount(), 2);
        EXPECT_TRUE(first == second);
        EXPECT_EQ(&*first, &object);
        EXPECT_EQ(static_cast<Counted*>(first), &object);
        object.addRef();
    }
    EXPECT_EQ(object.refCount(), 1);
}

TEST(VornSmartPointerTest, AssigningTheHeldPointerMakesNoCalls)
{
    Counted object;
    object.addRef();
    VornSmartPointer<Counted> pointer(&object);
    VornSmartPointer<Counted> other(&object);
    const int addRefs = object.m_addRefs;
    pointer = &object;
    pointer = other;
    pointer = pointer;
    EXPECT_EQ(object.m_addRefs, addRefs);
    EXPECT_EQ(object.m_releases, 0);
}

TEST(VornSmartPointerTest, AssignmentReleasesTheOldAndCountsTheNew)
{
    Counted first;
    Counted second;
    first.addRef();
    second.addRef();
    VornSmartPointer<Counted> pointer(&first);
    pointer = &second;
    EXPECT_EQ(first.refCount(), 1);
    EXPECT_EQ(second.refCount(), 2);
    pointer = nullptr;
    EXPECT_EQ(second.refCount(), 1);
    EXPECT_EQ(second.m_releases, 1);
}

TEST(VornSmartPointerTest, GetOwnershipHandsOverWithoutRelease)
{
    VornSmartPointer<Counted> empty;
    EXPECT_EQ(empty.getOwnership(), nullptr);

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
    std::set<VornSmartPointer<Counted>> set{a, b};
    EXPECT_EQ(set.size(), 1u);
}

TEST(VornSmartPointerTest, LastReleaseDeletesTheObject)
{
    static bool destroyed;
    destroyed = false;
    struct Owned : VornObjectBase {
        ~Owned() override { destroyed = true; }
    };
    {
        VornSmartPointer<VornObjectBase> pointer(new Owned);
        VornSmartPointer<VornObjectBase> copy = pointer;
    }
    EXPECT_TRUE(destroyed);
}
