// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/errors/HostError.h"
#include "framework/filters/SurfaceFilter.h"
#include "framework/filters/VertexTransform.h"
#include "framework/mesh/LevelPositions.h"
#include "tests/edits/EditStroke.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <array>

namespace trovik::test {

/// Replaces each position p of a mesh by move(p).
template <typename Move>
void MoveVertices(PolygonMesh& mesh, Move move) {
    for (std::array<float, 3>& position : mesh.positions) {
        const Vector moved = move(Vector(position[0], position[1], position[2]));
        position = {moved.x, moved.y, moved.z};
    }
}

/// A document whose current level is edited as a whole.
class FilteredDocument {
public:
    explicit FilteredDocument(PolygonMesh mesh) : document("mesh", std::move(mesh)) {}
    Document* operator->() { return &document; }
    LevelMesh& Mesh() { return *document.Geometry().Bound(); }
    std::vector<Vector> Positions() { return PositionsOf(Mesh()); }
    std::vector<VertexState> State() { return StateOf(Mesh()); }

    uint32_t Filter(const SurfaceFilter& filter) {
        return document.EditPositions(FilterSurface(filter));
    }
    uint32_t Transform(const VertexTransform& transform) {
        return document.EditPositions(TransformVertices(transform));
    }
    /// Sets the mask amount of each vertex to amount(position), 0 to 127.
    template <typename Amount>
    void Mask(Amount amount) {
        std::vector<uint8_t> amounts;
        for (const Vector& p : Positions()) amounts.push_back(static_cast<uint8_t>(amount(p)));
        document.Freeze(amounts, FreezeMode::Replace);
    }

private:
    Document document;
};

}  // namespace trovik::test
