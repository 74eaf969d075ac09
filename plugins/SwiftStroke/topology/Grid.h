// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// A view of one patch in one of four rotations. With rotation r, side j of the view is side (r +
/// j) & 3 of the patch. The top edge of the view (y = 0) is therefore side r of the patch, and
/// corner k of the view is corner (r + k) & 3 of a quad. Coordinates (x, y) are cells, 0 to size -
/// 1.
///
/// A plain value type that borrows the meshes.
class Grid {
public:
    /// \param patchMeshLevel  number of the level whose faces are the patches.
    Grid(Mesh* mesh, uint32_t patch, uint32_t patchMeshLevel, uint32_t rotation);

    /// Returns the face of the working level at (x, y). Errors: "wrong parameter" for a rotation
    /// above 3.
    uint32_t Face(uint32_t x, uint32_t y) const;

    Mesh* mesh;
    Mesh* patchMesh;
    uint32_t patch;
    uint32_t rotation;
    /// Number of subdivisions inside one patch.
    uint32_t level;
    /// Number of cells along a side.
    uint32_t size;
    /// Number of faces of the working level in a patch.
    uint32_t cells;
};

/// A cursor that moves cell by cell over a patch and across patch borders. A straight path stays
/// straight on the surface. At an open border, a step has no effect.
class GridFace : public Grid {
public:
    /// \param column, row  the cell, in the patch's frame.
    GridFace(Mesh* mesh,
             uint32_t patch,
             uint32_t patchMeshLevel,
             uint32_t column,
             uint32_t row,
             uint32_t rotation);

    uint32_t Face() const { return Grid::Face(x, y); }
    /// Returns the vertex at corner k of the cell, relative to the view.
    uint32_t Corner(uint32_t k) const;

    /// Moves by one cell. 0: y - 1, 1: x + 1, 2: y + 1, 3: x - 1. Errors: "wrong parameter" for any
    /// other direction.
    void Step(uint32_t direction);
    GridFace& StepUp();
    GridFace& StepRight();
    GridFace& StepDown();
    GridFace& StepLeft();

    uint32_t x = 0;
    uint32_t y = 0;

private:
    /// Crosses side k of the view.
    /// \return whether a different patch was entered. Crossing a side at which a patch is joined to
    /// itself rotates the view but preserves the coordinates.
    bool Cross(uint32_t k);
};

}  // namespace trovik
