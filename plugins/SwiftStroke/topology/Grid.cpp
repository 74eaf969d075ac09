// SPDX-License-Identifier: Apache-2.0
#include "topology/Grid.h"

namespace trovik {

namespace {

/// The cursor treats this value as a neighbour; only greater values mark open borders.
constexpr uint32_t lastNeighbour = 0x80000000u;

[[noreturn]] void ThrowWrongParameter(const char* function, int line) {
    throw(new Error(QString(), Error::InvalidUse, function, __FILE__, line))
        ->Format(QString::fromLatin1("wrong parameter"));
}

}  // namespace

Grid::Grid(Mesh* workingMesh, uint32_t patchFace, uint32_t patchMeshLevel, uint32_t viewRotation)
    : mesh(workingMesh), patch(patchFace), rotation(viewRotation) {
    auto* working = dynamic_cast<SubdivisionLevel*>(workingMesh);
    patchMesh = working->Geometry()->LevelByIndex(patchMeshLevel);
    level = static_cast<uint32_t>(working->Index()) - patchMeshLevel;
    size = 1u << level;
    cells = size * size;
}

uint32_t Grid::Face(uint32_t x, uint32_t y) const {
    uint32_t cell = 0;
    switch (rotation) {
        case 0:
            cell = size * y + x;
            break;
        case 1:
            cell = (x + 1) * size - y - 1;
            break;
        case 2:
            cell = (size - y) * size - x - 1;
            break;
        case 3:
            cell = (size - x - 1) * size + y;
            break;
        default:
            ThrowWrongParameter("Grid::Face", __LINE__);
    }
    return cells * patch + SubdivisionLevel::QuadIndexTable(level)[cell];
}

GridFace::GridFace(Mesh* workingMesh,
                   uint32_t patchFace,
                   uint32_t patchMeshLevel,
                   uint32_t column,
                   uint32_t row,
                   uint32_t viewRotation)
    : Grid(workingMesh, patchFace, patchMeshLevel, viewRotation) {
    switch (viewRotation) {
        case 0:
            x = column;
            y = row;
            break;
        case 1:
            x = row;
            y = size - column - 1;
            break;
        case 2:
            x = size - column - 1;
            y = size - row - 1;
            break;
        case 3:
            x = size - row - 1;
            y = column;
            break;
        default:
            break;
    }
}

uint32_t GridFace::Corner(uint32_t k) const {
    return mesh->faceVertexIndices[4 * Face() + ((rotation + k) & 3u)];
}

// Adjacent patches traverse their common edge in opposite directions. The rotation compensates for
// that, so the coordinate along the border never changes.
bool GridFace::Cross(uint32_t k) {
    const uint32_t old = patch;
    const uint32_t neighbour = patchMesh->QuadEdgeNeighbour(patch, (rotation + k) & 3u);
    if (neighbour <= lastNeighbour) {
        patch = neighbour >> 2;
        // A step across side k of the view enters the neighbour through the opposite side of the
        // view, k + 2.
        rotation = (neighbour - k - 2u) & 3u;
    }
    return patch != old;
}

void GridFace::Step(uint32_t direction) {
    switch (direction) {
        case 0:
            StepUp();
            break;
        case 1:
            StepRight();
            break;
        case 2:
            StepDown();
            break;
        case 3:
            StepLeft();
            break;
        default:
            ThrowWrongParameter("GridFace::Step", __LINE__);
    }
}

GridFace& GridFace::StepUp() {
    if (y != 0)
        --y;
    else if (Cross(0))
        y = size - 1;
    return *this;
}

GridFace& GridFace::StepRight() {
    if (x < size - 1)
        ++x;
    else if (Cross(1))
        x = 0;
    return *this;
}

GridFace& GridFace::StepDown() {
    if (y < size - 1)
        ++y;
    else if (Cross(2))
        y = 0;
    return *this;
}

GridFace& GridFace::StepLeft() {
    if (x != 0)
        --x;
    else if (Cross(3))
        x = size - 1;
    return *this;
}

}  // namespace trovik
