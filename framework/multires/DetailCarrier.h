// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/multires/LevelSwitch.h"

#include <vector>

namespace trovik {

/// Propagates changes between a level and the level above it, based on the method in Zorin,
/// Schröder, Sweldens: "Interactive Multiresolution Mesh Editing" (1997).
///
/// A fine level is the refinement of the coarse level plus a detail vector per vertex, expressed in
/// a frame that rotates with the refined surface (see FrameRotation). The positions of both levels
/// are stored. The detail is computed from these positions, so it takes no memory and an unchanged
/// level stays bit-identical. The "seen" state of a level is its state at the last synchronisation
/// with an adjacent level. The detail of a fine vertex is its offset from the refinement of the
/// coarse level's seen state.
///
/// Upwards: a fine vertex moves if its refined positions in the current state and in the seen state
/// differ. Its new position is the current refined position plus its detail, which is rotated with
/// the surface. A vertex without detail is exactly at its refined position. The offsets that layers
/// of the fine level store for the vertex rotate with its detail (RotatedLayers).
///
/// Downwards: a coarse vertex moves by a weighted mean of the displacements of the fine vertices at
/// and around it. The weights are 1/4 for the same vertex, 1/2 for the mean of its edge points, and
/// 1/4 for the mean of its face points. On a border, the weights are 1/2 for the same vertex and
/// 1/4 for each border edge point; a vertex with one face moves by exactly the same displacement as
/// its fine vertex. The weights are non-negative and sum to one, so no coarse vertex moves farther
/// than the fine vertices did, and a translation of the fine level translates the coarse level. The
/// fine level stays bit-identical; changes that the coarse level cannot represent remain in the
/// detail.
///
/// Cost in either direction: linear in the number of vertices that were written since the last
/// synchronisation, plus the cost of recomputing the surroundings of the vertices that moved. Large
/// changes are computed in runs of faces on several threads (RunInParallel) and stored by the
/// calling thread; results do not depend on the number of threads.
class DetailCarrier {
public:
    /// \param jobControl  checked by Up and Down, which throw Cancelled; `carried` then lists the
    /// changes made so far.
    DetailCarrier(LevelMesh& coarseLevel,
                  LevelMesh& fineLevel,
                  CarryCounts& work,
                  JobControl* jobControl = nullptr)
        : coarse(coarseLevel), fine(fineLevel), counts(work), job(jobControl) {}

    /// Propagates changes of the coarse level to the fine level.
    /// \param seen  the positions of the coarse level at the last synchronisation, sorted.
    /// \param layers  layers of the fine level; null if it has none.
    /// \param carried  receives the changes of the fine surface.
    void Up(const OlderValues<Vector>& seen, RotatedLayers* layers, CarriedLevel& carried);
    /// Propagates changes of the fine level to the coarse level.
    /// \param seen  the positions of the fine level at the last synchronisation, sorted.
    /// \param carried  receives the changes of the coarse level.
    void Down(const OlderValues<Vector>& seen, CarriedLevel& carried);

    /// Updates the normals of these vertices and of the other corners of their faces, and records
    /// the old normals.
    /// \throw Cancelled; `carried` then contains all old normals.
    static void RefreshNormals(LevelMesh& level, CarriedLevel& carried, JobControl* job = nullptr);

private:
    /// Moves the fine vertices that these coarse faces use.
    /// \param faces  in ascending order.
    void MoveFineVertices(const std::vector<uint32_t>& faces,
                          const OlderValues<Vector>& seen,
                          RotatedLayers* layers,
                          CarriedLevel& carried);
    void MoveVertex(LevelMesh& level, uint32_t vertex, const Vector& to, CarriedLevel& carried);

    LevelMesh& coarse;
    LevelMesh& fine;
    CarryCounts& counts;
    JobControl* job;
};

}  // namespace trovik
