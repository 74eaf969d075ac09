// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"

#include <vector>

class QWidget;

namespace trovik {

class Attribute;
class Stream;

/// What happened to an attribute of a node.
enum NodeEventType : int {
    /// Its value changed.
    NodeEventValueChanged = 0,
    /// It became the target of a connection.
    NodeEventTargetConnected = 1,
    /// It became the source of a connection.
    NodeEventSourceConnected = 2,
};

/// Base of everything that lives in a scene: it has a name, attributes, a version that counts its
/// changes, and it can be streamed. Touched on the host's main thread only.
class TROVIK_API Node {
public:
    Node();
    virtual ~Node();
    Node(const Node&) = delete;

    /// Called once by the factory after construction.
    virtual void Initialize();
    /// An attribute of this node raised an event.
    virtual void OnNodeEvent(const Attribute& attribute, NodeEventType type);
    /// Another node that this one listens to raised an event.
    virtual void OnEvent(const Node& source, NodeEventType type);
    virtual QString Name() const;
    virtual void SetName(const QString& name);
    /// Identifier that stays the same over saving and loading.
    virtual QString StringID() const;
    virtual void SetStringID(const QString& id);
    virtual QString DisplayName() const;
    virtual void SetDisplayName(const QString& name);
    virtual QString HelpID() const;
    virtual void SetHelpID(const QString& id);
    /// \return null where no window system is present.
    virtual QWidget* CreatePropertiesWindow(QWidget* parent);
    /// Reads or writes the node, by the direction of the stream.
    virtual void Serialize(Stream& stream);
    /// \return false when the node's content contradicts itself.
    virtual bool CheckValidity();
    /// Copies names and the values of equally named attributes of the same type, in silence.
    virtual void CopyTo(Node& target) const;
    /// \return a new node of the same class with the same content, owned by the caller.
    virtual Node* Duplicate() const;
    virtual const ClassDesc* RuntimeClass() const;

    static const ClassDesc* StaticClass();

    /// Grows with every ContentChanged.
    uint32_t Version() const { return version; }
    /// Says that the node's content changed: counts the version up and tells the listeners.
    void ContentChanged();
    /// Sets the attributes from the stored template of this class, if there is one.
    /// \param name  of the template; empty for the class's default. \param silent  false raises
    /// value events.
    void LoadTemplate(const QString& name, bool silent);

    /// Attributes in order of creation; owned by whoever declared them.
    const std::vector<Attribute*>& Attributes() const { return attributes; }
    /// \return null when no attribute bears the name.
    Attribute* AttributeByName(const QString& name) const;

    /// Nodes whose OnEvent hears of this node's ContentChanged.
    void AddListener(Node* listener);
    void RemoveListener(Node* listener);

private:
    friend class Attribute;
    std::vector<Attribute*> attributes;
    std::vector<Node*> listeners;
    std::vector<Node*> heard;
    QString name;
    QString stringId;
    QString displayName;
    QString helpId;
    uint32_t version = 0;
};

}  // namespace trovik
