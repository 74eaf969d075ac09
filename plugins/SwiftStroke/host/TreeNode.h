// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// A node with a parent and children. A parent owns its children and deletes them with itself.
class TROVIK_API TreeNode : public virtual Node {
public:
    TreeNode();
    ~TreeNode() override;

    /// Appends `child`, taking it from its former parent, and calls its OnLinked.
    virtual void AddChild(TreeNode* child);
    /// Gives the child back to the caller; the child then has no parent, and hears OnLinked.
    virtual void RemoveChild(TreeNode* child);
    virtual TreeNode* FirstChild() const;
    virtual TreeNode* Parent() const;
    virtual TreeNode* NextSibling() const;
    virtual TreeNode* PrevSibling() const;
    /// Moves a child so that it stands behind `after`; null makes it the first.
    virtual void MoveChild(TreeNode* child, TreeNode* after);
    /// \return the child number `index` among those of the class or below it, or null.
    virtual TreeNode* ChildByClass(const ClassDesc* classDesc, uint32_t index);
    /// \return the first child of the class; with `create` a missing one is made and linked.
    virtual TreeNode* ChildByClass(const ClassDesc* classDesc, bool create);
    virtual void DeleteChildByClass(const ClassDesc* classDesc);
    /// One line for lists of nodes.
    virtual QString Info() const;
    virtual bool Visible() const;
    virtual void SetVisible(bool visible);
    virtual bool Locked() const;
    virtual void SetLocked(bool locked);
    virtual bool HiddenFromUI() const;
    virtual void SetHiddenFromUI(bool hidden);
    /// The node's parent changed.
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
