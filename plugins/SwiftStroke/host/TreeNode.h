// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// A node with a parent and children. A parent owns its children and deletes them when it is
/// destroyed.
class TROVIK_API TreeNode : public virtual Node {
public:
    TreeNode();
    ~TreeNode() override;

    /// Removes `child` from its former parent, appends it to this node, and calls its OnLinked.
    virtual void AddChild(TreeNode* child);
    /// Removes the child and calls its OnLinked. The child then has no parent and is owned by the
    /// caller.
    virtual void RemoveChild(TreeNode* child);
    virtual TreeNode* FirstChild() const;
    virtual TreeNode* Parent() const;
    virtual TreeNode* NextSibling() const;
    virtual TreeNode* PrevSibling() const;
    /// Moves a child to the position after the child `after`; null moves it to the front.
    virtual void MoveChild(TreeNode* child, TreeNode* after);
    /// \return the child at this index, counting only children of the class or a derived class;
    /// null if there is no such child.
    virtual TreeNode* ChildByClass(const ClassDesc* classDesc, uint32_t index);
    /// \return the first child of the class. If there is none and `create` is set, one is created
    /// and added.
    virtual TreeNode* ChildByClass(const ClassDesc* classDesc, bool create);
    virtual void DeleteChildByClass(const ClassDesc* classDesc);
    /// A one-line description for lists of nodes.
    virtual QString Info() const;
    virtual bool Visible() const;
    virtual void SetVisible(bool visible);
    virtual bool Locked() const;
    virtual void SetLocked(bool locked);
    virtual bool HiddenFromUI() const;
    virtual void SetHiddenFromUI(bool hidden);
    /// Called when the node's parent has changed.
    virtual void OnLinked();

    void SetStringID(const QString& id) override;
    void Serialize(Stream& stream) override;
    bool CheckValidity() override;
    void CopyTo(Node& target) const override;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();

private:
    TreeNode* parent = nullptr;
    std::vector<TreeNode*> children;
    bool visible = true;
    bool locked = false;
    bool hiddenFromUI = false;
};

}  // namespace trovik
