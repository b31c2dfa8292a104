#include <vsupt/Module.h>
#include <vsupt/ModuleData.h>
#include <vsupt/ModuleDataControl.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_calls;

class RecordingModule : public ModuleData {
public:
    explicit RecordingModule(std::string name) : ModuleData(false), m_name(std::move(name)) {}
    void attach() override { g_calls.push_back("attach " + m_name); }
    void detach() override { g_calls.push_back("detach " + m_name); }

private:
    std::string m_name;
};

class ModuleDataTest : public ::testing::Test {
protected:
    void SetUp() override { g_calls.clear(); }
};

}  // namespace

TEST_F(ModuleDataTest, TheLibraryIsUpOnceLoaded)
{
    EXPECT_EQ(ModuleData::m_pHead, &g_ModuleData);
    EXPECT_EQ(g_ModuleData.m_nRefCount, 1);
    EXPECT_NE(VornSupport::g_pCriticalSection, nullptr);
}

TEST_F(ModuleDataTest, AStartRequestWhileUpAttachesNothing)
{
    {
        ModuleDataControl control;
        EXPECT_EQ(g_ModuleData.m_nRefCount, 2);
    }
    EXPECT_EQ(g_ModuleData.m_nRefCount, 1);
    EXPECT_NE(VornSupport::g_pCriticalSection, nullptr);
}

TEST_F(ModuleDataTest, AttachesOldestFirstAndDetachesNewestFirst)
{
    RecordingModule older("older");
    RecordingModule newer("newer");
    {
        ModuleDataControl control;
        EXPECT_EQ(older.m_nRefCount, 1);
        EXPECT_EQ(newer.m_nRefCount, 1);
    }
    const std::vector<std::string> expected{"attach older", "attach newer", "detach newer", "detach older"};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(ModuleDataTest, OnlyTheFirstRequestAttachesAndOnlyTheLastDetaches)
{
    RecordingModule module("m");
    ModuleData::entry();
    ModuleData::entry();
    ModuleData::exit();
    EXPECT_EQ(g_calls, std::vector<std::string>{"attach m"});
    ModuleData::exit();
    EXPECT_EQ(g_calls, (std::vector<std::string>{"attach m", "detach m"}));
    EXPECT_EQ(module.m_nRefCount, 0);
    EXPECT_EQ(g_ModuleData.m_nRefCount, 1);
}

TEST_F(ModuleDataTest, DestroyingTheHeadUnlinksIt)
{
    {
        RecordingModule module("m");
        EXPECT_EQ(ModuleData::m_pHead, &module);
        EXPECT_EQ(module.m_pNext, &g_ModuleData);
        EXPECT_EQ(g_ModuleData.m_pPrev, &module);
    }
    EXPECT_EQ(ModuleData::m_pHead, &g_ModuleData);
    EXPECT_EQ(g_ModuleData.m_pPrev, nullptr);
}

TEST_F(ModuleDataTest, TheGlobalSectionStartsOnceAndStopsHarmlessly)
{
    using namespace VornSupport;
    VornCriticalSectionObject* first = g_pCriticalSection;
    VSUPTInitVornObjectBase();
    EXPECT_EQ(g_pCriticalSection, first);

    VSUPTFinitVornObjectBase();
    EXPECT_EQ(g_pCriticalSection, nullptr);
    VSUPTFinitVornObjectBase();
    EXPECT_EQ(g_pCriticalSection, nullptr);
    VSUPTInitVornObjectBase();
    EXPECT_NE(g_pCriticalSection, nullptr);
}
