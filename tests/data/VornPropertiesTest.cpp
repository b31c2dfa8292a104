#include <vsupt/PropertyChanged.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VornSupport;

namespace {

using Values = std::vector<std::string>;

class CountingDependent : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override { ++calls; }
    int calls = 0;
};

class NameRecorder : public VornPropertyIterator<ci_string> {
public:
    void process(const VornPropertyIteratorParameter<ci_string>& parameter) override
    {
        visits += std::string(parameter.m_name.c_str()) + ":" + std::to_string(parameter.m_values.size()) + " ";
    }
    std::string visits;
};

}  // namespace

TEST(VornPropertiesTest, RepeatedNamesAppendOrReplaceByTheStoresMode)
{
    VornProperties<std::string> multi;
    VornProperties<std::string> single(false);
    for (auto* store : {&multi, &single}) {
        store->addProperty("a", "1");
        store->addProperty("a", "2");
        store->addProperty("", "1");
        store->setProperty("", "1");
    }
    EXPECT_EQ(multi.size(), 1u);
    EXPECT_EQ(multi.getPropertyValues("a"), (Values{"1", "2"}));
    EXPECT_EQ(multi.getProperty("a"), "1");
    EXPECT_EQ(single.getPropertyValues("a"), Values{"2"});

    multi.setProperty("a", "3");
    multi.setProperty("b", "4");
    EXPECT_EQ(multi.getPropertyValues("a"), (Values{"3", "2"}));
    EXPECT_EQ(multi.getPropertyValues("b"), Values{"4"});
    multi.removeProperty("a");
    multi.removeProperty("never");
    EXPECT_TRUE(multi.getPropertyValues("a").empty());
}

TEST(VornPropertiesTest, AbsentNamesThrowOnlyFromGetPropertyWithoutDefault)
{
    VornProperties<std::wstring> store;
    try {
        store.getProperty(L"port");
        FAIL() << "no exception";
    } catch (const VornPropertyNotFound& error) {
        EXPECT_EQ(error.getText(), "Property not found: port");
    }
    const std::wstring fallback = L"x";
    EXPECT_EQ(&store.getProperty(L"port", fallback), &fallback);
    std::wstring value = L"untouched";
    EXPECT_FALSE(store.getPropertyValue(L"port", value));
    EXPECT_EQ(value, L"untouched");

    store.addProperty(L"port", L"80");
    const std::wstring& stored = store.getProperty(L"port", fallback);
    store.setProperty(L"port", L"81");
    EXPECT_EQ(stored, L"81");
}

TEST(VornPropertiesTest, ForEachVisitsNamesInAscendingOrderInTheCaseFirstAdded)
{
    VornProperties<ci_string> store;
    NameRecorder recorder;
    store.forEach(recorder);
    for (const char* name : {"c", "Port", "b", "PORT"}) {
        store.addProperty(name, "1");
    }
    store.forEach(recorder);
    EXPECT_EQ(recorder.visits, "b:1 c:1 Port:2 ");
}

TEST(VornPropertiesTest, CopiesTakeTheTableButNotCountOrDependentsAndNothingNotifies)
{
    VornSmartPointer<VornProperties<std::string>> original(new VornProperties<std::string>(false));
    CountingDependent dependent;
    original->addDependent(dependent);
    original->addProperty("a", "1");
    original->setProperty("a", "1");
    original->removeProperty("x");

    VornProperties<std::string> copy(*original);
    copy.addProperty("a", "2");
    copy.notify(PropertyChanged("a"));
    EXPECT_EQ(copy.refCount(), 0);
    EXPECT_EQ(dependent.calls, 0);
    EXPECT_EQ(copy.getPropertyValues("a"), Values{"2"});
    EXPECT_EQ(original->getProperty("a"), "1");

    VornProperties<std::string> multi;
    multi.addProperty("b", "1");
    *original = multi;
    *original = *original;
    original->addProperty("b", "2");
    EXPECT_EQ(original->getProperties(), (std::map<std::string, Values>{{"b", {"1", "2"}}}));
    EXPECT_EQ(original->refCount(), 1);
    original->notify(PropertyChanged("b"));
    EXPECT_EQ(dependent.calls, 1);
    original->removeDependent(dependent);
}
