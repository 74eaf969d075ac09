// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"

#include <vector>

class QWidget;

namespace trovik {

class Attribute;
class Stream;

/// Type of an attribute event.
enum NodeEventType : int {
    /// The attribute's value changed.
    NodeEventValueChanged = 0,
    /// The attribute became the target of a connection.
    NodeEventTargetConnected = 1,
    /// The attribute became the source of a connection.
    NodeEventSourceConnected = 2,
};

/// Base class of all objects in a scene. A node has a name, attributes and a version that counts
/// its changes. It can be written to a stream and read from one. Used only on the host's main
/// thread.
class TROVIK_API Node {
public:
    Node();
    virtual ~Node();
    Node(const Node&) = delete;

    /// Called once by the factory after construction.
    virtual void Initialize();
    /// Called when one of this node's attributes has sent an event.
    virtual void OnNodeEvent(const Attribute& attribute, NodeEventType type);
    /// Called when a node that this node listens to has changed.
    virtual void OnEvent(const Node& source, NodeEventType type);
    virtual QString Name() const;
    virtual void SetName(const QString& name);
    /// Identifier that stays the same when the node is saved and loaded.
    virtual QString StringID() const;
    virtual void SetStringID(const QString& id);
    virtual QString DisplayName() const;
    virtual void SetDisplayName(const QString& name);
    virtual QString HelpID() const;
    virtual void SetHelpID(const QString& id);
    /// \return null if there is no window system.
    virtual QWidget* CreatePropertiesWindow(QWidget* parent);
    /// Reads or writes the node, depending on the direction of the stream.
    virtual void Serialize(Stream& stream);
    /// \return false if the node's content is inconsistent.
    virtual bool CheckValidity();
    /// Copies the node's names, and the values of the attributes that have the same name and type
    /// in both nodes. Sends no events.
    virtual void CopyTo(Node& target) const;
    /// \return a new node of the same class with the same content, owned by the caller.
    virtual Node* Duplicate() const;
    virtual const ClassDesc* RuntimeClass() const;

    static const ClassDesc* StaticClass();

    /// Incremented by every ContentChanged.
    uint32_t Version() const { return version; }
    /// Reports that the content of the node has changed: increments the version and notifies the
    /// listeners.
    void ContentChanged();
    /// Sets the attributes from the stored template of this class, if there is one.
    /// \param name  name of the template; empty for the default of the class.
    /// \param silent  if false, value events are sent.
    void LoadTemplate(const QString& name, bool silent);

    /// Attributes in the order of their creation; the objects that declare them own them.
    const std::vector<Attribute*>& Attributes() const { return attributes; }
    /// \return null if no attribute has this name.
    Attribute* AttributeByName(const QString& name) const;

    /// Adds a listener; ContentChanged of this node calls the listener's OnEvent.
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
