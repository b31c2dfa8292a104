#include <vsupt/Module.h>
#include <vsupt/ModuleData.h>
#include <vsupt/ModuleDataControl.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Calls = std::vector<std::string>;

namespace {

Calls g_calls;

class RecordingModule : public ModuleData {
public:
    explicit RecordingModule(std::string name) : ModuleData(false), m_name(std::move(name)) {}
    void attach() override { g_calls.push_back("attach " + m_name); }
    void detach() override { g_calls.push_back("detach " + m_name); }

private:
    std::string m_name;
};

}  // namespace

TEST(ModuleDataTest, TheLibraryIsUpOnceLoadedAndItsGlobalSectionStartsOnceAndStopsHarmlessly)
{
    using namespace VornSupport;
    EXPECT_EQ(ModuleData::m_pHead, &g_ModuleData);
    {
        ModuleDataControl control;
        EXPECT_EQ(g_ModuleData.m_nRefCount, 2);
    }
    EXPECT_EQ(g_ModuleData.m_nRefCount, 1);
    VornCriticalSectionObject* first = g_pCriticalSection;
    ASSERT_NE(first, nullptr);
    VSUPTInitVornObjectBase();
    EXPECT_EQ(g_pCriticalSection, first);
    VSUPTFinitVornObjectBase();
    VSUPTFinitVornObjectBase();
    EXPECT_EQ(g_pCriticalSection, nullptr);
    VSUPTInitVornObjectBase();
    EXPECT_NE(g_pCriticalSection, nullptr);
}

TEST(ModuleDataTest, TheFirstRequestAttachesOldestFirstTheLastDetachesNewestFirstAndTheHeadUnlinks)
{
    g_calls.clear();
    {
        RecordingModule older("older");
        RecordingModule newer("newer");
        EXPECT_EQ(ModuleData::m_pHead, &newer);
        EXPECT_EQ(older.m_pPrev, &newer);
        EXPECT_EQ(older.m_pNext, &g_ModuleData);
        {
            ModuleDataControl control;
            ModuleData::entry();
            ModuleData::exit();
            EXPECT_EQ(g_calls, (Calls{"attach older", "attach newer"}));
            EXPECT_EQ(newer.m_nRefCount, 1);
        }
        EXPECT_EQ(g_calls, (Calls{"attach older", "attach newer", "detach newer", "detach older"}));
        EXPECT_EQ(older.m_nRefCount, 0);
        EXPECT_EQ(g_ModuleData.m_nRefCount, 1);
    }
    EXPECT_EQ(ModuleData::m_pHead, &g_ModuleData);
    EXPECT_EQ(g_ModuleData.m_pPrev, nullptr);
}
