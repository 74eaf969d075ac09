// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/files/TemporaryFolder.h"

#include <array>
#include <cmath>
#include <map>
#include <vector>

namespace trovik::test {

/// A cube of n x n quads per side, projected onto the unit sphere; exactly symmetric about the
/// coordinate planes.
inline PolygonMesh Ball(int n) {
    PolygonMesh mesh;
    std::map<std::array<int, 3>, uint32_t> numbers;
    const auto vertex = [&](int x, int y, int z) {
        const auto [place, isNew] =
            numbers.try_emplace({x, y, z}, static_cast<uint32_t>(mesh.positions.size()));
        if (isNew) {
            const float p[3] = {
                static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
            const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
            mesh.positions.push_back({p[0] / length, p[1] / length, p[2] / length});
        }
        return place->second;
    };
    const auto side = [&](auto at) {
        for (int i = -n; i < n; i += 2) {
            for (int j = -n; j < n; j += 2) {
                const std::array<int, 2> corners[4] = {
                    {i, j}, {i + 2, j}, {i + 2, j + 2}, {i, j + 2}};
                for (const auto& [a, b] : corners) mesh.faceVertices.push_back(at(a, b));
                mesh.faceSizes.push_back(4);
            }
        }
    };
    side([&](int a, int b) { return vertex(n, a, b); });
    side([&](int a, int b) { return vertex(-n, b, a); });
    side([&](int a, int b) { return vertex(b, n, a); });
    side([&](int a, int b) { return vertex(a, -n, b); });
    side([&](int a, int b) { return vertex(a, b, n); });
    side([&](int a, int b) { return vertex(b, a, -n); });
    return mesh;
}

/// A document on a ball.
class BallDocument {
public:
    explicit BallDocument(int n = 24) {
        const std::string path = folder.Path("ball.ply");
        WriteMeshFile(path, Ball(n));
        document = std::make_unique<Document>(path);
    }
    Document& operator*() { return *document; }
    Document* operator->() { return document.get(); }
    LevelMesh& Mesh() { return *document->Geometry().Bound(); }

    void Tool(const char* name, int direction = 0) {
        document->SelectTool(name);
        document->Brush().directionAttribute.SetValue(direction, true);
    }
    /// Applies one stroke with a dab at the surface point nearest to each position.
    void Stroke(const std::vector<Vector>& places, float radius, float strength = 0.03f) {
        document->Loop().Begin(BrushOperation::ModifierNone);
        for (const Vector& place : places) {
            StrokeDab dab = DabAt(document->Geometry(), document->Tree().Nearest(place).value());
            dab.size = radius;
            dab.strength = strength;
            document->Loop().Dab(dab);
        }
        document->Loop().End();
    }
    /// Sets the amount of each vertex of the level to amount(vertex).
    template <typename Amount>
    void Freeze(Amount amount) {
        std::vector<uint8_t> amounts;
        for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) amounts.push_back(amount(v));
        document->Freeze(amounts, FreezeMode::Replace);
    }
    std::vector<Vector> Positions() { return PositionsOf(Mesh()); }
    /// For each vertex, its twin across the plane, determined from the positions at the first call.
    const std::vector<uint32_t>& Across(int axis) {
        std::vector<uint32_t>& across = twins[axis];
        if (!across.empty()) return across;
        std::map<std::array<float, 3>, uint32_t> byPlace;
        const std::vector<Vector> positions = Positions();
        for (uint32_t v = 0; v < positions.size(); ++v)
            byPlace[{positions[v].x, positions[v].y, positions[v].z}] = v;
        for (const Vector& p : positions) {
            std::array<float, 3> mirrored = {p.x, p.y, p.z};
            mirrored[static_cast<std::size_t>(axis)] *= -1.0f;
            across.push_back(byPlace.at(mirrored));
        }
        return across;
    }
    /// The largest distance of a vertex from the mirror image of its twin.
    float Asymmetry(int axis) {
        const std::vector<uint32_t>& across = Across(axis);
        float most = 0.0f;
        for (uint32_t v = 0; v < across.size(); ++v) {
            const Vector a = Mesh().Position(v);
            const Vector b = Mesh().Position(across[v]);
            const float sign[3] = {
                axis == 0 ? -1.0f : 1.0f, axis == 1 ? -1.0f : 1.0f, axis == 2 ? -1.0f : 1.0f};
            most = std::max({most,
                             std::fabs(a.x - sign[0] * b.x),
                             std::fabs(a.y - sign[1] * b.y),
                             std::fabs(a.z - sign[2] * b.z)});
        }
        return most;
    }

private:
    TemporaryFolder folder;
    std::unique_ptr<Document> document;
    std::vector<uint32_t> twins[3];
};

}  // namespace trovik::test
