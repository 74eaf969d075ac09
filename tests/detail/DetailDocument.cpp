// SPDX-License-Identifier: Apache-2.0
#include "tests/detail/DetailDocument.h"

#include "framework/strokes/DabAtHit.h"

#include <cmath>
#include <sstream>

namespace trovik::test {

namespace {

template <typename T>
void Append(std::string& bits, const std::vector<T>& list) {
    bits += std::to_string(list.size()) + ':';
    bits.append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(T));
}

std::string FaultOfTree(Document& document) {
    PatchTree& tree = document.Tree();
    PatchTree rebuilt(document.Geometry().Bound());
    for (uint32_t face = 0; face < document.Geometry().Bound()->faceCount; ++face) {
        const AxisAlignedBoundingBox a = tree.BoxOf(0, face);
        const AxisAlignedBoundingBox b = rebuilt.BoxOf(0, face);
        if (a.minX != b.minX || a.minY != b.minY || a.minZ != b.minZ || a.maxX != b.maxX ||
            a.maxY != b.maxY || a.maxZ != b.maxZ)
            return "the box of face " + std::to_string(face) + " is wrong";
    }
    for (int i = 0; i < 60; ++i) {
        const float angle = static_cast<float>(i) * 2.4f;
        const Vector p(1.3f * std::cos(angle), 1.3f * std::sin(angle), 0.04f * float(i) - 1.2f);
        const auto a = tree.Nearest(p);
        const auto b = rebuilt.Nearest(p);
        if (a.has_value() != b.has_value()) return "one tree finds no nearest point";
        if (a && (a->face != b->face || !(a->position == b->position)))
            return "the trees find different nearest points";
        const Ray ray{p, Vector() - p};
        const auto hitA = tree.Pick(ray);
        const auto hitB = rebuilt.Pick(ray);
        if (hitA.has_value() != hitB.has_value()) return "one tree finds no hit";
        if (hitA && hitA->face != hitB->face) return "the trees find different hits";
    }
    return {};
}

}  // namespace

PolygonMesh Triangles(const PolygonMesh& quads) {
    PolygonMesh mesh = quads;
    mesh.faceSizes.clear();
    mesh.faceVertices.clear();
    SurfaceAttributes& attributes = mesh.attributes;
    attributes.cornerUvs.clear();
    attributes.faceGroups.clear();
    std::size_t first = 0;
    for (std::size_t face = 0; face < quads.faceSizes.size(); ++face) {
        const uint32_t size = quads.faceSizes[face];
        for (uint32_t k = 2; k < size; ++k) {
            mesh.faceSizes.push_back(3);
            for (const std::size_t corner : {first, first + k - 1, first + k}) {
                mesh.faceVertices.push_back(quads.faceVertices[corner]);
                if (!quads.attributes.cornerUvs.empty())
                    attributes.cornerUvs.push_back(quads.attributes.cornerUvs[corner]);
            }
            if (!quads.attributes.faceGroups.empty())
                attributes.faceGroups.push_back(quads.attributes.faceGroups[face]);
        }
        first += size;
    }
    return mesh;
}

std::unique_ptr<Document> DetailDocument(const PolygonMesh& mesh, float length) {
    auto document = std::make_unique<Document>("mesh", mesh);
    document->SelectTool("Sculpt");
    document->Settings().radius = 0.4f;
    document->Settings().detail.measure = DetailSettings::Measure::Radius;
    document->Settings().detail.length = length;
    document->View().eye = {0.0f, 0.0f, 5.0f};
    document->UpdateCamera();
    return document;
}

void Dab(Document& document, const Vector& point, float strength) {
    StrokeDab dab = DabAt(document.Geometry(), document.Tree().Nearest(point).value());
    dab.size = document.Settings().radius;
    dab.strength = strength;
    document.Loop().Dab(dab);
}

void Stroke(Document& document, const std::vector<Vector>& points, float strength) {
    BeginStroke(document, BrushOperation::ModifierNone, std::nullopt);
    for (const Vector& point : points) Dab(document, point, strength);
    document.Loop().End();
}

std::string BitsOf(Document& document) {
    const LevelMesh& level = *document.Geometry().Bound();
    std::string bits;
    bits.append(reinterpret_cast<const char*>(level.faceVertexIndices.array),
                std::size_t{level.faceCount} * 3 * sizeof(uint32_t));
    bits.append(reinterpret_cast<const char*>(level.faceFlags), level.faceCount);
    bits.append(reinterpret_cast<const char*>(level.vertexNormals.array),
                level.VertexCount() * sizeof(PackedNormal));
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector position = level.Position(v);
        bits.append(reinterpret_cast<const char*>(&position), sizeof position);
        bits.push_back(static_cast<char>(level.Freeze(v)));
    }
    const SurfaceAttributes& attributes = document.Geometry().Attributes();
    Append(bits, attributes.uvs);
    Append(bits, attributes.cornerUvs);
    Append(bits, attributes.colors);
    Append(bits, attributes.faceGroups);
    return bits + std::to_string(level.FrozenVertexCount()) + ' ' +
           std::to_string(level.HiddenFaceCount());
}

std::string FaultOf(Document& document) {
    LevelMesh& level = *document.Geometry().Bound();
    PolygonMesh polygons = document.Geometry().ToPolygons(false);
    polygons.attributes = document.Geometry().Attributes();
    try {
        CheckPolygonMesh(polygons, "the mesh");
    } catch (const std::exception& error) {
        return error.what();
    }
    if (!MakeOrientedManifold(polygons).Untouched()) return "not an oriented manifold";
    polygons.normals.clear();
    LevelGeometry rebuilt(polygons);
    LevelMesh& other = *rebuilt.Bound();
    std::ostringstream fault;
    uint32_t frozen = 0;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (level.LowestFaceOf(v) != other.LowestFaceOf(v))
            fault << "the lowest face of vertex " << v << " is " << other.LowestFaceOf(v)
                  << ", not " << level.LowestFaceOf(v);
        if (level.LowestFaceOf(v) == openBorder) fault << "vertex " << v << " has no face";
        if (level.Freeze(v) != 0) ++frozen;
        if (!fault.str().empty()) return fault.str();
    }
    if (frozen != level.FrozenVertexCount()) return "the count of masked vertices is wrong";
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        for (uint32_t side = 0; side < 3; ++side)
            if (level.QuadEdgeNeighbour(face, side) != other.QuadEdgeNeighbour(face, side))
                return "the neighbour of face " + std::to_string(face) + " is wrong";
        Vector normal;
        level.FaceNormal(&normal, face);
        if (!(normal.Length() > 0.0f)) return "face " + std::to_string(face) + " is degenerate";
    }
    return FaultOfTree(document);
}

std::vector<float> EdgeLengthsAround(Document& document, const Vector& point, float radius) {
    LevelMesh& level = *document.Geometry().Bound();
    std::vector<float> lengths;
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        for (uint32_t side = 0; side < 3; ++side) {
            const uint32_t neighbour = level.QuadEdgeNeighbour(face, side);
            if (neighbour != openBorder && neighbour >> 2 < face) continue;
            const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 3;
            const Vector a = level.Position(v[side]);
            const Vector b = level.Position(v[(side + 1) % 3]);
            if ((a - point).Length() > radius || (b - point).Length() > radius) continue;
            lengths.push_back((b - a).Length());
        }
    }
    return lengths;
}

}  // namespace trovik::test
