// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

namespace trovik {

class Node;

/// Describes one class of scene nodes. The constructor adds the descriptor to the host's registry.
/// A descriptor should exist as long as its library is loaded.
class TROVIK_API ClassDesc {
public:
    /// \param parent, displayParent  descriptors of the base class: `parent` is used for casts,
    /// `displayParent` for display in lists.
    /// \param factory  creates one node (count below 2) or an array of `count` nodes; returns the
    /// first.
    /// \param flags  0: an ordinary class; 1: hidden from lists of creatable classes.
    /// \param version  class version, which is written to scene files.
    ClassDesc(const ClassDesc* parent,
              const ClassDesc* displayParent,
              const QString& name,
              const QString& displayName,
              Node* (*factory)(unsigned),
              int flags,
              int version);
    ~ClassDesc();
    ClassDesc(const ClassDesc&) = delete;
    ClassDesc& operator=(const ClassDesc&) = delete;

    const ClassDesc* Parent() const { return parent; }
    const ClassDesc* DisplayParent() const { return displayParent; }
    const QString& Name() const { return name; }
    const QString& DisplayName() const { return displayName; }
    int Flags() const { return flags; }
    int Version() const { return version; }
    /// \return the new node, owned by the caller; null for an abstract class.
    Node* Create(unsigned count = 1) const { return factory == nullptr ? nullptr : factory(count); }
    /// True for `base` itself and all classes derived from it.
    bool IsDerivedFrom(const ClassDesc* base) const;

    /// The registry, in order of construction.
    /// \return null for an unknown name.
    static const ClassDesc* ByName(const QString& name);
    static unsigned Count();
    static const ClassDesc* At(unsigned index);

private:
    const ClassDesc* parent;
    const ClassDesc* displayParent;
    QString name;
    QString displayName;
    Node* (*factory)(unsigned);
    int flags;
    int version;
};

}  // namespace trovik
