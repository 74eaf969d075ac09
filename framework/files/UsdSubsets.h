// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/OutputFile.h"
#include "framework/mesh/MeshSource.h"

#include <string>

namespace trovik {

class JobControl;

/// Writes the groups and materials of a mesh as children of its prim: a `GeomSubset` of faces for
/// each group (family "group") and each material (family "materialBind"), and for each material a
/// `Material` prim with the same name, bound to the subset. Names that are not valid in USD are
/// stored as `displayName`.
/// \param prim  name of the mesh prim, which is a root prim.
void WriteUsdSubsets(OutputFile& file,
                     const MeshSource& source,
                     const std::string& prim,
                     JobControl* job);

}  // namespace trovik
