// SPDX-License-Identifier: Apache-2.0
#include "host/Node.h"

#include "framework/nodes/AttributeAccess.h"

#include <algorithm>

namespace trovik {

Node::Node() = default;

Node::~Node() {
    for (Node* listener : listeners) std::erase(listener->heard, this);
    for (Node* source : heard) std::erase(source->listeners, this);
}

void Node::Initialize() {}
void Node::OnNodeEvent(const Attribute&, NodeEventType) {}
void Node::OnEvent(const Node&, NodeEventType) {}
QString Node::Name() const { return name; }
void Node::SetName(const QString& newName) { name = newName; }
QString Node::StringID() const { return stringId; }
void Node::SetStringID(const QString& id) { stringId = id; }
QString Node::DisplayName() const { return displayName.isEmpty() ? Name() : displayName; }
void Node::SetDisplayName(const QString& newName) { displayName = newName; }
QString Node::HelpID() const { return helpId; }
void Node::SetHelpID(const QString& id) { helpId = id; }
QWidget* Node::CreatePropertiesWindow(QWidget*) { return nullptr; }

void Node::Serialize(Stream& stream) {
    stream.Transfer(name);
    stream.Transfer(stringId);
    stream.Transfer(displayName);
}

bool Node::CheckValidity() { return true; }

void Node::CopyTo(Node& target) const {
    target.name = name;
    target.displayName = displayName;
    target.helpId = helpId;
    for (const Attribute* attribute : attributes) {
        Attribute* other = target.AttributeByName(attribute->Name());
        if (other != nullptr) CopyAttributeValue(*attribute, *other, true);
    }
}

Node* Node::Duplicate() const {
    Node* copy = RuntimeClass()->Create();
    if (copy != nullptr) CopyTo(*copy);
    return copy;
}

const ClassDesc* Node::StaticClass() {
    static const ClassDesc desc(
        nullptr, nullptr, QStringLiteral("Node"), QStringLiteral("Node"), nullptr, 1, 0);
    return &desc;
}

const ClassDesc* Node::RuntimeClass() const { return StaticClass(); }

void Node::ContentChanged() {
    ++version;
    // A listener may be removed or destroyed while another one is being notified.
    const std::vector<Node*> told = listeners;
    for (Node* listener : told) {
        if (std::find(listeners.begin(), listeners.end(), listener) != listeners.end())
            listener->OnEvent(*this, NodeEventValueChanged);
    }
}

Attribute* Node::AttributeByName(const QString& wanted) const {
    for (Attribute* attribute : attributes)
        if (attribute->Name() == wanted) return attribute;
    return nullptr;
}

void Node::AddListener(Node* listener) {
    if (std::find(listeners.begin(), listeners.end(), listener) != listeners.end()) return;
    listeners.push_back(listener);
    listener->heard.push_back(this);
}

void Node::RemoveListener(Node* listener) {
    std::erase(listeners, listener);
    std::erase(listener->heard, this);
}

}  // namespace trovik
