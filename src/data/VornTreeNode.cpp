#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornTreeNode.h>

#include "log/LibraryLog.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <typeinfo>
#include <utility>

namespace VornSupport {

template class VornSmartPointer<VornTreeNode>;

namespace {

// Counts the new keys given to nodes that stand in child lists. A list that
// last checked its order at another count checks it again before it trusts
// it: the list cannot see its children's keys change.
std::atomic<std::uint64_t> g_listedKeyChanges{0};

std::uint64_t listedKeyChanges()
{
    return g_listedKeyChanges.load(std::memory_order_relaxed);
}

// A plain node, or one of a class whose name says it is one.
bool isPlaceholder(const VornTreeNode& node)
{
    return std::string(typeid(node).name()).find("VornTreeNode") != std::string::npos;
}

std::string componentAt(const std::vector<std::string>& path, std::size_t index)
{
    return VornStringUtilities::trim(path[index], std::string(" "), VornStringUtilities::trimBoth);
}

std::vector<std::string> splitPath(const std::string& path, const char* separators)
{
    std::vector<std::string> components;
    VornSupport::VornTokenizer(path, std::string(separators), components);
    return components;
}

// Priorities of the balanced tree: a mixed counter of the thread's own, so
// that no order of operations can correlate with them.
std::uint32_t nextPriority()
{
    static thread_local std::uint64_t t_state = 0;
    std::uint64_t z = (t_state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return static_cast<std::uint32_t>(z ^ (z >> 31));
}

}  // namespace

// ---------------------------------------------------------------------------
// Children

// The children of a node in their order, as a treap over positions: each
// entry holds one child and the number of entries below it, and random
// priorities keep the height near the logarithm of the count, whatever the
// order of the operations. While the keys ascend (equal keys side by side),
// the same tree is a search tree over the keys, and add and the lookups
// descend it; otherwise they walk the children from the front. Recursion
// goes as deep as the tree is high, never further.
class VornTreeNode::Children {
public:
    // Where a lookup by key found the first child with the key; node is
    // null when there is none.
    struct Found {
        std::size_t position;
        VornTreeNode* node;
    };

    Children() : m_checkedAt(listedKeyChanges()) {}
    Children(const Children& other)
        : m_root(copyOf(other.m_root)),
          m_ascending(other.m_ascending),
          m_orderKnown(other.m_orderKnown),
          m_checkedAt(other.m_checkedAt)
    {
    }
    Children& operator=(const Children&) = delete;

    VornTreeNode* at(std::size_t index) const
    {
        const Entry* entry = m_root.get();
        while (entry != nullptr) {
            const std::size_t before = countOf(entry->left);
            if (index == before) {
                return entry->child;
            }
            if (index < before) {
                entry = entry->left.get();
            } else {
                index -= before + 1;
                entry = entry->right.get();
            }
        }
        return nullptr;
    }

    // Before the first child whose key is greater, as add places a node.
    void insertInOrder(VornTreeNode* node)
    {
        const std::string& key = node->m_key;
        insertEntry(ascending() ? ascendingPlaceFor(key) : walkedPlaceFor(key), node);
    }

    void insertAt(std::size_t index, VornTreeNode* node)
    {
        index = std::min(index, countOf(m_root));
        if (m_orderKnown && m_ascending) {
            const VornTreeNode* before = index > 0 ? at(index - 1) : nullptr;
            const VornTreeNode* after = at(index);
            m_ascending = (before == nullptr || before->m_key.compare(node->m_key) <= 0) &&
                          (after == nullptr || node->m_key.compare(after->m_key) <= 0);
        }
        insertEntry(index, node);
    }

    void eraseAt(std::size_t index)
    {
        if (index >= countOf(m_root)) {
            return;
        }
        auto [front, rest] = split(std::move(m_root), index);
        auto [erased, back] = split(std::move(rest), 1);
        m_root = merge(std::move(front), std::move(back));
        // Taking a child out of a list out of order may have set it right.
        m_orderKnown = m_orderKnown && m_ascending;
    }

    Found find(const std::string& key)
    {
        return ascending() ? ascendingFind(key) : walkedFind(key);
    }

    // Calls visit(child) in order until it returns false.
    template <class Visit>
    void forEach(Visit visit) const
    {
        std::vector<Entry*> above;
        Entry* entry = m_root.get();
        while (entry != nullptr || !above.empty()) {
            for (; entry != nullptr; entry = entry->left.get()) {
                above.push_back(entry);
            }
            entry = above.back();
            above.pop_back();
            if (!visit(entry->child)) {
                return;
            }
            entry = entry->right.get();
        }
    }

    void releaseAll();

private:
    struct Entry {
        Entry(VornTreeNode* node, std::uint32_t rank) : child(node), priority(rank) {}

        NodePointer child;
        std::uint32_t priority;
        std::size_t count = 1;
        std::unique_ptr<Entry> left;
        std::unique_ptr<Entry> right;
    };
    using Link = std::unique_ptr<Entry>;

    static std::size_t countOf(const Link& link) { return link ? link->count : 0; }

    static void recount(Entry& entry) { entry.count = 1 + countOf(entry.left) + countOf(entry.right); }

    static Link copyOf(const Link& link)
    {
        if (!link) {
            return nullptr;
        }
        auto copy = std::make_unique<Entry>(link->child, link->priority);
        copy->count = link->count;
        copy->left = copyOf(link->left);
        copy->right = copyOf(link->right);
        return copy;
    }

    // The first index entries, and the rest.
    static std::pair<Link, Link> split(Link tree, std::size_t index)
    {
        if (!tree) {
            return {};
        }
        const std::size_t before = countOf(tree->left);
        if (index <= before) {
            auto [front, back] = split(std::move(tree->left), index);
            tree->left = std::move(back);
            recount(*tree);
            return {std::move(front), std::move(tree)};
        }
        auto [front, back] = split(std::move(tree->right), index - before - 1);
        tree->right = std::move(front);
        recount(*tree);
        return {std::move(tree), std::move(back)};
    }

    static Link merge(Link front, Link back)
    {
        if (!front || !back) {
            return front ? std::move(front) : std::move(back);
        }
        if (front->priority > back->priority) {
            front->right = merge(std::move(front->right), std::move(back));
            recount(*front);
            return front;
        }
        back->left = merge(std::move(front), std::move(back->left));
        recount(*back);
        return back;
    }

    void insertEntry(std::size_t index, VornTreeNode* node)
    {
        node->m_listed = true;
        auto [front, back] = split(std::move(m_root), index);
        m_root = merge(merge(std::move(front), std::make_unique<Entry>(node, nextPriority())), std::move(back));
    }

    // Whether the keys ascend; checked again once a key in some list has
    // changed since the last check.
    bool ascending()
    {
        const std::uint64_t changes = listedKeyChanges();
        if (!m_orderKnown || m_checkedAt != changes) {
            const std::string* previous = nullptr;
            m_ascending = true;
            forEach([&](const VornTreeNode* child) {
                m_ascending = previous == nullptr || previous->compare(child->m_key) <= 0;
                previous = &child->m_key;
                return m_ascending;
            });
            m_orderKnown = true;
            m_checkedAt = changes;
        }
        return m_ascending;
    }

    std::size_t ascendingPlaceFor(const std::string& key) const
    {
        std::size_t place = 0;
        for (const Entry* entry = m_root.get(); entry != nullptr;) {
            if (key.compare(entry->child->m_key) < 0) {
                entry = entry->left.get();
            } else {
                place += countOf(entry->left) + 1;
                entry = entry->right.get();
            }
        }
        return place;
    }

    std::size_t walkedPlaceFor(const std::string& key) const
    {
        std::size_t place = 0;
        forEach([&](const VornTreeNode* child) {
            if (key.compare(child->m_key) < 0) {
                return false;
            }
            ++place;
            return true;
        });
        return place;
    }

    Found ascendingFind(const std::string& key) const
    {
        Found found{0, nullptr};
        std::size_t skipped = 0;
        for (const Entry* entry = m_root.get(); entry != nullptr;) {
            if (entry->child->m_key.compare(key) >= 0) {
                found = {skipped + countOf(entry->left), entry->child};
                entry = entry->left.get();
            } else {
                skipped += countOf(entry->left) + 1;
                entry = entry->right.get();
            }
        }
        if (found.node != nullptr && found.node->m_key != key) {
            found.node = nullptr;
        }
        return found;
    }

    Found walkedFind(const std::string& key) const
    {
        Found found{0, nullptr};
        forEach([&](VornTreeNode* child) {
            if (child->m_key == key) {
                found.node = child;
                return false;
            }
            ++found.position;
            return true;
        });
        return found;
    }

    Link m_root;
    bool m_ascending = true;
    bool m_orderKnown = true;
    std::uint64_t m_checkedAt;
};

// Gives back every child. A child that dies of it hands its own children to
// the loop that is already running on this thread rather than releasing
// them from within its destructor, so that a tree of any depth is released
// without recursion, in the order the recursion would take: each child with
// its whole subtree before the next.
void VornTreeNode::Children::releaseAll()
{
    static thread_local std::vector<VornTreeNode*>* t_releasing = nullptr;
    std::vector<VornTreeNode*> own;
    std::vector<VornTreeNode*>& pending = t_releasing != nullptr ? *t_releasing : own;
    const std::size_t first = pending.size();
    forEach([&](NodePointer& child) {
        // The list's reference moves to the loop, which gives it back.
        pending.push_back(child.getOwnership());
        return true;
    });
    m_root.reset();
    std::reverse(pending.begin() + first, pending.end());
    if (&pending != &own) {
        return;
    }
    t_releasing = &own;
    while (!own.empty()) {
        VornTreeNode* child = own.back();
        own.pop_back();
        child->release();
    }
    t_releasing = nullptr;
}

// ---------------------------------------------------------------------------
// VornTreeNode

VornTreeNode::VornTreeNode() : m_parent(nullptr), m_listed(false) {}

VornTreeNode::VornTreeNode(const std::string& key) : m_key(key), m_parent(nullptr), m_listed(false) {}

VornTreeNode::VornTreeNode(const VornTreeNode& other)
    : VornObjectBase(),
      VornCollaborator(),
      m_children(other.m_children ? std::make_unique<Children>(*other.m_children) : nullptr),
      m_key(other.m_key),
      m_parent(other.m_parent),
      m_listed(false)
{
}

// The old children go last: other may live only through them.
VornTreeNode& VornTreeNode::operator=(const VornTreeNode& other)
{
    if (this != &other) {
        setKey(other.m_key);
        m_parent = other.m_parent;
        m_children = other.m_children ? std::make_unique<Children>(*other.m_children) : nullptr;
    }
    return *this;
}

VornTreeNode& VornTreeNode::operator=(const std::string& key)
{
    setKey(key);
    return *this;
}

VornTreeNode::~VornTreeNode()
{
    if (m_children) {
        m_children->releaseAll();
    }
}

const std::string& VornTreeNode::getKey() const
{
    return m_key;
}

void VornTreeNode::setKey(const std::string& key)
{
    if (m_listed && key != m_key) {
        g_listedKeyChanges.fetch_add(1, std::memory_order_relaxed);
    }
    m_key = key;
}

VornTreeNode::Children& VornTreeNode::children()
{
    if (!m_children) {
        m_children = std::make_unique<Children>();
    }
    return *m_children;
}

VornTreeNode::NodePointer VornTreeNode::add(NodePointer node)
{
    children().insertInOrder(node);
    return node;
}

// Each level takes the next component of the path; the path is emptied
// before the last level, as if each level had taken its component out.
VornTreeNode::NodePointer VornTreeNode::add(NodePointer node, std::vector<std::string>& path)
{
    VornTreeNode* parent = this;
    for (std::size_t level = 0; level < path.size(); ++level) {
        const std::string key = componentAt(path, level);
        if (level + 1 == path.size()) {
            path.clear();
            return parent->addAtLastLevel(node, key);
        }
        VornTreeNode* child = parent->findChild(key);
        if (child == nullptr) {
            child = parent->add(new VornTreeNode(key));
        }
        parent = child;
    }
    return node;
}

VornTreeNode::NodePointer VornTreeNode::add(NodePointer node, const char* separators)
{
    std::vector<std::string> path = splitPath(node->m_key, separators);
    return add(node, path);
}

VornTreeNode::NodePointer VornTreeNode::addAtLastLevel(NodePointer node, const std::string& key)
{
    NodePointer existing = getNode(key);
    if (!existing) {
        node->setKey(key);
        return add(node);
    }
    if (!isPlaceholder(*existing)) {
        return existing;
    }
    return takeOverPlaceholder(node, existing, key);
}

// The placeholder is left without children even when it is the node itself.
VornTreeNode::NodePointer VornTreeNode::takeOverPlaceholder(NodePointer node, NodePointer placeholder,
                                                            const std::string& key)
{
    node->setKey(key);
    node->m_children = std::move(placeholder->m_children);
    placeholder->m_children.reset();
    erase(key);
    return add(node);
}

void VornTreeNode::insert(int index, NodePointer node)
{
    node->m_parent = this;
    children().insertAt(static_cast<std::size_t>(index), node);
}

VornTreeNode* VornTreeNode::findChild(const std::string& key) const
{
    return m_children ? m_children->find(key).node : nullptr;
}

VornTreeNode::NodePointer VornTreeNode::getNode(const std::string& key)
{
    return findChild(key);
}

// Takes out of path the components it has walked, the missing one included.
VornTreeNode::NodePointer VornTreeNode::getNode(std::vector<std::string>& path)
{
    VornTreeNode* node = this;
    std::size_t walked = 0;
    while (node != nullptr && walked < path.size()) {
        node = node->findChild(componentAt(path, walked++));
    }
    path.erase(path.begin(), path.begin() + walked);
    return walked > 0 ? node : nullptr;
}

VornTreeNode::NodePointer VornTreeNode::getNode(const std::string& path, const char* separators)
{
    std::vector<std::string> components = splitPath(path, separators);
    return getNode(components);
}

void VornTreeNode::erase(const std::string& key)
{
    if (m_children) {
        const Children::Found found = m_children->find(key);
        if (found.node != nullptr) {
            m_children->eraseAt(found.position);
        }
    }
}

void VornTreeNode::erase(int index)
{
    if (m_children) {
        m_children->eraseAt(static_cast<std::size_t>(index));
    }
}

VornTreeNode::NodePointer VornTreeNode::operator[](int index)
{
    return m_children ? m_children->at(static_cast<std::size_t>(index)) : nullptr;
}

// Depth first, each node before its children, as far down as the tree goes.
void VornTreeNode::print(int depth)
{
    struct Visit {
        VornTreeNode* node;
        int depth;
    };
    std::vector<Visit> pending{{this, depth}};
    while (!pending.empty()) {
        const Visit visit = pending.back();
        pending.pop_back();
        if (!VornLogging::isAccessAllowed() || VornLogging::getInstance()->getLogLevel() != 9) {
            continue;
        }
        visit.node->printGuts(visit.depth);
        if (visit.node->m_children) {
            const std::size_t first = pending.size();
            visit.node->m_children->forEach([&](VornTreeNode* child) {
                pending.push_back({child, visit.depth + 1});
                return true;
            });
            std::reverse(pending.begin() + first, pending.end());
        }
    }
}

void VornTreeNode::printGuts(int depth)
{
    std::string indent;
    for (int level = 0; level < depth; ++level) {
        indent += "    ";
    }
    logLibraryRecord(9, indent, "VornTreeNode::print: Key = ", m_key);
}

}  // namespace VornSupport
