// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// Templates: attribute values, by class and name, that Node::LoadTemplate gives to new nodes. They
/// last as long as the process.
///
/// Takes down the attribute values of `node` as the template `name` of its class, in place of an
/// earlier one. The empty name is the class's default, which new brushes start with.
TROVIK_API void StoreTemplate(const Node& node, const QString& name);
/// \return whether there was such a template.
TROVIK_API bool ForgetTemplate(const ClassDesc* classDesc, const QString& name);

}  // namespace trovik
