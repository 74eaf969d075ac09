// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/multires/LevelSwitch.h"

#include <vector>

namespace trovik {

/// Carries changes between a level and the one above it (after Zorin, Schröder and Sweldens,
/// "Interactive multiresolution mesh editing", 1997).
///
/// A fine level is the refinement of the coarse one plus a detail for each vertex, told in a frame
/// that turns with the refined surface (SurfaceTurn). What is stored are the positions of both
/// levels; the detail follows from them, so that it takes no memory and an untouched level keeps
/// its bits. A level and the one above agree about a state of the coarse level, "as it was seen";
/// the fine vertex's detail is its distance from the refinement of that state.
///
/// Upwards, where refinements of the seen and the present state differ, a fine vertex goes to its
/// refined place plus its detail turned as the surface turned there. A vertex without detail lies
/// exactly where a subdivision would put it. What the fine level's layers hold of a vertex turns
/// with its detail (TurnedLayers).
///
/// Downwards, a coarse vertex moves by a weighted mean of the moves of the fine vertices in and
/// around its place: 1/4 its own vertex, 1/2 the mean of its edge points, 1/4 the mean of its face
/// points; on a border 1/2 its own and 1/4 each border edge point; a vertex of one face moves as
/// its own. The weights are none below zero and sum to one, so no coarse vertex moves farther than
/// the fine ones did, and what moves as a whole is moved as a whole. The fine level keeps its bits;
/// what the coarse level cannot show stays in the detail.
///
/// Cost of both: the vertices that were written since the level was seen, and recomputing what lies
/// around those that lie elsewhere now.
class DetailCarrier {
public:
    /// \param jobControl  of Up and Down, which throw Cancelled; `carried` then lists what they
    /// changed.
    DetailCarrier(LevelMesh& coarseLevel,
                  LevelMesh& fineLevel,
                  CarryCounts& work,
                  JobControl* jobControl = nullptr)
        : coarse(coarseLevel), fine(fineLevel), counts(work), job(jobControl) {}

    /// \param seen  positions of the coarse level as the fine one knows them, sorted.
    /// \param layers  those of the fine level; null where it has none.
    /// \param carried  receives what happened to the fine level's surface.
    void Up(const OlderValues<Vector>& seen, TurnedLayers* layers, CarriedLevel& carried);
    /// \param seen  positions of the fine level as the coarse one knows them, sorted.
    /// \param carried  receives what happened to the coarse level.
    void Down(const OlderValues<Vector>& seen, CarriedLevel& carried);

    /// Brings the normals of these vertices and of their faces' other corners up to date, and
    /// records what they were. \throw Cancelled; `carried` then has them all.
    static void RefreshNormals(LevelMesh& level, CarriedLevel& carried, JobControl* job = nullptr);

private:
    /// Moves those fine vertices whose lowest coarse face lies from firstOwner to lastOwner; all
    /// faces around these must be among `faces`, which are sorted.
    void CarryFaces(const std::vector<uint32_t>& faces,
                    uint32_t firstOwner,
                    uint32_t lastOwner,
                    const OlderValues<Vector>& seen,
                    TurnedLayers* layers,
                    JobPhase& phase,
                    CarriedLevel& carried);
    void MoveVertex(LevelMesh& level, uint32_t vertex, const Vector& to, CarriedLevel& carried);

    LevelMesh& coarse;
    LevelMesh& fine;
    CarryCounts& counts;
    JobControl* job;
};

}  // namespace trovik
