// SPDX-License-Identifier: Apache-2.0
#include "host/TreeNode.h"

#include "host/Stream.h"

#include <algorithm>
#include <cassert>

namespace trovik {

TreeNode::TreeNode() = default;

TreeNode::~TreeNode() {
    if (parent != nullptr) std::erase(parent->children, this);
    // Deleted one at a time, because a child's destructor may access its siblings.
    while (!children.empty()) {
        TreeNode* child = children.front();
        children.erase(children.begin());
        child->parent = nullptr;
        delete child;
    }
}

void TreeNode::AddChild(TreeNode* child) {
    assert(child != nullptr);
    for ([[maybe_unused]] const TreeNode* above = this; above != nullptr; above = above->parent)
        assert(above != child && "a node cannot be its own descendant");
    if (child->parent != nullptr) std::erase(child->parent->children, child);
    child->parent = this;
    children.push_back(child);
    child->OnLinked();
}

void TreeNode::RemoveChild(TreeNode* child) {
    if (child->parent != this) return;
    std::erase(children, child);
    child->parent = nullptr;
    child->OnLinked();
}

TreeNode* TreeNode::FirstChild() const { return children.empty() ? nullptr : children.front(); }
TreeNode* TreeNode::Parent() const { return parent; }

TreeNode* TreeNode::NextSibling() const {
    if (parent == nullptr) return nullptr;
    const auto at = std::find(parent->children.begin(), parent->children.end(), this) + 1;
    return at == parent->children.end() ? nullptr : *at;
}

TreeNode* TreeNode::PrevSibling() const {
    if (parent == nullptr || parent->children.front() == this) return nullptr;
    return *(std::find(parent->children.begin(), parent->children.end(), this) - 1);
}

void TreeNode::MoveChild(TreeNode* child, TreeNode* after) {
    if (child->parent != this || child == after) return;
    if (after != nullptr && after->parent != this) return;
    std::erase(children, child);
    const auto at = after == nullptr ? children.begin()
                                     : std::find(children.begin(), children.end(), after) + 1;
    children.insert(at, child);
}

TreeNode* TreeNode::ChildByClass(const ClassDesc* classDesc, uint32_t index) {
    for (TreeNode* child : children) {
        if (!child->RuntimeClass()->IsDerivedFrom(classDesc)) continue;
        if (index-- == 0) return child;
    }
    return nullptr;
}

TreeNode* TreeNode::ChildByClass(const ClassDesc* classDesc, bool create) {
    if (TreeNode* child = ChildByClass(classDesc, uint32_t{0})) return child;
    if (!create) return nullptr;
    Node* made = classDesc->Create();
    auto* child = dynamic_cast<TreeNode*>(made);
    if (child == nullptr) {
        delete made;
        return nullptr;
    }
    AddChild(child);
    return child;
}

void TreeNode::DeleteChildByClass(const ClassDesc* classDesc) {
    TreeNode* child = ChildByClass(classDesc, uint32_t{0});
    if (child == nullptr) return;
    RemoveChild(child);
    delete child;
}

QString TreeNode::Info() const {
    return RuntimeClass()->DisplayName() + QStringLiteral(" ") + DisplayName();
}
bool TreeNode::Visible() const { return visible; }
void TreeNode::SetVisible(bool on) { visible = on; }
bool TreeNode::Locked() const { return locked; }
void TreeNode::SetLocked(bool on) { locked = on; }
bool TreeNode::HiddenFromUI() const { return hiddenFromUI; }
void TreeNode::SetHiddenFromUI(bool on) { hiddenFromUI = on; }
void TreeNode::OnLinked() {}
void TreeNode::SetStringID(const QString& id) { Node::SetStringID(id); }

void TreeNode::Serialize(Stream& stream) {
    Node::Serialize(stream);
    for (bool* flag : {&visible, &locked, &hiddenFromUI}) {
        uint8_t byte = *flag ? 1 : 0;
        stream.Transfer(byte);
        *flag = byte != 0;
    }
}

bool TreeNode::CheckValidity() {
    return std::all_of(children.begin(), children.end(), [this](TreeNode* child) {
        return child->parent == this && child->CheckValidity();
    });
}

void TreeNode::CopyTo(Node& target) const {
    Node::CopyTo(target);
    if (auto* tree = dynamic_cast<TreeNode*>(&target)) {
        tree->visible = visible;
        tree->locked = locked;
        tree->hiddenFromUI = hiddenFromUI;
    }
}

const ClassDesc* TreeNode::StaticClass() {
    static const ClassDesc desc(Node::StaticClass(),
                                Node::StaticClass(),
                                QStringLiteral("TreeNode"),
                                QStringLiteral("Tree node"),
                                nullptr,
                                1,
                                0);
    return &desc;
}

const ClassDesc* TreeNode::RuntimeClass() const { return StaticClass(); }

}  // namespace trovik
