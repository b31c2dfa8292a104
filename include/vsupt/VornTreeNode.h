// A keyed tree for hierarchical data addressed by paths such as a/b/c.
//
// A node has a key (one path component) and a list of children held by
// smart pointers, which it shares with whoever else holds them. Programs
// derive their own node classes. Adding a node under a path makes plain
// VornTreeNode placeholders for the missing levels above it; a later add that
// reaches a placeholder by path puts the real node in its place and hands the
// placeholder's children over to it. A node whose run-time type name holds
// "VornTreeNode" counts as a placeholder; one of any other class is real and
// is never replaced.
//
// Keys compare byte by byte. add keeps the children in ascending key order,
// equal keys in order of arrival; insert puts a child anywhere. The children
// stand in a balanced tree of positions rather than a vector, because
// walking a vector made each step of a path cost the width of its level and
// each insertion near the front the whole list: add, insert, erase, a
// position and, while the keys ascend, a lookup by key each cost the
// logarithm of the number of children. A list whose order insert or a new
// key of a child has broken is searched from the front, as the order of the
// list demands, until it ascends again. Paths are walked in a loop, and a
// node hands the children that die with it to one loop on its thread, so
// neither a deep path nor the release of a deep tree recurses. Path
// components are stripped of blanks at both ends. Positions are the
// caller's to get right: one out of range reads as null, inserts at the end
// and erases nothing. m_parent is set by insert alone and read by nothing
// but the copy operations.
//
// Nothing here takes a lock or notifies the dependents: a tree belongs to one
// thread at a time.
#ifndef VSUPT_VORNTREENODE_H
#define VSUPT_VORNTREENODE_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCollaborator.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <memory>
#include <string>
#include <vector>

namespace VornSupport {

class VSUPT_API VornTreeNode : public VornObjectBase, public VornCollaborator {
public:
    using NodePointer = VornSmartPointer<VornTreeNode>;

    VornTreeNode();
    explicit VornTreeNode(const std::string& key);
    // Fresh counting and dependents; the children are shared, not copied.
    VornTreeNode(const VornTreeNode& other);
    VornTreeNode& operator=(const VornTreeNode& other);
    VornTreeNode& operator=(const std::string& key);
    ~VornTreeNode() override;

    const std::string& getKey() const;
    // The node keeps its place among its siblings.
    void setKey(const std::string& key);

    // Sorted insertion among the direct children; returns node.
    NodePointer add(NodePointer node);
    // Adds node below path, whose last element becomes its key, and empties
    // path. Returns the node that now answers to the path: a real node
    // already there is returned instead, and node is not added. An empty
    // path adds nothing and returns node.
    NodePointer add(NodePointer node, std::vector<std::string>& path);
    // Takes the path from node's own key, split at any of the separators.
    NodePointer add(NodePointer node, const char* separators);
    // Before position index, without regard to order; makes this node the
    // child's parent.
    void insert(int index, NodePointer node);

    // The first direct child with exactly this key, or null.
    NodePointer getNode(const std::string& key);
    // Walks down the path, emptying it; null when a step is missing or the
    // path is empty.
    NodePointer getNode(std::vector<std::string>& path);
    NodePointer getNode(const std::string& path, const char* separators);

    // Removes the first direct child with this key, if any.
    void erase(const std::string& key);
    void erase(int index);
    NodePointer operator[](int index);

    // Writes the subtree to the log, one record a node, when the logger's
    // level is exactly 9.
    void print(int depth);
    // Writes this node's record: the key, indented by depth.
    virtual void printGuts(int depth);

private:
    class Children;

    Children& children();
    VornTreeNode* findChild(const std::string& key) const;
    NodePointer addAtLastLevel(NodePointer node, const std::string& key);
    NodePointer takeOverPlaceholder(NodePointer node, NodePointer placeholder, const std::string& key);

    std::unique_ptr<Children> m_children;  // null while there are none
    std::string m_key;
    VornTreeNode* m_parent;
    // Set once the node has stood in a child list: from then on a new key
    // may break the order of a list that holds it.
    bool m_listed;
};

}  // namespace VornSupport

#endif
