// SPDX-License-Identifier: Apache-2.0
#include "framework/levels/LevelGeometry.h"

#include "framework/edits/LayerStack.h"
#include "framework/errors/HostError.h"
#include "framework/levels/BaseLevel.h"
#include "framework/levels/LevelRefiner.h"
#include "framework/levels/SameBits.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr uint64_t mostElements = 0xfffffffeu;

}  // namespace

LevelGeometry::LevelGeometry(const PolygonMesh& polygons) : layers(std::make_unique<LayerStack>()) {
    CheckPolygonMesh(polygons, polygons.name.empty() ? "mesh" : polygons.name);
    PolygonMesh uniform = ToUniformFaces(polygons);
    attributes = std::move(uniform.attributes);
    auto base = std::unique_ptr<LevelMesh>(new LevelMesh(this, 0));
    const auto faces = static_cast<uint32_t>(uniform.faceSizes.size());
    base->AllocateFaces(faces, uniform.faceSizes[0] == 4 ? 1 : 0);
    std::copy(
        uniform.faceVertices.begin(), uniform.faceVertices.end(), base->faceVertexIndices.array);
    base->AllocateVertices(static_cast<uint32_t>(uniform.positions.size()));
    for (uint32_t v = 0; v < base->vertexCount; ++v) {
        const auto& p = uniform.positions[v];
        base->SetPosition(v, {p[0], p[1], p[2]});
    }
    const uint32_t corners = base->CornersPerFace();
    FindNeighbours(base->faceVertexIndices, faces, corners, base->baseNeighbours);
    base->baseVertexFace.SetFill(base->vertexCount, false);
    std::fill_n(base->baseVertexFace.array, base->vertexCount, openBorder);
    for (uint32_t slot = faces * corners; slot-- > 0;)
        base->baseVertexFace.array[base->faceVertexIndices.array[slot]] = slot / corners;
    // Walks over the vertices of level 0 belong to strokes, which must not allocate by mesh size.
    base->vertexWalkStamps.SetFill(base->vertexCount, false);
    std::fill_n(base->vertexWalkStamps.array, base->vertexCount, 0u);
    base->ComputeNormals();
    base->SetName(QString::fromStdString(polygons.name));
    levels.push_back(std::move(base));
    seenPositions.emplace_back();
}

LevelGeometry::~LevelGeometry() = default;

SubdivisionLevel* LevelGeometry::LowestLevel() const { return levels.front().get(); }
SubdivisionLevel* LevelGeometry::HighestLevel() const { return levels.back().get(); }
SubdivisionLevel* LevelGeometry::LevelByIndex(uint32_t index) const {
    return index < levels.size() ? levels[index].get() : nullptr;
}
trovik::Transformation* LevelGeometry::Transformation() const {
    return const_cast<Placement*>(&placement);
}

uint64_t LevelGeometry::CountNextLevelVertices() const {
    return LevelRefiner(*levels.back()).CountFineVertices();
}

bool LevelGeometry::FindMirror() {
    mirror = TopologicalMirror::Find(*levels.front());
    return mirror != nullptr;
}

LevelMesh& LevelGeometry::AddLevel() {
    LevelMesh& coarse = *levels.back();
    LevelRefiner refiner(coarse);
    const uint64_t faces = static_cast<uint64_t>(coarse.faceCount) * coarse.CornersPerFace();
    const uint64_t vertices = refiner.CountFineVertices();
    // Four indices a face must be countable too.
    if (vertices > mostElements || faces * 4 > mostElements) {
        throw HostError("subdividing to level " + std::to_string(levels.size()) + " would give " +
                        std::to_string(faces) + " faces; a level holds at most " +
                        std::to_string(mostElements / 4));
    }
    auto fine = std::unique_ptr<LevelMesh>(new LevelMesh(this, static_cast<int>(levels.size())));
    try {
        fine->AllocateFaces(static_cast<uint32_t>(faces), 1);
        fine->AllocateVertices(static_cast<uint32_t>(vertices));
        fine->vertexNormals.SetFill(fine->vertexCount, false);
    } catch (Error* error) {
        Error::Dispose(error);
        throw HostError("subdividing to " + std::to_string(faces) +
                        " faces needs more memory than the limit allows");
    }
    if (fine->vertexNormals.fill != fine->vertexCount || fine->vertices.fill != vertices ||
        fine->faceWalkStamps.fill != faces) {
        throw HostError("subdividing to " + std::to_string(faces) +
                        " faces needs more memory than there is");
    }
    std::fill_n(fine->vertexNormals.array, fine->vertexCount, PackedNormal{0, 0, 0, 0});
    refiner.RefineTopology(*fine);
    levels.push_back(std::move(fine));
    seenPositions.emplace_back();
    return *levels.back();
}

void LevelGeometry::Subdivide() {
    if (bound + 1 != levels.size()) BindLevel(LevelCount() - 1);
    LevelMesh& coarse = *levels.back();
    LevelMesh& target = AddLevel();
    LevelRefiner(coarse).RefinePositions(target,
                                         [&target](uint32_t vertex, const Vector& position) {
                                             target.SetPosition(vertex, position);
                                         });
    CarryFreeze(coarse, target);
    bound = LevelCount() - 1;
    target.ComputeNormals();
}

void LevelGeometry::Restore(uint32_t boundIndex, std::vector<std::vector<Vector>> seen) {
    bound = boundIndex;
    seenPositions = std::move(seen);
    seenPositions.resize(levels.size());
}

// A new vertex takes the rounded mean of those it lies between.
void LevelGeometry::CarryFreeze(LevelMesh& coarse, LevelMesh& fine) {
    if (coarse.FrozenVertexCount() == 0) return;
    const uint32_t corners = coarse.CornersPerFace();
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v) fine.SetFreeze(v, coarse.Freeze(v));
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        const uint32_t* children = fine.faceVertexIndices.array + face * corners * 4;
        uint32_t sum = 0;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t a = coarse.Freeze(v[k]);
            const uint32_t b = coarse.Freeze(v[(k + 1) % corners]);
            sum += a;
            const uint32_t edge = children[k * 4 + (corners == 4 ? (k + 1) & 3u : 1u)];
            fine.SetFreeze(edge, static_cast<uint8_t>((a + b + 1) / 2));
        }
        fine.SetFreeze(children[2], static_cast<uint8_t>((sum + corners / 2) / corners));
    }
}

std::vector<Vector> LevelGeometry::RefinedPositions(uint32_t index) const {
    const LevelMesh& fine = *levels[index + 1];
    std::vector<Vector> positions(fine.VertexCount());
    LevelRefiner(*levels[index])
        .RefinePositions(fine,
                         [&positions](uint32_t vertex, const Vector& p) { positions[vertex] = p; });
    return positions;
}

void LevelGeometry::KeepSeen(uint32_t index) {
    if (index + 1 >= levels.size() || !seenPositions[index].empty()) return;
    const LevelMesh& level = *levels[index];
    seenPositions[index].resize(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) seenPositions[index][v] = level.Position(v);
}

LevelGeometry::Moved LevelGeometry::CarryUp(uint32_t index) {
    LevelMesh& coarse = *levels[index];
    LevelMesh& fine = *levels[index + 1];
    Moved moved{index + 1, {}, {}};
    std::vector<Vector> seen = std::move(seenPositions[index]);
    seenPositions[index].clear();
    bool changed = false;
    for (uint32_t v = 0; v < coarse.VertexCount() && !changed; ++v)
        changed = !SameBits(seen[v], coarse.Position(v));
    if (!changed) return moved;

    // Both refinements by the same code, so that where nothing changed they agree to the bit.
    const std::vector<Vector> after = RefinedPositions(index);
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v) {
        const Vector present = coarse.Position(v);
        coarse.SetPosition(v, seen[v]);
        seen[v] = present;
    }
    const std::vector<Vector> before = RefinedPositions(index);
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v) coarse.SetPosition(v, seen[v]);

    KeepSeen(index + 1);
    for (uint32_t v = 0; v < fine.VertexCount(); ++v) {
        if (SameBits(before[v], after[v])) continue;
        const Vector place = fine.Position(v);
        moved.vertices.push_back(v);
        moved.positionsBefore.push_back(place);
        fine.SetPosition(v, place + (after[v] - before[v]));
    }
    RefreshNormalsAround(fine, moved.vertices);
    return moved;
}

void LevelGeometry::RefreshNormalsAround(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> faces;
    std::vector<uint32_t> touched;
    const uint32_t corners = level.CornersPerFace();
    for (const uint32_t vertex : vertices) {
        const uint32_t lowest = level.LowestFaceOf(vertex);
        if (lowest == openBorder) continue;
        faces.clear();
        level.FacesAround(vertex, lowest, faces);
        for (const uint32_t face : faces)
            for (uint32_t k = 0; k < corners; ++k)
                touched.push_back(level.faceVertexIndices.array[face * corners + k]);
    }
    std::sort(touched.begin(), touched.end());
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    level.ComputeNormalsOf(touched);
}

std::vector<LevelGeometry::Moved> LevelGeometry::BindLevel(uint32_t index) {
    std::vector<Moved> moved;
    for (uint32_t level = bound; level < index; ++level) {
        if (seenPositions[level].empty()) continue;
        Moved carried = CarryUp(level);
        if (!carried.vertices.empty()) moved.push_back(std::move(carried));
    }
    bound = index;
    KeepSeen(index);
    return moved;
}

PolygonMesh LevelGeometry::ToPolygons(bool world) const {
    const LevelMesh& level = *Bound();
    PolygonMesh polygons;
    polygons.name = level.Name().toStdString();
    polygons.positions.resize(level.VertexCount());
    polygons.normals.resize(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        Vector p = level.Position(v);
        const PackedNormal& n = level.vertexNormals.array[v];
        Vector normal =
            Vector(static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z))
                .Normalized();
        if (world) {
            p = placement.ToWorld().AffineTransform(p, 1.0f);
            // Normals go by the inverse, transposed.
            const Matrix& back = placement.ToLocal();
            normal =
                Vector(back.m[0][0] * normal.x + back.m[0][1] * normal.y + back.m[0][2] * normal.z,
                       back.m[1][0] * normal.x + back.m[1][1] * normal.y + back.m[1][2] * normal.z,
                       back.m[2][0] * normal.x + back.m[2][1] * normal.y + back.m[2][2] * normal.z)
                    .Normalized();
        }
        polygons.positions[v] = {p.x, p.y, p.z};
        polygons.normals[v] = {normal.x, normal.y, normal.z};
    }
    polygons.faceSizes.assign(level.faceCount, level.CornersPerFace());
    polygons.faceVertices.assign(
        level.faceVertexIndices.array,
        level.faceVertexIndices.array +
            static_cast<std::size_t>(level.faceCount) * level.CornersPerFace());
    return polygons;
}

}  // namespace trovik
