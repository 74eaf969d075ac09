// SPDX-License-Identifier: Apache-2.0
#include "framework/detail/DetailRegion.h"

#include "framework/detail/FaceDistance.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/mesh/VertexLanes.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/tessellation/EdgeOperations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
/// Vertices that are masked by at least half are kept, as in remeshing.
constexpr uint8_t keptFreeze = 64;

bool HaveSameData(const TriangleFaceAttributes& a, const TriangleFaceAttributes& b) {
    return a.group == b.group && a.material == b.material && a.smoothing == b.smoothing;
}

bool AreSame(const TriangleFace& a, const TriangleFace& b) {
    return a.vertices == b.vertices && a.neighbours == b.neighbours && a.flags == b.flags;
}

bool AreSame(const TriangleFaceAttributes& a, const TriangleFaceAttributes& b) {
    return a.uvs == b.uvs && HaveSameData(a, b);
}

StoredVertexInfo* RecordOf(const LevelMesh& level, uint32_t vertex) {
    const uint32_t link = level.vertices.array[vertex].changeLink;
    return link < level.changeRecordCount && level.changeRecords[link].vertexIndex == vertex
               ? level.changeRecords + link
               : nullptr;
}

}  // namespace

void LocalNumbers::Clear(uint32_t elementCount) {
    if (++mark == 0) {
        std::fill(marks.begin(), marks.end(), 0u);
        mark = 1;
    }
    if (marks.size() < elementCount) {
        marks.resize(elementCount);
        numbers.resize(elementCount);
    }
}

DetailVertex Between(const DetailVertex& a, const DetailVertex& b) {
    DetailVertex middle;
    middle.freeze = (a.freeze + b.freeze) * 0.5f;
    for (std::size_t i = 0; i < 4; ++i) middle.color[i] = (a.color[i] + b.color[i]) * 0.5f;
    middle.hasRecord = a.hasRecord || b.hasRecord;
    middle.buildUp = (a.buildUp + b.buildUp) * 0.5f;
    middle.original = (a.original + b.original) * 0.5f;
    middle.originalNormal = (a.originalNormal + b.originalNormal) * 0.5f;
    middle.isInterpolated = true;
    middle.isTouched = true;
    return middle;
}

void Blend(DetailVertex& own, const DetailVertex& a, float s, const DetailVertex& b, float t) {
    const auto blended = [&](float from, float toA, float toB, float most) {
        return std::clamp(from + s * (toA - from) + t * (toB - from), 0.0f, most);
    };
    own.freeze = blended(own.freeze, a.freeze, b.freeze, 127.0f);
    for (std::size_t i = 0; i < 4; ++i)
        own.color[i] = blended(own.color[i], a.color[i], b.color[i], 1.0f);
}

/// The corners of the faces as numbers of vertices. A vertex of the level whose faces form several
/// fans in the region becomes one vertex per fan.
struct DetailRegion::Corners {
    std::vector<uint32_t> cornerVertices;
    std::vector<uint32_t> levelVertices;
    std::vector<bool> isPartial;
    std::vector<OuterEdge> outerEdges;
};

DetailRegion::Corners DetailRegion::CornersOf(LevelMesh& level,
                                              const std::vector<uint32_t>& faces,
                                              const LocalNumbers& numbers) {
    Corners corners;
    corners.cornerVertices.assign(faces.size() * 3, none);
    for (uint32_t corner = 0; corner < corners.cornerVertices.size(); ++corner) {
        if (corners.cornerVertices[corner] != none) continue;
        const auto vertex = static_cast<uint32_t>(corners.levelVertices.size());
        const uint32_t face = faces[corner / 3];
        corners.levelVertices.push_back(
            level.faceVertexIndices.array[std::size_t{face} * 3 + corner % 3]);
        bool isPartial = false;
        // Counter-clockwise across the side before the corner, then clockwise across its own.
        for (const bool isForward : {true, false}) {
            uint32_t at = face;
            uint32_t k = corner % 3;
            while (true) {
                const uint32_t number = numbers.Of(at);
                if (number == LocalNumbers::none) {
                    isPartial = true;
                    break;
                }
                uint32_t& assigned = corners.cornerVertices[std::size_t{number} * 3 + k];
                if (assigned == vertex && !(at == face && k == corner % 3)) break;
                assigned = vertex;
                const uint32_t neighbour = level.QuadEdgeNeighbour(at, isForward ? (k + 2) % 3 : k);
                if (neighbour == openBorder) break;
                at = neighbour >> 2;
                k = isForward ? neighbour & 3u : ((neighbour & 3u) + 1) % 3;
                if (at == face && k == corner % 3) break;
            }
        }
        corners.isPartial.push_back(isPartial);
    }
    for (uint32_t i = 0; i < faces.size(); ++i) {
        for (uint32_t side = 0; side < 3; ++side) {
            const uint32_t neighbour = level.QuadEdgeNeighbour(faces[i], side);
            if (neighbour == openBorder || numbers.Has(neighbour >> 2)) continue;
            corners.outerEdges.push_back(
                {corners.cornerVertices[std::size_t{i} * 3 + side],
                 corners.cornerVertices[std::size_t{i} * 3 + (side + 1) % 3],
                 neighbour});
        }
    }
    std::sort(corners.outerEdges.begin(), corners.outerEdges.end());
    return corners;
}

PolygonMesh DetailRegion::PolygonsOf(const Corners& corners) const {
    PolygonMesh polygons;
    polygons.positions.reserve(corners.levelVertices.size());
    for (const uint32_t vertex : corners.levelVertices) {
        const Vector p = level.Position(vertex);
        polygons.positions.push_back({p.x, p.y, p.z});
    }
    polygons.faceSizes.assign(faces.size(), 3);
    polygons.faceVertices = corners.cornerVertices;
    if (attributes.cornerUvs.empty()) return polygons;
    for (const uint32_t face : faces) {
        for (std::size_t k = 0; k < 3; ++k) {
            const uint32_t uv = attributes.cornerUvs[std::size_t{face} * 3 + k];
            polygons.attributes.cornerUvs.push_back(
                uv == none ? none : static_cast<uint32_t>(polygons.attributes.uvs.size()));
            if (uv != none) polygons.attributes.uvs.push_back(attributes.uvs[uv]);
        }
    }
    return polygons;
}

DetailRegion::DetailRegion(LevelMesh& ofLevel,
                           const SurfaceAttributes& ofLevelAttributes,
                           std::vector<uint32_t> regionFaces,
                           LocalNumbers& numbers,
                           float creaseAngle)
    : DetailRegion(ofLevel,
                   ofLevelAttributes,
                   regionFaces,
                   CornersOf(
                       ofLevel,
                       [&]() -> const std::vector<uint32_t>& {
                           numbers.Clear(ofLevel.faceCount);
                           for (uint32_t i = 0; i < regionFaces.size(); ++i)
                               numbers.Set(regionFaces[i], i);
                           return regionFaces;
                       }(),
                       numbers),
                   creaseAngle) {}

DetailRegion::DetailRegion(LevelMesh& ofLevel,
                           const SurfaceAttributes& ofLevelAttributes,
                           std::vector<uint32_t> regionFaces,
                           const Corners& corners,
                           float creaseAngle)
    : level(ofLevel),
      attributes(ofLevelAttributes),
      faces(std::move(regionFaces)),
      mesh(PolygonsOf(corners)),
      data(corners.levelVertices.size()),
      outerEdges(corners.outerEdges) {
    for (uint32_t v = 0; v < data.size(); ++v) {
        DetailVertex& own = data[v];
        own.number = corners.levelVertices[v];
        const uint8_t freeze = level.Freeze(own.number);
        own.freeze = static_cast<float>(freeze);
        if (!attributes.colors.empty()) own.color = attributes.colors[own.number];
        own.original = mesh.Position(v);
        own.originalNormal = Unpacked(level.vertexNormals.array[own.number]);
        if (const StoredVertexInfo* record = RecordOf(level, own.number)) {
            own.hasRecord = true;
            own.buildUp = record->buildUp;
            const float* p = record->originalPosition;
            own.original = Vector(p[0], p[1], p[2]);
            own.originalNormal = Unpacked(record->originalNormal);
        }
        if (freeze >= keptFreeze) mesh.SetKept(v);
        if (corners.isPartial[v]) mesh.SetPartial(v);
    }
    MarkFeatures(creaseAngle);
}

void DetailRegion::MarkFeatures(float creaseAngle) {
    const auto attributeOf = [](const std::vector<uint32_t>& list, uint32_t face) {
        return list.empty() ? SurfaceAttributes::none : list[face];
    };
    oldAttributes.reserve(faces.size());
    for (const uint32_t face : faces) {
        TriangleFaceAttributes own{{none, none, none},
                                   attributeOf(attributes.faceGroups, face),
                                   attributeOf(attributes.faceMaterials, face),
                                   attributeOf(attributes.faceSmoothing, face)};
        for (std::size_t k = 0; k < 3 && !attributes.cornerUvs.empty(); ++k) {
            own.uvs[k] = attributes.cornerUvs[std::size_t{face} * 3 + k];
            if (own.uvs[k] != none) knownUvs.emplace_back(attributes.uvs[own.uvs[k]], own.uvs[k]);
        }
        oldAttributes.push_back(own);
    }
    std::sort(knownUvs.begin(), knownUvs.end());
    const bool keepsCreases = creaseAngle < 180.0f;
    constexpr float degree = 0.017453293f;
    const float minCosine = std::cos(creaseAngle * degree);
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
        const uint32_t twin = mesh.Twin(h);
        if (twin == none || twin < h) continue;
        const uint32_t face = EditableMesh::FaceOf(h);
        const uint32_t neighbour = EditableMesh::FaceOf(twin);
        bool isFeature = !HaveSameData(oldAttributes[face], oldAttributes[neighbour]);
        if (keepsCreases && !isFeature) {
            const Vector a = AreaNormalOf(mesh, face);
            const Vector b = AreaNormalOf(mesh, neighbour);
            isFeature = (a | b) < minCosine * a.Length() * b.Length();
        }
        if (isFeature) mesh.SetFeature(h, true);
    }
}

uint32_t DetailRegion::NearestFace(const Vector& point) const {
    uint32_t nearest = none;
    double best = std::numeric_limits<double>::infinity();
    for (uint32_t face = 0; face < mesh.FaceLimit(); ++face) {
        if (!mesh.HasFace(face)) continue;
        const auto [a, b, c] = mesh.VerticesOf(face);
        const double squared =
            SquaredDistance(point, mesh.Position(a), mesh.Position(b), mesh.Position(c));
        if (!(squared < best)) continue;
        best = squared;
        nearest = face;
    }
    return nearest;
}

// Faces and vertices that still exist keep their numbers. The others get the numbers of removed
// ones, in ascending order, and then those that are new.
void DetailRegion::Number(TriangleEdit& edit, uint32_t pinnedFace, const Vector& point) {
    numberOf.assign(mesh.VertexLimit(), none);
    std::vector<uint32_t> added;
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
        if (!mesh.HasVertex(v)) continue;
        if (Data(v).number == none)
            added.push_back(v);
        else
            numberOf[v] = data[v].number;
    }
    for (const uint32_t v : added) numberOf[v] = edit.AddVertex();

    faceNumberOf.assign(mesh.FaceLimit(), none);
    std::copy(faces.begin(), faces.end(), faceNumberOf.begin());
    const auto pinned = std::lower_bound(faces.begin(), faces.end(), pinnedFace);
    const uint32_t nearest = NearestFace(point);
    if (pinned != faces.end() && *pinned == pinnedFace && nearest != none)
        std::swap(faceNumberOf[static_cast<std::size_t>(pinned - faces.begin())],
                  faceNumberOf[nearest]);
    std::vector<uint32_t> addedFaces;
    for (uint32_t face = 0; face < mesh.FaceLimit(); ++face) {
        uint32_t& number = faceNumberOf[face];
        if (mesh.HasFace(face)) {
            if (number == none) addedFaces.push_back(face);
        } else if (number != none) {
            edit.RemoveFace(std::exchange(number, none));
        }
    }
    for (const uint32_t face : addedFaces) faceNumberOf[face] = edit.AddFace();
}

uint32_t DetailRegion::NeighbourOf(uint32_t halfEdge) const {
    const uint32_t twin = mesh.Twin(halfEdge);
    if (twin != none) return faceNumberOf[EditableMesh::FaceOf(twin)] * 4 + twin % 3;
    const OuterEdge wanted = {mesh.From(halfEdge), mesh.To(halfEdge), 0};
    const auto found = std::lower_bound(outerEdges.begin(), outerEdges.end(), wanted);
    return found != outerEdges.end() && found->from == wanted.from && found->to == wanted.to
               ? found->neighbour
               : openBorder;
}

TriangleFaceAttributes DetailRegion::AttributesOf(uint32_t face, TriangleEdit& edit) {
    TriangleFaceAttributes own = oldAttributes[mesh.TagOf(face)];
    for (uint32_t k = 0; k < 3 && mesh.HasUvs(); ++k) {
        const uint32_t uv = mesh.UvOf(face * 3 + k);
        own.uvs[k] = none;
        if (uv == none) continue;
        const std::pair<std::array<float, 2>, uint32_t> wanted = {mesh.Uv(uv), 0};
        const auto found = std::lower_bound(knownUvs.begin(), knownUvs.end(), wanted);
        if (found != knownUvs.end() && found->first == wanted.first) {
            own.uvs[k] = found->second;
            continue;
        }
        own.uvs[k] = edit.AddUv(wanted.first);
        knownUvs.emplace(found, wanted.first, own.uvs[k]);
    }
    return own;
}

void DetailRegion::WriteVertex(uint32_t vertex, TriangleEdit& edit, MeshChange& change) const {
    const DetailVertex& own = data[vertex];
    const uint32_t number = numberOf[vertex];
    const Vector position = mesh.Position(vertex);
    if (own.number != none && SameBits(position, level.Position(number)) && !own.isTouched) return;
    edit.SetPosition(number, position);
    edit.SetFreeze(number, static_cast<uint8_t>(std::lround(own.freeze)));
    edit.SetColor(number, own.color);
    StoredVertexInfo* record = RecordOf(level, number);
    if (record == nullptr && own.hasRecord) {
        const uint32_t face = faceNumberOf[EditableMesh::FaceOf(mesh.HalfEdgeOf(vertex))];
        record = &change.Add_uncached(number, face, level.vertices.array[number], false);
    }
    if (record == nullptr) return;
    record->buildUp = own.buildUp;
    const Vector& original = own.hasRecord ? own.original : position;
    record->originalPosition[0] = original.x;
    record->originalPosition[1] = original.y;
    record->originalPosition[2] = original.z;
    if (own.isInterpolated) PackNormal(record->originalNormal, HWVector(own.originalNormal));
}

void DetailRegion::WriteLowestFaces(const std::vector<uint32_t>& changed,
                                    TriangleEdit& edit) const {
    std::vector<std::pair<uint32_t, uint32_t>> corners;
    for (const uint32_t face : changed)
        for (const uint32_t vertex : edit.FaceOf(face).vertices) corners.emplace_back(vertex, face);
    std::sort(corners.begin(), corners.end());
    std::vector<uint32_t> around;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const auto [vertex, face] = corners[i];
        if (i > 0 && corners[i - 1].first == vertex) continue;
        around.clear();
        level.FacesAround(vertex, face, around);
        edit.SetLowestFace(vertex, *std::min_element(around.begin(), around.end()));
    }
}

std::vector<uint32_t> DetailRegion::WriteTo(TriangleEdit& edit,
                                            MeshChange& change,
                                            uint32_t pinnedFace,
                                            const Vector& point) {
    // At most three new UVs per face.
    edit.Reserve(mesh.VertexLimit(), mesh.FaceLimit(), mesh.HasUvs() ? mesh.FaceLimit() * 3 : 0);
    // Several vertices of the region may be one vertex of the level.
    std::vector<uint32_t> removed;
    std::vector<uint32_t> kept;
    for (uint32_t v = 0; v < data.size(); ++v)
        if (data[v].number != none && mesh.HasVertex(v)) kept.push_back(data[v].number);
    MakeSet(kept);
    for (const uint32_t face : faces) {
        for (std::size_t k = 0; k < 3; ++k) {
            const uint32_t vertex = level.faceVertexIndices.array[std::size_t{face} * 3 + k];
            if (!std::binary_search(kept.begin(), kept.end(), vertex)) removed.push_back(vertex);
        }
    }
    MakeSet(removed);
    for (auto vertex = removed.rbegin(); vertex != removed.rend(); ++vertex)
        edit.RemoveVertex(*vertex);
    Number(edit, pinnedFace, point);

    std::vector<uint32_t> changed;
    for (uint32_t face = 0; face < mesh.FaceLimit(); ++face) {
        if (!mesh.HasFace(face)) continue;
        const uint32_t number = faceNumberOf[face];
        const auto vertices = mesh.VerticesOf(face);
        TriangleFace content{{}, {}, faceIsLive};
        bool isMoved = false;
        for (std::size_t k = 0; k < 3; ++k) {
            const uint32_t v = vertices[k];
            content.vertices[k] = numberOf[v];
            content.neighbours[k] = NeighbourOf(face * 3 + static_cast<uint32_t>(k));
            isMoved = isMoved || !SameBits(mesh.Position(v), level.Position(numberOf[v]));
        }
        if (!AreSame(content, edit.FaceOf(number))) {
            edit.SetFace(number, content);
            isMoved = true;
        }
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t outer = content.neighbours[k];
            if (mesh.Twin(face * 3 + k) != none || outer == openBorder) continue;
            TriangleFace across = edit.FaceOf(outer >> 2);
            if (across.neighbours[outer & 3u] == number * 4 + k) continue;
            across.neighbours[outer & 3u] = number * 4 + k;
            edit.SetFace(outer >> 2, across);
        }
        if (edit.HasFaceAttributes()) {
            const TriangleFaceAttributes own = AttributesOf(face, edit);
            if (!AreSame(own, edit.AttributesOf(number))) edit.SetFaceAttributes(number, own);
        }
        if (isMoved) changed.push_back(number);
    }
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v)
        if (mesh.HasVertex(v)) WriteVertex(v, edit, change);
    MakeSet(changed);
    WriteLowestFaces(changed, edit);
    return changed;
}

}  // namespace trovik
