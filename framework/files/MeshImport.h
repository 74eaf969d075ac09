// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file
/// The last step of every mesh reader.
namespace trovik {

class JobControl;

/// Faces left out because they name a vertex twice.
struct DroppedFaces {
    std::size_t count = 0;
    /// The first of them, counted from 0 in the order of the file.
    std::size_t first = 0;

    void Add(std::size_t face) {
        if (count++ == 0) {
            first = face;
        }
    }
};

/// Removes faces that name a vertex twice, with their entries in the attributes, adds a note that
/// counts them, and checks the mesh (CheckPolygonMesh).
/// \param dropped  faces that the reader left out itself for this reason.
/// \throw HostError beginning with `path`; Cancelled.
/// Cost: linear in corners.
void FinishImport(PolygonMesh& mesh,
                  const std::string& path,
                  JobControl* job,
                  DroppedFaces dropped = {});

/// Gives equal UVs of the corners of one vertex the same number, in the order in which corners name
/// them, and removes UVs that no corner names. UVs are equal if their bits are. Corners of
/// different vertices keep different numbers: overlapping parts of a texture stay apart. Cost:
/// linear in corners. \throw Cancelled.
TROVIK_API void WeldUvs(PolygonMesh& mesh, JobControl* job);

}  // namespace trovik
