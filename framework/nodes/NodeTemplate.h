// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// Templates: attribute values, by class and name, that Node::LoadTemplate applies to new nodes.
/// They exist until the process ends.
///
/// Stores the attribute values of `node` as the template `name` of its class and replaces an
/// earlier one. The empty name is the default of the class, which new brushes start with.
TROVIK_API void StoreTemplate(const Node& node, const QString& name);
/// \return whether the template existed.
TROVIK_API bool RemoveTemplate(const ClassDesc* classDesc, const QString& name);

}  // namespace trovik
