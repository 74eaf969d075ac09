// SPDX-License-Identifier: Apache-2.0
#include "framework/tessellation/EditableMesh.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/tessellation/FanStarts.h"

#include <string>

namespace trovik {

namespace {

[[noreturn]] void RefuseNonManifold(const std::string& where, const std::string& why) {
    throw HostError(where + " " + why +
                    ", but only an oriented manifold can be remeshed; the step {\"repair\": {}} "
                    "repairs the mesh");
}

}  // namespace

EditableMesh::EditableMesh(const PolygonMesh& mesh, JobControl* job) {
    for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
        const auto& p = mesh.positions[v];
        vertices[AddVertex({p[0], p[1], p[2]})].source = static_cast<uint32_t>(v);
    }
    hasUvs = !mesh.attributes.cornerUvs.empty();
    AddFaces(mesh, job);
    ConnectTwins(job);
    if (!hasUvs) return;
    MergeUvs(mesh);
    MarkSeams();
}

void EditableMesh::AddFaces(const PolygonMesh& mesh, JobControl* job) {
    CheckRoom(mesh.faceVertices.size() - std::size_t{2} * mesh.faceSizes.size());
    JobPhase phase(job, "Collecting triangles", mesh.faceSizes.size());
    const std::vector<uint32_t> starts = FanStarts(mesh);
    std::size_t first = 0;
    for (std::size_t polygon = 0; polygon < mesh.faceSizes.size(); ++polygon) {
        phase.Add();
        const uint32_t size = mesh.faceSizes[polygon];
        for (uint32_t second = 1; second + 1 < size; ++second) {
            Face& face = faces[AddFace(static_cast<uint32_t>(polygon))];
            const auto corner = [&](uint32_t k) { return first + (starts[polygon] + k) % size; };
            const std::array<std::size_t, 3> corners = {
                corner(0), corner(second), corner(second + 1)};
            for (std::size_t k = 0; k < 3; ++k) {
                face.corners[k].vertex = mesh.faceVertices[corners[k]];
                // Until MergeUvs, corners refer to the UVs of the source.
                if (hasUvs) face.corners[k].uv = mesh.attributes.cornerUvs[corners[k]];
            }
        }
        first += size;
    }
    phase.Finish();
}

void EditableMesh::ConnectTwins(JobControl* job) {
    // The half-edges that start at each vertex, as linked lists. They are searched once per
    // half-edge, so the cost is the sum of the squared valences.
    std::vector<uint32_t> firstOut(vertices.Size(), none);
    std::vector<uint32_t> nextOut(std::size_t{faces.Size()} * 3, none);
    std::vector<uint32_t> counts(vertices.Size());
    JobPhase phase(job, "Connecting triangles", faces.Size());
    for (uint32_t h = faces.Size() * 3; h-- > 0;) {
        const uint32_t from = From(h);
        nextOut[h] = firstOut[from];
        firstOut[from] = h;
        ++counts[from];
    }
    const auto edgeText = [](uint32_t a, uint32_t b) {
        return "the edge between the vertices " + std::to_string(a) + " and " + std::to_string(b);
    };
    for (uint32_t h = 0; h < faces.Size() * 3; ++h) {
        if (h % 3 == 0) phase.Add();
        const uint32_t from = From(h);
        const uint32_t to = To(h);
        if (from == to) {
            RefuseNonManifold("face " + std::to_string(TagOf(FaceOf(h))),
                              "has the vertex " + std::to_string(from) + " twice");
        }
        for (uint32_t other = nextOut[h]; other != none; other = nextOut[other]) {
            if (To(other) == to)
                RefuseNonManifold(edgeText(from, to),
                                  "has more than two faces, or faces with different orientations");
        }
        for (uint32_t back = firstOut[to]; back != none; back = nextOut[back])
            if (To(back) == from) CornerAt(h).twin = back;
        vertices[from].halfEdge = h;
    }
    phase.Finish();
    AnchorVertices(counts);
}

void EditableMesh::AnchorVertices(const std::vector<uint32_t>& outgoingCounts) {
    for (uint32_t v = 0; v < vertices.Size(); ++v) {
        if (!HasVertex(v)) {
            RemoveVertex(v);
            continue;
        }
        Anchor(v, HalfEdgeOf(v));
        uint32_t count = 0;
        ForEachOutgoing(v, [&](uint32_t) { ++count; });
        vertices[v].valence = count + (IsBorderVertex(v) ? 1 : 0);
        if (count != outgoingCounts[v])
            RefuseNonManifold("vertex " + std::to_string(v),
                              "connects parts of the surface that have no common edge");
    }
}

void EditableMesh::MergeUvs(const PolygonMesh& mesh) {
    const auto& values = mesh.attributes.uvs;
    const auto isSame = [&](uint32_t a, uint32_t b) {
        return a == b || (a != none && b != none && values[a] == values[b]);
    };
    std::vector<uint32_t> merged(std::size_t{faces.Size()} * 3, none);
    for (uint32_t v = 0; v < vertices.Size(); ++v) {
        if (!HasVertex(v)) continue;
        const uint32_t first = HalfEdgeOf(v);
        uint32_t before = none;
        uint32_t last = first;
        ForEachOutgoing(v, [&](uint32_t h) {
            const uint32_t uv = UvOf(h);
            if (before != none && isSame(UvOf(before), uv))
                merged[h] = merged[before];
            else if (uv != none)
                merged[h] = AddUv(values[uv]);
            before = last = h;
        });
        // Around an inner vertex, the first and the last corner meet as well.
        if (Twin(first) == none || merged[last] == merged[first] ||
            !isSame(UvOf(last), UvOf(first)))
            continue;
        const uint32_t replaced = merged[last];
        freeUvs.push_back(replaced);
        ForEachOutgoing(v, [&](uint32_t h) {
            if (merged[h] == replaced) merged[h] = merged[first];
        });
    }
    for (uint32_t h = 0; h < merged.size(); ++h) CornerAt(h).uv = merged[h];
}

void EditableMesh::MarkSeams() {
    for (uint32_t h = 0; h < faces.Size() * 3; ++h) {
        const uint32_t twin = Twin(h);
        if (twin == none || twin < h) continue;
        if (UvOf(h) != UvOf(Next(twin)) || UvOf(Next(h)) != UvOf(twin)) SetFeature(h, true);
    }
}

uint32_t EditableMesh::FindHalfEdge(uint32_t from, uint32_t to) const {
    uint32_t found = none;
    ForEachOutgoing(from, [&](uint32_t h) {
        if (To(h) == to) found = h;
    });
    return found;
}

void EditableMesh::SetFeature(uint32_t halfEdge, bool isFeature) {
    CornerAt(halfEdge).isFeature = isFeature;
    if (const uint32_t twin = Twin(halfEdge); twin != none) CornerAt(twin).isFeature = isFeature;
}

EditableMesh::VertexKind EditableMesh::KindOf(uint32_t vertex) const {
    if (IsFixed(vertex)) return VertexKind::Corner;
    uint32_t marked = 0;
    uint32_t last = none;
    ForEachOutgoing(vertex, [&](uint32_t h) {
        if (IsMarked(h)) ++marked;
        last = h;
    });
    if (IsBorder(Previous(last))) ++marked;
    if (marked == 0) return VertexKind::Free;
    return marked == 2 ? VertexKind::OnCurve : VertexKind::Corner;
}

void EditableMesh::CheckRoom(std::size_t count) const {
    if (FaceCount() + count > maxFaces)
        throw HostError("the mesh would have more than " + std::to_string(maxFaces) + " triangles");
}

uint32_t EditableMesh::AddFace(uint32_t tag) {
    if (firstFreeFace == none) return faces.Append({{}, tag});
    const uint32_t face = firstFreeFace;
    firstFreeFace = faces[face].tag;
    --freeFaceCount;
    faces[face] = {{}, tag};
    return face;
}

uint32_t EditableMesh::AddVertex(const Vector& position) {
    EditableVertex made;
    made.position = position;
    if (firstFreeVertex == none) return vertices.Append(made);
    const uint32_t vertex = firstFreeVertex;
    firstFreeVertex = vertices[vertex].source;
    --freeVertexCount;
    vertices[vertex] = made;
    return vertex;
}

uint32_t EditableMesh::AddUv(const std::array<float, 2>& value) {
    if (freeUvs.empty()) return uvs.Append(value);
    const uint32_t uv = freeUvs.back();
    freeUvs.pop_back();
    uvs[uv] = value;
    return uv;
}

void EditableMesh::RemoveFace(uint32_t face) {
    faces[face] = {{}, firstFreeFace};
    firstFreeFace = face;
    ++freeFaceCount;
}

void EditableMesh::RemoveVertex(uint32_t vertex) {
    vertices[vertex] = {};
    vertices[vertex].source = firstFreeVertex;
    firstFreeVertex = vertex;
    ++freeVertexCount;
}

void EditableMesh::Anchor(uint32_t vertex, uint32_t halfEdge) {
    uint32_t h = halfEdge;
    while (Twin(h) != none) {
        h = Next(Twin(h));
        if (h == halfEdge) break;
    }
    vertices[vertex].halfEdge = h;
}

PolygonMesh EditableMesh::ToPolygons(std::vector<uint32_t>* sources,
                                     std::vector<uint32_t>* tags) const {
    PolygonMesh mesh;
    std::vector<uint32_t> numbers(vertices.Size(), none);
    std::vector<uint32_t> uvNumbers(uvs.Size(), none);
    mesh.positions.reserve(VertexCount());
    for (uint32_t v = 0; v < vertices.Size(); ++v) {
        if (!HasVertex(v)) continue;
        numbers[v] = static_cast<uint32_t>(mesh.positions.size());
        const Vector& p = Position(v);
        mesh.positions.push_back({p.x, p.y, p.z});
        if (sources != nullptr) sources->push_back(SourceOf(v));
    }
    mesh.faceSizes.assign(FaceCount(), 3);
    mesh.faceVertices.reserve(std::size_t{FaceCount()} * 3);
    SurfaceAttributes& attributes = mesh.attributes;
    for (uint32_t face = 0; face < faces.Size(); ++face) {
        if (!HasFace(face)) continue;
        if (tags != nullptr) tags->push_back(TagOf(face));
        for (const Corner& corner : faces[face].corners) {
            mesh.faceVertices.push_back(numbers[corner.vertex]);
            if (!hasUvs) continue;
            if (corner.uv == none) {
                attributes.cornerUvs.push_back(SurfaceAttributes::none);
                continue;
            }
            uint32_t& number = uvNumbers[corner.uv];
            if (number == none) {
                number = static_cast<uint32_t>(attributes.uvs.size());
                attributes.uvs.push_back(uvs[corner.uv]);
            }
            attributes.cornerUvs.push_back(number);
        }
    }
    return mesh;
}

}  // namespace trovik
