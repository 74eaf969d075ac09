// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/document/DocumentStroke.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/meshes/MeshZoo.h"

#include <string>

namespace trovik::test {

/// A unit sphere of 384 quads, seen from +z.
inline std::unique_ptr<Document> SphereDocument() {
    auto document = std::make_unique<Document>("sphere", SphereQuads(3));
    document->SelectTool("Sculpt");
    document->Settings().radius = 0.4f;
    document->View().eye = {0.0f, 0.0f, 5.0f};
    document->UpdateCamera();
    return document;
}

/// Applies a dab of the open stroke at the surface nearest to a point.
inline void Dab(Document& document, const Vector& point) {
    StrokeDab dab = DabAt(document.Geometry(), document.Tree().Nearest(point).value());
    dab.size = document.Settings().radius;
    dab.strength = 0.05f;
    document.Loop().Dab(dab);
}

inline void Stroke(Document& document, const Vector& point) {
    BeginStroke(document, BrushOperation::ModifierNone, std::nullopt);
    Dab(document, point);
    document.Loop().End();
}

/// Positions, normals and mask of the current level, and its number.
inline std::string BitsOf(Document& document) {
    const LevelMesh& level = *document.Geometry().Bound();
    std::string bits(reinterpret_cast<const char*>(level.vertexNormals.array),
                     level.VertexCount() * sizeof(PackedNormal));
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector position = level.Position(v);
        bits.append(reinterpret_cast<const char*>(&position), sizeof position);
        bits.push_back(static_cast<char>(level.Freeze(v)));
    }
    return bits + std::to_string(document.Geometry().BoundIndex());
}

}  // namespace trovik::test
