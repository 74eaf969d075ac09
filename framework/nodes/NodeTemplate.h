// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// Templates: attribute values, by class and name, that Node::LoadTemplate applies to new nodes.
/// They exist until the process ends.
///
/// Stores the attribute values of `node` as the template `name` of its class, replacing an earlier
/// one. The empty name is the class's default template, which is applied to new brushes.
TROVIK_API void StoreTemplate(const Node& node, const QString& name);
/// \return whether the template existed.
TROVIK_API bool RemoveTemplate(const ClassDesc* classDesc, const QString& name);

}  // namespace trovik
