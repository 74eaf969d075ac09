// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file The final step of every mesh reader.
namespace trovik {

class JobControl;

/// Faces that were skipped because they use a vertex twice.
struct DroppedFaces {
    std::size_t count = 0;
    /// The index of the first such face, counted from 0 in file order.
    std::size_t first = 0;

    void Add(std::size_t face) {
        if (count++ == 0) {
            first = face;
        }
    }
};

/// Removes the faces that use a vertex twice, along with their attributes, adds a note that states
/// how many there were, and checks the mesh (CheckPolygonMesh).
/// \param dropped  faces that the reader has already skipped for this reason.
/// \throw HostError whose message begins with `path`; Cancelled.
/// Cost: linear in the corner count.
void FinishImport(PolygonMesh& mesh,
                  const std::string& path,
                  JobControl* job,
                  DroppedFaces dropped = {});

/// Merges equal UVs at the corners of each vertex into one index, numbers the UVs in the order in
/// which corners first use them, and removes unused UVs. UVs are compared bitwise. Corners of
/// different vertices keep different indices, so overlapping parts of a texture stay separate.
/// Cost: linear in the corner count.
/// \throw Cancelled.
TROVIK_API void WeldUvs(PolygonMesh& mesh, JobControl* job);

}  // namespace trovik
