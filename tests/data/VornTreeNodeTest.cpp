#include "support/LogRecords.h"

#include <vsupt/VornTreeNode.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VornSupport;
using log_records::recordsAt;
using Node = VornTreeNode::NodePointer;

namespace {

// A real node: its class name does not hold that of the plain node.
class Folder : public VornTreeNode {
public:
    explicit Folder(const std::string& key) : VornTreeNode(key) {}
};

// The keys of the first count children; the class does not tell how many
// there are.
std::vector<std::string> childKeys(VornTreeNode& node, int count)
{
    std::vector<std::string> keys;
    for (int i = 0; i < count; ++i) {
        keys.push_back(node[i]->getKey());
    }
    return keys;
}

std::vector<std::string> path(std::initializer_list<const char*> components)
{
    return std::vector<std::string>(components.begin(), components.end());
}

}  // namespace

TEST(VornTreeNodeTest, AddKeepsChildrenInByteOrderWithEqualKeysInOrderOfArrival)
{
    VornTreeNode root;
    for (const char* key : {"b", "ab", "c", "a"}) {
        root.add(new VornTreeNode(key));
    }
    Node first = root.add(new VornTreeNode("b"));
    EXPECT_EQ(childKeys(root, 5), path({"a", "ab", "b", "b", "c"}));
    EXPECT_NE(root.getNode("b"), first);
    EXPECT_EQ(root[3], first);

    root.erase("b");
    EXPECT_EQ(root.getNode("b"), first);
    root.erase("missing");
    root.erase(0);
    EXPECT_EQ(childKeys(root, 3), path({"ab", "b", "c"}));
}

TEST(VornTreeNodeTest, AddAfterInsertStopsAtTheFirstGreaterChild)
{
    VornTreeNode root;
    root.add(new VornTreeNode("m"));
    root.insert(0, new VornTreeNode("z"));
    root.add(new VornTreeNode("a"));
    root.add(new VornTreeNode("q"));
    EXPECT_EQ(childKeys(root, 4), path({"a", "q", "z", "m"}));
}

TEST(VornTreeNodeTest, ARealNodeAddedByPathTakesOverThePlaceholderAndItsChildren)
{
    VornTreeNode root;
    std::vector<std::string> xy = path({"x", "y"});
    Node y = root.add(new VornTreeNode, xy);
    EXPECT_TRUE(xy.empty());
    EXPECT_EQ(y->getKey(), "y");
    Node placeholder = root.getNode("x");
    ASSERT_TRUE(placeholder);

    std::vector<std::string> x = path({"x"});
    Node folder = root.add(new Folder("ignored"), x);
    EXPECT_EQ(root.getNode("x"), folder);
    EXPECT_EQ(folder->getKey(), "x");
    EXPECT_EQ(folder->getNode("y"), y);
    EXPECT_FALSE(placeholder->getNode("y"));
    EXPECT_EQ(childKeys(root, 1), path({"x"}));

    // A real node stays; the newcomer is turned away.
    std::vector<std::string> again = path({"x"});
    EXPECT_EQ(root.add(new Folder("x"), again), folder);
    EXPECT_EQ(root.getNode("x"), folder);
    EXPECT_EQ(folder->getNode("y"), y);
}

TEST(VornTreeNodeTest, PathsAreSplitAndTheirComponentsStrippedOfBlanks)
{
    VornTreeNode root;
    Node c = root.add(new VornTreeNode("a/b/c"), "/");
    EXPECT_EQ(c->getKey(), "c");
    EXPECT_EQ(root.getNode("a/b/c", "/"), c);
    EXPECT_FALSE(root.getNode("a/c", "/"));

    std::vector<std::string> blanks = path({" a ", "b  ", "  c"});
    EXPECT_EQ(root.getNode(blanks), c);
    EXPECT_TRUE(blanks.empty());
    EXPECT_FALSE(root.getNode(" a "));
    std::vector<std::string> none;
    EXPECT_FALSE(root.getNode(none));

    Node unplaced = new VornTreeNode("//");
    EXPECT_EQ(root.add(unplaced, "/"), unplaced);
    EXPECT_EQ(childKeys(root, 1), path({"a"}));
}

TEST(VornTreeNodeTest, PrintWritesTheSubtreeIndentedOnlyAtLevelNine)
{
    VornTreeNode root("r");
    root.add(new VornTreeNode("a/b"), "/");
    EXPECT_TRUE(recordsAt(8, [&] { root.print(0); }).empty());
    EXPECT_EQ(recordsAt(9, [&] { root.print(0); }),
              path({"VornTreeNode::print: Key = r", "    VornTreeNode::print: Key = a",
                    "        VornTreeNode::print: Key = b"}));
}

TEST(VornTreeNodeTest, ACopySharesTheChildrenButNotTheChildList)
{
    VornTreeNode source("s");
    Node shared = source.add(new VornTreeNode("shared"));
    VornTreeNode copy(source);
    source.add(new VornTreeNode("later"));
    shared->add(new VornTreeNode("grandchild"));
    EXPECT_EQ(copy.getKey(), "s");
    EXPECT_FALSE(copy.getNode("later"));
    EXPECT_EQ(copy.getNode("shared/grandchild", "/"), shared->getNode("grandchild"));
}
