#include <vsupt/VornCollaborator.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornEventNotification.h>
#include <vsupt/VornNotification.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <typeinfo>

using VornSupport::VornCollaborator;
using VornSupport::VornDependent;
using VornSupport::VornEvent;
using VornSupport::VornEventNotification;
using VornSupport::VornNotification;

namespace {

using namespace std::chrono_literals;

// Records what it received; a slow one dawdles before it counts the call.
class RecordingDependent : public VornDependent {
public:
    explicit RecordingDependent(bool slow = false) : m_slow(slow) {}

    void handleNotification(VornCollaborator&, const VornNotification& notification) override
    {
        if (m_slow) {
            std::this_thread::sleep_for(20ms);
        }
        lastId = notification.getId();
        wasEventNotification = typeid(notification) == typeid(VornEventNotification);
        ++handled;
    }

    std::atomic<int> handled{0};
    int lastId = 0;
    bool wasEventNotification = false;

private:
    bool m_slow;
};

// Hands out a notification of its own and remembers what came back.
class OwnNotificationEvent : public VornEvent {
public:
    VornNotification* createNotification() override { return &own; }
    void destroyNotification(VornNotification* notification) override { givenBack = notification; }

    VornNotification own{42};
    VornNotification* givenBack = nullptr;
};

// A set that comes before the sleeper is really asleep is lost, so keep
// setting until it is back.
void setUntil(VornEvent& event, const std::atomic<bool>& returned)
{
    while (!returned) {
        event.set();
        std::this_thread::sleep_for(5ms);
    }
}

}  // namespace

TEST(VornEventTest, FiniteWaitReturnsAtOnceWithTimeOutOrFailureByTheWrappedNanoseconds)
{
    VornEvent event;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(event.wait(0), -2);
    EXPECT_EQ(event.wait(999), -2);
    EXPECT_EQ(event.wait(5000), -2);
    EXPECT_EQ(event.wait(1000), -3);
    EXPECT_EQ(event.wait(4000), -3);
    EXPECT_EQ(event.wait(-5), -3);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);
}

TEST(VornEventTest, WaitForeverSleepsUntilASetThatComesAfterIt)
{
    VornEvent event;
    event.set();
    std::atomic<bool> returned{false};
    std::atomic<int> result{1};
    std::thread sleeper([&] {
        result = event.wait(-1);
        returned = true;
    });
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(returned);
    setUntil(event, returned);
    sleeper.join();
    EXPECT_EQ(result, 0);
}

TEST(VornEventTest, SetRunsDependentsWithAnEventNotificationBeforeWakingSleepers)
{
    VornEvent event;
    RecordingDependent dependent(true);
    event.addDependent(dependent);
    std::atomic<bool> returned{false};
    std::atomic<int> handledWhenWoken{-1};
    std::thread sleeper([&] {
        event.wait(-1);
        handledWhenWoken = dependent.handled.load();
        returned = true;
    });
    std::this_thread::sleep_for(50ms);
    setUntil(event, returned);
    sleeper.join();
    event.removeDependent(dependent);

    EXPECT_GE(handledWhenWoken, 1);
    EXPECT_EQ(dependent.lastId, 1);
    EXPECT_TRUE(dependent.wasEventNotification);
}

TEST(VornEventTest, SetGoesThroughTheVirtualFactoryAndAThrowingDependentSkipsTheGivingBack)
{
    class ThrowingDependent : public VornDependent {
        void handleNotification(VornCollaborator&, const VornNotification&) override
        {
            throw std::runtime_error("handler failed");
        }
    } thrower;
    OwnNotificationEvent event;
    RecordingDependent dependent;
    event.addDependent(dependent);

    event.set();
    EXPECT_EQ(dependent.lastId, 42);
    EXPECT_EQ(event.givenBack, &event.own);

    event.givenBack = nullptr;
    event.addDependent(thrower);
    EXPECT_THROW(event.set(), std::runtime_error);
    EXPECT_EQ(event.givenBack, nullptr);
    event.removeDependent(thrower);
    event.removeDependent(dependent);
}
