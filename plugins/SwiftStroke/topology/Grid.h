// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// A view of one patch in one of four rotations. With rotation r the view's side j is the patch's
/// side (r + j) & 3, so that the view's top edge (y = 0) is the patch's side r, and corner k of the
/// view is corner (r + k) & 3 of a quad. Coordinates (x, y) are cells, 0 to size - 1.
///
/// A plain value; borrows the meshes.
class Grid {
public:
    /// \param patchMeshLevel  number of the level whose faces are the patches.
    Grid(Mesh* mesh, uint32_t patch, uint32_t patchMeshLevel, uint32_t rotation);

    /// Face of the working level at (x, y). Errors: "wrong parameter" for a rotation above 3.
    uint32_t Face(uint32_t x, uint32_t y) const;

    Mesh* mesh;
    Mesh* patchMesh;
    uint32_t patch;
    uint32_t rotation;
    /// Subdivisions inside one patch.
    uint32_t level;
    /// Cells along a side.
    uint32_t size;
    /// Faces of the working level in a patch.
    uint32_t cells;
};

/// A cursor on a patch that walks cell by cell and crosses patch borders; a straight walk stays
/// straight on the surface. At an open border a step does nothing.
class GridFace : public Grid {
public:
    /// \param column, row  cell in the patch's own frame.
    GridFace(Mesh* mesh,
             uint32_t patch,
             uint32_t patchMeshLevel,
             uint32_t column,
             uint32_t row,
             uint32_t rotation);

    uint32_t Face() const { return Grid::Face(x, y); }
    /// Vertex at corner k of the cell, as the view sees it.
    uint32_t Corner(uint32_t k) const;

    /// 0: y - 1, 1: x + 1, 2: y + 1, 3: x - 1. Errors: "wrong parameter" for any other direction.
    void Step(uint32_t direction);
    GridFace& StepUp();
    GridFace& StepRight();
    GridFace& StepDown();
    GridFace& StepLeft();

    uint32_t x = 0;
    uint32_t y = 0;

private:
    /// Crosses the view's side k. \return whether another patch was entered: a patch that is glued
    /// to itself turns the view but keeps the coordinates.
    bool Cross(uint32_t k);
};

}  // namespace trovik
