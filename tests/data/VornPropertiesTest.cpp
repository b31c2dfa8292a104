#include <vsupt/PropertyChanged.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornSmartPointer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VornSupport::ci_string;
using VornSupport::ci_wstring;
using VornSupport::PropertyChanged;
using VornSupport::VornCollaborator;
using VornSupport::VornDependent;
using VornSupport::VornNotification;
using VornSupport::VornProperties;
using VornSupport::VornPropertyIterator;
using VornSupport::VornPropertyNotFound;
using VornSupport::VornSmartPointer;

namespace {

using Values = std::vector<std::string>;

class CountingDependent : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override { ++calls; }
    int calls = 0;
};

template <class S>
class NameRecorder : public VornPropertyIterator<S> {
public:
    void process(const VornPropertyIteratorParameter<S>& parameter) override
    {
        names.push_back(parameter.m_name);
        valueCounts.push_back(parameter.m_values.size());
    }
    std::vector<S> names;
    std::vector<std::size_t> valueCounts;
};

}  // namespace

TEST(VornPropertiesTest, AddingANameAgainAppendsInAMultiValuedStore)
{
    VornProperties<std::string> store;
    store.addProperty("a", "1");
    store.addProperty("a", "2");
    store.addProperty("a", "2");
    EXPECT_EQ(store.size(), 1u);
    EXPECT_EQ(store.getPropertyValues("a"), (Values{"1", "2", "2"}));
    EXPECT_EQ(store.getProperty("a"), "1");
}

TEST(VornPropertiesTest, AddingANameAgainReplacesInASingleValuedStore)
{
    VornProperties<std::string> store(false);
    store.addProperty("a", "1");
    store.addProperty("a", "2");
    EXPECT_EQ(store.getPropertyValues("a"), Values{"2"});
}

TEST(VornPropertiesTest, SetPropertyReplacesOnlyTheFirstValue)
{
    VornProperties<std::string> store;
    store.addProperty("a", "1");
    store.addProperty("a", "2");
    store.setProperty("a", "3");
    store.setProperty("b", "4");
    EXPECT_EQ(store.getPropertyValues("a"), (Values{"3", "2"}));
    EXPECT_EQ(store.getPropertyValues("b"), Values{"4"});
}

TEST(VornPropertiesTest, AnEmptyNameNeverEntersTheStore)
{
    VornProperties<std::string> store;
    store.addProperty("", "1");
    store.setProperty("", "1");
    EXPECT_EQ(store.size(), 0u);
}

TEST(VornPropertiesTest, RemovePropertyDropsAllValuesAndIgnoresAbsentNames)
{
    VornProperties<std::string> store;
    store.addProperty("a", "1");
    store.addProperty("a", "2");
    store.removeProperty("a");
    store.removeProperty("never");
    EXPECT_EQ(store.size(), 0u);
    EXPECT_TRUE(store.getPropertyValues("a").empty());
}

TEST(VornPropertiesTest, GetPropertyWithoutDefaultThrowsPropertyNotFoundWithTheName)
{
    VornProperties<std::wstring> store;
    try {
        store.getProperty(L"port");
        FAIL() << "no exception";
    } catch (const VornPropertyNotFound& error) {
        EXPECT_EQ(error.getText(), "Property not found: port");
        EXPECT_EQ(error.getCode(), 0);
    }
}

TEST(VornPropertiesTest, GetPropertyWithDefaultAnswersWithTheDefaultItselfOrTheStoredValue)
{
    VornProperties<std::string> store;
    const std::string fallback = "x";
    EXPECT_EQ(&store.getProperty("a", fallback), &fallback);
    store.addProperty("a", "1");
    const std::string& stored = store.getProperty("a", fallback);
    store.setProperty("a", "2");
    EXPECT_EQ(stored, "2");
}

TEST(VornPropertiesTest, GetPropertyValueLeavesTheOutputAloneForAnAbsentName)
{
    VornProperties<std::string> store;
    store.addProperty("a", "1");
    std::string value = "untouched";
    EXPECT_FALSE(store.getPropertyValue("b", value));
    EXPECT_EQ(value, "untouched");
    EXPECT_TRUE(store.getPropertyValue("a", value));
    EXPECT_EQ(value, "1");
}

TEST(VornPropertiesTest, CaseInsensitiveStoresKeepTheCaseOfTheFirstName)
{
    VornProperties<ci_string> store;
    store.addProperty("Port", "80");
    store.addProperty("PORT", "81");
    EXPECT_EQ(store.getProperty("port"), "80");
    ASSERT_EQ(store.getProperties().size(), 1u);
    EXPECT_EQ(std::string(store.getProperties().begin()->first.c_str()), "Port");

    VornProperties<ci_wstring> wide(false);
    wide.addProperty(L"Host", L"a");
    wide.addProperty(L"HOST", L"B");
    EXPECT_EQ(wide.getPropertyValues(L"host"), std::vector<ci_wstring>{L"B"});
}

TEST(VornPropertiesTest, ForEachVisitsNamesInAscendingOrderWithAllValues)
{
    VornProperties<std::string> store;
    NameRecorder<std::string> recorder;
    store.forEach(recorder);
    EXPECT_TRUE(recorder.names.empty());

    store.addProperty("c", "1");
    store.addProperty("a", "1");
    store.addProperty("b", "1");
    store.addProperty("a", "2");
    store.forEach(recorder);
    EXPECT_EQ(recorder.names, (Values{"a", "b", "c"}));
    EXPECT_EQ(recorder.valueCounts, (std::vector<std::size_t>{2, 1, 1}));
}

TEST(VornPropertiesTest, CopiesAreDeepAndStartUncountedWithoutDependents)
{
    VornSmartPointer<VornProperties<std::string>> original(new VornProperties<std::string>(false));
    CountingDependent dependent;
    original->addDependent(dependent);
    original->addProperty("a", "1");

    VornProperties<std::string> copy(*original);
    copy.addProperty("a", "2");
    copy.notify(PropertyChanged("a"));
    EXPECT_EQ(copy.refCount(), 0);
    EXPECT_EQ(dependent.calls, 0);
    EXPECT_EQ(copy.getPropertyValues("a"), Values{"2"});
    EXPECT_EQ(original->getProperty("a"), "1");
    original->removeDependent(dependent);
}

TEST(VornPropertiesTest, AssignmentReplacesTableAndModeButKeepsCountAndDependents)
{
    VornProperties<std::string> source(false);
    source.addProperty("b", "1");
    VornSmartPointer<VornProperties<std::string>> target(new VornProperties<std::string>);
    CountingDependent dependent;
    target->addDependent(dependent);
    target->addProperty("a", "1");

    *target = source;
    *target = *target;
    target->addProperty("b", "2");
    EXPECT_EQ(target->size(), 1u);
    EXPECT_EQ(target->getPropertyValues("b"), Values{"2"});
    EXPECT_EQ(target->refCount(), 1);
    target->notify(PropertyChanged("b"));
    EXPECT_EQ(dependent.calls, 1);
    target->removeDependent(dependent);
}

TEST(VornPropertiesTest, ChangesNotifyNobody)
{
    VornProperties<std::string> store;
    CountingDependent dependent;
    store.addDependent(dependent);
    store.addProperty("a", "1");
    store.setProperty("a", "2");
    store.removeProperty("a");
    EXPECT_EQ(dependent.calls, 0);
    store.removeDependent(dependent);
}

TEST(PropertyChangedTest, CarriesTheName)
{
    EXPECT_EQ(PropertyChanged("port").getName(), "port");
    EXPECT_EQ(PropertyChanged().getName(), "");
}
