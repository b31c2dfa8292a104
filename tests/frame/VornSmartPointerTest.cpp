#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <set>

using VornSupport::VornObjectBase;
using VornSupport::VornSmartPointer;

namespace {

struct Counted : VornObjectBase {
    ~Counted() override { ++m_destroyed; }
    static int m_destroyed;
};

int Counted::m_destroyed = 0;

}  // namespace

TEST(VornSmartPointerTest, HoldsOneReferenceForItsLifetimeAndTheLastReleaseDeletes)
{
    const int before = Counted::m_destroyed;
    auto* object = new Counted;
    Counted other;
    other.addRef();
    {
        VornSmartPointer<Counted> first(object);
        VornSmartPointer<Counted> second(first);
        EXPECT_EQ(object->refCount(), 2);
        EXPECT_TRUE(first == second);
        EXPECT_EQ(&*first, object);
        second = &other;
        EXPECT_EQ(object->refCount(), 1);
        EXPECT_EQ(other.refCount(), 2);
        second = nullptr;
        EXPECT_EQ(other.refCount(), 1);
        // Assigning the held object again must not release it first.
        first = object;
        first = first;
        EXPECT_EQ(object->refCount(), 1);
        EXPECT_EQ(Counted::m_destroyed, before);
    }
    EXPECT_EQ(Counted::m_destroyed, before + 1);
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
