#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornTreeNode.h>

#include "log/LibraryLog.h"

#include <typeinfo>

namespace VornSupport {

template class VornSmartPointer<VornTreeNode>;

namespace {

// A plain node, or one of a class whose name says it is one.
bool isPlaceholder(const VornTreeNode& node)
{
    return std::string(typeid(node).name()).find("VornTreeNode") != std::string::npos;
}

// Removes the first component of the path and gives it back without the
// blanks around it.
std::string takeFirstComponent(std::vector<std::string>& path)
{
    const std::string key = VornStringUtilities::trim(path.front(), std::string(" "), VornStringUtilities::trimBoth);
    path.erase(path.begin());
    return key;
}

std::vector<std::string> splitPath(const std::string& path, const char* separators)
{
    std::vector<std::string> components;
    VornSupport::VornTokenizer(path, std::string(separators), components);
    return components;
}

}  // namespace

VornTreeNode::VornTreeNode() : m_parent(nullptr) {}

VornTreeNode::VornTreeNode(const std::string& key) : m_key(key), m_parent(nullptr) {}

VornTreeNode::VornTreeNode(const VornTreeNode& other)
    : VornObjectBase(), VornCollaborator(), m_children(other.m_children), m_key(other.m_key), m_parent(other.m_parent)
{
}

VornTreeNode& VornTreeNode::operator=(const VornTreeNode& other)
{
    if (this != &other) {
        m_key = other.m_key;
        m_parent = other.m_parent;
        m_children = other.m_children;
    }
    return *this;
}

VornTreeNode& VornTreeNode::operator=(const std::string& key)
{
    setKey(key);
    return *this;
}

VornTreeNode::~VornTreeNode() = default;

const std::string& VornTreeNode::getKey() const
{
    return m_key;
}

void VornTreeNode::setKey(const std::string& key)
{
    m_key = key;
}

VornTreeNode::NodePointer VornTreeNode::add(NodePointer node)
{
    auto position = m_children.begin();
    while (position != m_children.end() && node->m_key.compare((*position)->m_key) >= 0) {
        ++position;
    }
    m_children.insert(position, node);
    return node;
}

VornTreeNode::NodePointer VornTreeNode::add(NodePointer node, std::vector<std::string>& path)
{
    if (path.empty()) {
        return node;
    }
    const std::string key = takeFirstComponent(path);
    if (path.empty()) {
        return addAtLastLevel(node, key);
    }
    NodePointer child = getNode(key);
    if (!child) {
        child = add(new VornTreeNode(key));
    }
    return child->add(node, path);
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

VornTreeNode::NodePointer VornTreeNode::takeOverPlaceholder(NodePointer node, NodePointer placeholder,
                                                            const std::string& key)
{
    node->setKey(key);
    node->m_children = placeholder->m_children;
    placeholder->m_children.clear();
    erase(key);
    return add(node);
}

void VornTreeNode::insert(int index, NodePointer node)
{
    node->m_parent = this;
    m_children.insert(m_children.begin() + index, node);
}

VornTreeNode::NodePointer VornTreeNode::getNode(const std::string& key)
{
    const auto child = findChild(key);
    return child == m_children.end() ? NodePointer() : *child;
}

VornTreeNode::NodePointer VornTreeNode::getNode(std::vector<std::string>& path)
{
    if (path.empty()) {
        return NodePointer();
    }
    NodePointer child = getNode(takeFirstComponent(path));
    if (!child || path.empty()) {
        return child;
    }
    return child->getNode(path);
}

VornTreeNode::NodePointer VornTreeNode::getNode(const std::string& path, const char* separators)
{
    std::vector<std::string> components = splitPath(path, separators);
    return getNode(components);
}

void VornTreeNode::erase(const std::string& key)
{
    const auto child = findChild(key);
    if (child != m_children.end()) {
        m_children.erase(child);
    }
}

void VornTreeNode::erase(int index)
{
    m_children.erase(m_children.begin() + index);
}

VornTreeNode::NodePointer VornTreeNode::operator[](int index)
{
    return m_children[index];
}

void VornTreeNode::print(int depth)
{
    if (!VornLogging::isAccessAllowed() || VornLogging::getInstance()->getLogLevel() != 9) {
        return;
    }
    printGuts(depth);
    for (NodePointer& child : m_children) {
        child->print(depth + 1);
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

VornTreeNode::Children::iterator VornTreeNode::findChild(const std::string& key)
{
    auto child = m_children.begin();
    while (child != m_children.end() && (*child)->m_key != key) {
        ++child;
    }
    return child;
}

}  // namespace VornSupport
