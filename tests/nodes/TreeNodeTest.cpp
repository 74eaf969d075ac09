// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/SceneStream.h"
#include "host/TreeNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace trovik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Records its parent and counts the instances.
class Leaf : public TreeNode {
public:
    Leaf() { ++alive; }
    ~Leaf() override { --alive; }
    void OnLinked() override { linkedTo.push_back(Parent()); }
    bool CheckValidity() override { return valid && TreeNode::CheckValidity(); }
    const ClassDesc* RuntimeClass() const override { return Desc(); }
    static const ClassDesc* Desc() {
        static const ClassDesc desc(
            TreeNode::StaticClass(),
            TreeNode::StaticClass(),
            QStringLiteral("Leaf"),
            QStringLiteral("Leaf"),
            [](unsigned) -> Node* { return new Leaf; },
            0,
            0);
        return &desc;
    }

    static inline int alive = 0;
    std::vector<TreeNode*> linkedTo;
    bool valid = true;
};

std::vector<TreeNode*> ChildrenOf(const TreeNode& parent) {
    std::vector<TreeNode*> children;
    for (TreeNode* child = parent.FirstChild(); child != nullptr; child = child->NextSibling())
        children.push_back(child);
    return children;
}

class TreeNodeTest : public testing::Test {
protected:
    ~TreeNodeTest() override {
        root.reset();
        EXPECT_EQ(Leaf::alive, 0) << "a parent deletes its children";
    }
    Leaf* Add() {
        auto* leaf = new Leaf;
        root->AddChild(leaf);
        return leaf;
    }
    std::unique_ptr<TreeNode> root = std::make_unique<TreeNode>();
};

TEST_F(TreeNodeTest, ChildrenAreInTheOrderOfAdding) {
    EXPECT_EQ(root->FirstChild(), nullptr);
    Leaf* a = Add();
    Leaf* b = Add();
    Leaf* c = Add();
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(a, b, c));
    EXPECT_EQ(c->PrevSibling(), b);
    EXPECT_EQ(a->PrevSibling(), nullptr);
    EXPECT_EQ(b->Parent(), root.get());
    EXPECT_EQ(root->NextSibling(), nullptr);
    EXPECT_EQ(root->PrevSibling(), nullptr);
}

TEST_F(TreeNodeTest, LinkingIsReportedAfterTheParentIsSet) {
    Leaf* leaf = Add();
    EXPECT_THAT(leaf->linkedTo, ElementsAre(root.get()));
    root->RemoveChild(leaf);
    EXPECT_THAT(leaf->linkedTo, ElementsAre(root.get(), nullptr));
    EXPECT_THAT(ChildrenOf(*root), IsEmpty());
    root->RemoveChild(leaf);
    EXPECT_EQ(leaf->linkedTo.size(), 2u) << "no longer a child of this parent";
    delete leaf;
}

TEST_F(TreeNodeTest, AddingRemovesTheChildFromItsFormerParent) {
    Leaf* a = Add();
    Leaf* b = Add();
    a->AddChild(b);
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(a));
    EXPECT_THAT(ChildrenOf(*a), ElementsAre(b));
    root->AddChild(a);
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(a));
}

TEST_F(TreeNodeTest, MovingInsertsAChildAfterAnother) {
    Leaf* a = Add();
    Leaf* b = Add();
    Leaf* c = Add();
    root->MoveChild(a, b);
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(b, a, c));
    root->MoveChild(c, nullptr);
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(c, b, a));
    root->MoveChild(c, c);
    Leaf stranger;
    root->MoveChild(c, &stranger);
    root->MoveChild(&stranger, c);
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(c, b, a));
}

TEST_F(TreeNodeTest, DeletedChildIsRemovedFromItsParent) {
    Leaf* a = Add();
    Leaf* b = Add();
    delete a;
    EXPECT_THAT(ChildrenOf(*root), ElementsAre(b));
}

TEST_F(TreeNodeTest, ChildrenAreFoundByClassAndIndex) {
    auto* plain = new TreeNode;
    root->AddChild(plain);
    Leaf* a = Add();
    Leaf* b = Add();
    EXPECT_EQ(root->ChildByClass(Leaf::Desc(), uint32_t{0}), a);
    EXPECT_EQ(root->ChildByClass(Leaf::Desc(), uint32_t{1}), b);
    EXPECT_EQ(root->ChildByClass(Leaf::Desc(), uint32_t{2}), nullptr);
    EXPECT_EQ(root->ChildByClass(TreeNode::StaticClass(), uint32_t{0}), plain);
    EXPECT_EQ(root->ChildByClass(TreeNode::StaticClass(), uint32_t{2}), b);
}

TEST_F(TreeNodeTest, MissingChildIsCreatedByItsFactoryAndLinked) {
    EXPECT_EQ(root->ChildByClass(Leaf::Desc(), false), nullptr);
    TreeNode* made = root->ChildByClass(Leaf::Desc(), true);
    auto* leaf = dynamic_cast<Leaf*>(made);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->Parent(), root.get());
    EXPECT_THAT(leaf->linkedTo, ElementsAre(root.get()));
    EXPECT_EQ(root->ChildByClass(Leaf::Desc(), true), made);
    EXPECT_EQ(root->ChildByClass(TreeNode::StaticClass(), true), made) << "derived classes count";
    root->DeleteChildByClass(Leaf::Desc());
    EXPECT_EQ(Leaf::alive, 0);
    root->DeleteChildByClass(Leaf::Desc());
    EXPECT_EQ(root->ChildByClass(TreeNode::StaticClass(), true), nullptr) << "has no factory";
}

TEST_F(TreeNodeTest, InvalidChildMakesTheTreeInvalid) {
    Leaf* a = Add();
    auto* below = new Leaf;
    a->AddChild(below);
    EXPECT_TRUE(root->CheckValidity());
    below->valid = false;
    EXPECT_FALSE(root->CheckValidity());
}

TEST_F(TreeNodeTest, FlagsAreStreamedAndCopied) {
    EXPECT_TRUE(root->Visible());
    root->SetVisible(false);
    root->SetLocked(true);
    root->SetHiddenFromUI(true);
    root->SetName(QStringLiteral("r"));
    TreeNode copy;
    root->CopyTo(copy);
    SceneStream written;
    root->Serialize(written);
    SceneStream bytes(written.ToBytes());
    TreeNode read;
    read.Serialize(bytes);
    for (const TreeNode* other : {&copy, &read}) {
        EXPECT_FALSE(other->Visible());
        EXPECT_TRUE(other->Locked());
        EXPECT_TRUE(other->HiddenFromUI());
        EXPECT_EQ(other->Name(), QStringLiteral("r"));
    }
    EXPECT_EQ(root->Info(), QStringLiteral("Tree node r"));
}

}  // namespace
}  // namespace trovik
