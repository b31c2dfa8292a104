#include <vsupt/VornCollaborator.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornNotification.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using VornSupport::VornCollaborator;
using VornSupport::VornDependent;
using VornSupport::VornNotification;

namespace {

using Journal = std::vector<std::string>;

// Writes its name into a shared journal, then runs its action if it has one.
class JournalDependent : public VornDependent {
public:
    JournalDependent(const char* name, Journal& journal) : m_name(name), m_journal(journal) {}

    void handleNotification(VornCollaborator& source, const VornNotification&) override
    {
        m_journal.push_back(m_name);
        if (action) {
            action(source);
        }
    }

    std::function<void(VornCollaborator&)> action;

private:
    std::string m_name;
    Journal& m_journal;
};

}  // namespace

TEST(VornNotificationTest, IdIsKeptByCopiesAndChangedByIntAssignmentAndSetId)
{
    const VornNotification original(7);
    VornNotification assigned(3);
    assigned = original;
    EXPECT_EQ(VornNotification(original).getId(), 7);
    EXPECT_EQ(assigned.getId(), 7);
    assigned = 9;
    EXPECT_EQ(assigned.getId(), 9);
    assigned.setId(11);
    EXPECT_EQ(assigned.getId(), 11);
}

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
    EXPECT_EQ(journal, (Journal{"a", "b", "a"}));

    journal.clear();
    collaborator.removeDependent(a);
    collaborator.notify(VornNotification(1));
    EXPECT_EQ(journal, (Journal{"b"}));
}

TEST(VornCollaboratorTest, HandlerThatRemovesItselfMakesItsNeighbourMissTheNotification)
{
    Journal journal;
    JournalDependent first("first", journal), second("second", journal), third("third", journal);
    first.action = [&first](VornCollaborator& source) { source.removeDependent(first); };
    VornCollaborator collaborator;
    collaborator.addDependent(first);
    collaborator.addDependent(second);
    collaborator.addDependent(third);

    collaborator.notify(VornNotification(1));

    EXPECT_EQ(journal, (Journal{"first", "third"}));
}

// The registration comes from another thread while the handler waits for it,
// which would deadlock if the handler ran under the collaborator's lock.
TEST(VornCollaboratorTest, DependentAddedDuringAHandlerReceivesTheNotificationUnderWay)
{
    Journal journal;
    JournalDependent first("first", journal), second("second", journal), late("late", journal);
    first.action = [&](VornCollaborator& source) {
        first.action = nullptr;
        std::thread([&] { source.addDependent(late); }).join();
    };
    VornCollaborator collaborator;
    collaborator.addDependent(first);
    collaborator.addDependent(second);

    collaborator.notify(VornNotification(1));

    EXPECT_EQ(journal, (Journal{"first", "second", "late"}));
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

    journal.clear();
    std::thread([&] { collaborator.notify(VornNotification(1)); }).join();
    EXPECT_EQ(journal, (Journal{"thrower", "behind"}));
}
