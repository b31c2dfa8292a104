#include "support/LogRecords.h"

#include <vsupt/VornTreeNode.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace VornSupport;
using log_records::recordsAt;
using Node = VornTreeNode::NodePointer;
using Keys = std::vector<std::string>;

namespace {

// A real node: its class name does not hold that of the plain node.
class Folder : public VornTreeNode {
public:
    explicit Folder(const std::string& key) : VornTreeNode(key) {}
};

Keys childKeys(VornTreeNode& node, int count)
{
    Keys keys;
    for (int i = 0; i < count; ++i) {
        keys.push_back(node[i]->getKey());
    }
    return keys;
}

}  // namespace

TEST(VornTreeNodeTest, AddSortsByBytesEqualKeysInOrderOfArrivalEvenAfterInsert)
{
    VornTreeNode root;
    for (const char* key : {"b", "ab", "c", "a"}) {
        root.add(new VornTreeNode(key));
    }
    Node second = root.add(new VornTreeNode("b"));
    EXPECT_EQ(childKeys(root, 5), (Keys{"a", "ab", "b", "b", "c"}));
    EXPECT_NE(root.getNode("b"), second);
    root.erase("b");
    EXPECT_EQ(root.getNode("b"), second);
    root.erase(0);
    root.insert(0, new VornTreeNode("z"));
    root.add(new VornTreeNode("d"));
    EXPECT_EQ(childKeys(root, 5), (Keys{"d", "z", "ab", "b", "c"}));
}

// A path adds plain placeholders for the missing nodes on the way; a real
// node added later at a placeholder's place takes over its children, but a
// real node stays and the newcomer is turned away.
TEST(VornTreeNodeTest, ARealNodeAddedByPathTakesOverThePlaceholderAndItsChildren)
{
    VornTreeNode root;
    Keys xy{"x", "y"};
    Node y = root.add(new VornTreeNode, xy);
    EXPECT_TRUE(xy.empty());
    EXPECT_EQ(y->getKey(), "y");
    Node placeholder = root.getNode("x");
    Keys x{"x"};
    Node folder = root.add(new Folder("ignored"), x);
    EXPECT_EQ(folder->getKey(), "x");
    EXPECT_EQ(folder->getNode("y"), y);
    EXPECT_FALSE(placeholder->getNode("y"));
    Keys again{"x"};
    EXPECT_EQ(root.add(new Folder("x"), again), folder);
    EXPECT_EQ(childKeys(root, 1), Keys{"x"});
    EXPECT_EQ(root.getNode("x"), folder);
}

TEST(VornTreeNodeTest, PathsAreSplitAndTheirComponentsStrippedOfBlanks)
{
    VornTreeNode root;
    Node c = root.add(new VornTreeNode("a/b/c"), "/");
    EXPECT_EQ(c->getKey(), "c");
    EXPECT_EQ(root.getNode("a/b/c", "/"), c);
    EXPECT_FALSE(root.getNode("a/c", "/"));
    Keys blanks{" a ", "b  ", "  c"};
    EXPECT_EQ(root.getNode(blanks), c);
    EXPECT_TRUE(blanks.empty());
    EXPECT_FALSE(root.getNode(" a "));
    EXPECT_FALSE(root.getNode(blanks));

    Node unplaced = new VornTreeNode("//");
    EXPECT_EQ(root.add(unplaced, "/"), unplaced);
    EXPECT_EQ(childKeys(root, 1), Keys{"a"});
}

TEST(VornTreeNodeTest, PrintWritesTheSubtreeIndentedOnlyAtLevelNine)
{
    VornTreeNode root("r");
    root.add(new VornTreeNode("a/b"), "/");
    EXPECT_TRUE(recordsAt(8, [&] { root.print(0); }).empty());
    EXPECT_EQ(recordsAt(9, [&] { root.print(0); }),
              (Keys{"VornTreeNode::print: Key = r", "    VornTreeNode::print: Key = a",
                    "        VornTreeNode::print: Key = b"}));
}

// Once insert or a new key has broken the order, add and the lookups go by
// the order of the list, and they trust the keys again once it ascends.
TEST(VornTreeNodeTest, ABrokenOrderIsWalkedFromTheFrontUntilItAscendsAgain)
{
    VornTreeNode root;
    Node a = root.add(new VornTreeNode("a"));
    Node c = root.add(new VornTreeNode("c"));
    Node early = new VornTreeNode("c");
    root.insert(0, early);
    EXPECT_EQ(root.getNode("c"), early);
    root.add(new VornTreeNode("b"));
    EXPECT_EQ(childKeys(root, 4), (Keys{"b", "c", "a", "c"}));
    root.erase("c");
    root.erase("b");
    root.add(new VornTreeNode("b"));
    EXPECT_EQ(childKeys(root, 3), (Keys{"a", "b", "c"}));

    a->setKey("d");
    EXPECT_EQ(root.getNode("d"), a);
    root.add(new VornTreeNode("bb"));
    EXPECT_EQ(childKeys(root, 4), (Keys{"bb", "d", "b", "c"}));
    EXPECT_FALSE(root[4]);
}

TEST(VornTreeNodeTest, AHundredThousandLevelsAreAddedFoundAndReleasedWithoutRecursion)
{
    const Keys path(100000, "k");
    Node root = new VornTreeNode;
    Keys consumed = path;
    Node leaf = root->add(new VornTreeNode, consumed);
    consumed = path;
    EXPECT_EQ(root->getNode(consumed), leaf);
    root = nullptr;
    EXPECT_EQ(leaf->refCount(), 1);
}

TEST(VornTreeNodeTest, ChildrenAddedInDescendingOrderEachGoToTheFront)
{
    VornTreeNode root;
    char key[16];
    for (int i = 20000; i > 0; --i) {
        std::snprintf(key, sizeof key, "%05d", i);
        root.add(new VornTreeNode(key));
    }
    EXPECT_EQ(root[0]->getKey(), "00001");
    EXPECT_EQ(root[19999]->getKey(), "20000");
    EXPECT_EQ(root.getNode("12345"), root[12344]);
}
