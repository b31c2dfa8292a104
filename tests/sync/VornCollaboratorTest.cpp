#include <vsupt/VornCollaborator.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornEventNotification.h>
#include <vsupt/VornNotification.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

using namespace VornSupport;
using namespace std::chrono_literals;

namespace {

using Journal = std::vector<std::string>;

// Writes its name into a shared journal and keeps what it received, then
// runs its action if it has one.
struct JournalDependent : VornDependent {
    JournalDependent(const char* name, Journal& journal) : m_name(name), m_journal(journal) {}

    void handleNotification(VornCollaborator& source, const VornNotification& notification) override
    {
        m_journal.push_back(m_name);
        lastId = notification.getId();
        wasEventNotification = typeid(notification) == typeid(VornEventNotification);
        if (action) {
            action(source);
        }
    }

    std::function<void(VornCollaborator&)> action;
    int lastId = 0;
    bool wasEventNotification = false;
    std::string m_name;
    Journal& m_journal;
};

}  // namespace

TEST(VornCollaboratorTest, EveryRegistrationIsCalledInOrderAndRemovedTogether)
{
    Journal journal;
    JournalDependent a("a", journal), b("b", journal), stranger("stranger", journal);
    VornCollaborator collaborator;
    collaborator.addDependent(a);
    collaborator.addDependent(b);
    collaborator.addDependent(a);
    collaborator.removeDependent(stranger);
    collaborator.notify(VornNotification(1));
    collaborator.removeDependent(a);
    collaborator.notify(VornNotification(1));
    EXPECT_EQ(journal, (Journal{"a", "b", "a", "b"}));
}

// The list is walked by position with no lock across handlers: a handler that
// removes itself makes its neighbour miss the notification, and one added
// meanwhile, here from another thread, which would deadlock under the lock,
// receives it.
TEST(VornCollaboratorTest, HandlersMayRemoveAndAddDependentsDuringTheWalk)
{
    Journal journal;
    JournalDependent first("first", journal), skipped("skipped", journal), third("third", journal),
        late("late", journal);
    first.action = [&](VornCollaborator& source) { source.removeDependent(first); };
    third.action = [&](VornCollaborator& source) {
        third.action = nullptr;
        std::thread([&] { source.addDependent(late); }).join();
    };
    VornCollaborator collaborator;
    collaborator.addDependent(first);
    collaborator.addDependent(skipped);
    collaborator.addDependent(third);
    collaborator.notify(VornNotification(1));
    EXPECT_EQ(journal, (Journal{"first", "third", "late"}));
}

TEST(VornCollaboratorTest, ThrowingHandlerStopsTheWalkAndLeavesTheCollaboratorUsable)
{
    Journal journal;
    JournalDependent thrower("thrower", journal), behind("behind", journal);
    thrower.action = [&thrower](VornCollaborator&) {
        thrower.action = nullptr;
        throw std::runtime_error("handler failed");
    };
    VornCollaborator collaborator;
    collaborator.addDependent(thrower);
    collaborator.addDependent(behind);
    EXPECT_THROW(collaborator.notify(VornNotification(1)), std::runtime_error);
    EXPECT_EQ(journal, (Journal{"thrower"}));
    std::thread([&] { collaborator.notify(VornNotification(1)); }).join();
    EXPECT_EQ(journal, (Journal{"thrower", "thrower", "behind"}));
}

// The time-out reaches the platform as an absolute time at the start of the
// epoch, with the milliseconds times a million wrapped to 32 bits.
TEST(VornEventTest, FiniteWaitReturnsAtOnceWithTimeOutOrFailureByTheWrappedNanoseconds)
{
    const std::pair<int, int> rows[] = {{0, -2}, {999, -2}, {1000, -3}, {4000, -3}, {5000, -2}, {-5, -3}};
    VornEvent event;
    const auto start = std::chrono::steady_clock::now();
    for (const auto& row : rows) {
        EXPECT_EQ(event.wait(row.first), row.second) << row.first;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);
}

// A set that comes before the sleeper is asleep is lost, so the set is
// repeated until the sleeper is back.
TEST(VornEventTest, WaitForeverSleepsUntilASetThatComesAfterItAndDependentsRunFirst)
{
    Journal journal;
    JournalDependent dependent("dependent", journal);
    std::atomic<int> handled{0};
    dependent.action = [&](VornCollaborator&) {
        std::this_thread::sleep_for(20ms);
        ++handled;
    };
    VornEvent event;
    event.set();
    event.addDependent(dependent);
    std::atomic<bool> returned{false};
    std::atomic<int> result{1}, handledWhenWoken{-1};
    std::thread sleeper([&] {
        result = event.wait(-1);
        handledWhenWoken = handled.load();
        returned = true;
    });
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(returned);
    while (!returned) {
        event.set();
        std::this_thread::sleep_for(5ms);
    }
    sleeper.join();
    event.removeDependent(dependent);
    EXPECT_EQ(result, 0);
    EXPECT_GE(handledWhenWoken, 1);
    EXPECT_EQ(dependent.lastId, 1);
    EXPECT_TRUE(dependent.wasEventNotification);
}

TEST(VornEventTest, SetGoesThroughTheVirtualFactoryAndAThrowingDependentSkipsTheGivingBack)
{
    class OwnNotificationEvent : public VornEvent {
    public:
        VornNotification* createNotification() override { return &own; }
        void destroyNotification(VornNotification* notification) override { givenBack = notification; }
        VornNotification own{42};
        VornNotification* givenBack = nullptr;
    } event;
    Journal journal;
    JournalDependent dependent("dependent", journal), thrower("thrower", journal);
    thrower.action = [](VornCollaborator&) { throw std::runtime_error("handler failed"); };
    event.addDependent(dependent);
    event.addDependent(thrower);
    EXPECT_THROW(event.set(), std::runtime_error);
    EXPECT_EQ(dependent.lastId, 42);
    EXPECT_EQ(event.givenBack, nullptr);
    event.removeDependent(thrower);
    event.set();
    EXPECT_EQ(event.givenBack, &event.own);
    event.removeDependent(dependent);
}
