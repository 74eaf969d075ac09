// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/CoarseFaces.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/PolygonMesh.h"

#include <algorithm>
#include <array>

namespace trovik {

namespace {

enum Role : uint8_t { None, OldVertex, EdgeMiddle, FaceMiddle };

/// Determines which corner of each face is a vertex of the coarse mesh.
class RoleSearch {
public:
    RoleSearch(LevelMesh& level, uint32_t corners, JobControl* job)
        : mesh(level),
          coarseCorners(corners),
          faceCounts(level.VertexCount(), 0),
          onBorder(level.VertexCount(), 0),
          roles(level.VertexCount(), None),
          vertexCorner(level.faceCount, unknown),
          phase(job, "Finding coarse faces", uint64_t{level.faceCount} * 2) {
        for (uint32_t face = 0; face < mesh.faceCount; ++face) {
            phase.Add();
            for (uint32_t k = 0; k < 4; ++k) {
                ++faceCounts[At(face, k)];
                if (mesh.QuadEdgeNeighbour(face, k) != openBorder) continue;
                onBorder[At(face, k)] = 1;
                onBorder[At(face, k + 1)] = 1;
            }
        }
    }

    bool Run() {
        bool isRefinement = true;
        for (uint32_t face = 0; isRefinement && face < mesh.faceCount; ++face)
            isRefinement = vertexCorner[face] != unknown || FindPart(face);
        phase.Finish();
        return isRefinement;
    }

    uint32_t At(uint32_t face, uint32_t corner) const {
        return mesh.faceVertexIndices.array[face * 4 + (corner & 3u)];
    }
    uint32_t VertexCorner(uint32_t face) const { return vertexCorner[face]; }
    Role RoleOf(uint32_t vertex) const { return roles[vertex]; }

private:
    static constexpr uint8_t unknown = 0xff;

    bool FindPart(uint32_t seed) {
        std::array<uint32_t, 4> order = {0, 1, 2, 3};
        std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
            return At(seed, a) < At(seed, b);
        });
        for (const uint32_t corner : order) {
            if (Spread(seed, corner)) return true;
            for (const uint32_t face : part) {
                vertexCorner[face] = unknown;
                for (uint32_t k = 0; k < 4; ++k) roles[At(face, k)] = None;
            }
        }
        return false;
    }

    bool Spread(uint32_t seed, uint32_t corner) {
        part.assign(1, seed);
        vertexCorner[seed] = static_cast<uint8_t>(corner);
        for (std::size_t head = 0; head < part.size(); ++head) {
            phase.Add();
            const uint32_t face = part[head];
            const uint32_t c = vertexCorner[face];
            for (uint32_t k = 0; k < 4; ++k) {
                const Role role = k == 0 ? OldVertex : k == 2 ? FaceMiddle : EdgeMiddle;
                if (!Give(At(face, c + k), role)) return false;
            }
            for (uint32_t side = 0; side < 4; ++side) {
                const uint32_t neighbour = mesh.QuadEdgeNeighbour(face, side);
                if (neighbour == openBorder) continue;
                // The side starts at the neighbour's corner t + 1 and ends at its corner t.
                const uint32_t t = neighbour & 3u;
                const auto found = static_cast<uint8_t>(side == c                ? (t + 1) & 3u
                                                        : ((side + 1) & 3u) == c ? t
                                                        : ((side + 2) & 3u) == c ? (t + 3) & 3u
                                                                                 : (t + 2) & 3u);
                uint8_t& known = vertexCorner[neighbour >> 2];
                if (known == unknown) {
                    known = found;
                    part.push_back(neighbour >> 2);
                } else if (known != found) {
                    return false;
                }
            }
        }
        return true;
    }

    bool Give(uint32_t vertex, Role role) {
        if (roles[vertex] != None) return roles[vertex] == role;
        roles[vertex] = role;
        if (role == EdgeMiddle) return faceCounts[vertex] == (onBorder[vertex] != 0 ? 2u : 4u);
        if (role == FaceMiddle) return onBorder[vertex] == 0 && faceCounts[vertex] == coarseCorners;
        return true;
    }

    LevelMesh& mesh;
    uint32_t coarseCorners;
    std::vector<uint32_t> faceCounts;
    std::vector<uint8_t> onBorder;
    std::vector<Role> roles;
    std::vector<uint8_t> vertexCorner;
    std::vector<uint32_t> part;
    JobPhase phase;
};

CoarseFaces Gather(LevelMesh& mesh, const RoleSearch& search, uint32_t corners, JobControl* job) {
    JobPhase phase(job, "Numbering coarse faces", mesh.faceCount);
    CoarseFaces coarse;
    coarse.corners = corners;
    std::vector<uint32_t> number(mesh.VertexCount(), openBorder);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        // A vertex without faces is also a vertex of the coarse mesh.
        if (search.RoleOf(v) != OldVertex && search.RoleOf(v) != None) continue;
        number[v] = static_cast<uint32_t>(coarse.fineVertices.size());
        coarse.fineVertices.push_back(v);
    }
    coarse.fineFaces.face.assign(mesh.faceCount, openBorder);
    coarse.fineFaces.turn.assign(mesh.faceCount, 0);
    uint32_t next = 0;
    for (uint32_t first = 0; first < mesh.faceCount; ++first) {
        phase.Add();
        if (coarse.fineFaces.face[first] != openBorder) continue;
        uint32_t face = first;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t c = search.VertexCorner(face);
            coarse.fineFaces.face[face] = next * corners + k;
            // The corner that a refinement assigns to the coarse vertex: corner k for child k of a
            // quad, corner 0 for a child of a triangle.
            const uint32_t turned = corners == 4 ? k : 0;
            coarse.fineFaces.turn[face] = static_cast<uint8_t>((turned - c) & 3u);
            coarse.faceVertices.push_back(number[search.At(face, c)]);
            face = mesh.QuadEdgeNeighbour(face, (c + 1) & 3u) >> 2;
        }
        ++next;
    }
    phase.Finish();
    return coarse;
}

/// Returns whether the face lists define a valid mesh when an edge is identified only by its two
/// vertices.
bool IsMesh(const CoarseFaces& coarse, JobControl* job) {
    PolygonMesh polygons;
    polygons.positions.resize(coarse.fineVertices.size());
    polygons.faceVertices = coarse.faceVertices;
    polygons.faceSizes.assign(coarse.faceVertices.size() / coarse.corners, coarse.corners);
    try {
        CheckPolygonMesh(polygons, "level 0", job);
    } catch (const HostError&) {
        return false;
    }
    return MakeOrientedManifold(polygons, job).Untouched();
}

}  // namespace

FaceRenumbering FaceRenumbering::Inverse() const {
    FaceRenumbering inverse;
    inverse.face.resize(face.size());
    inverse.turn.resize(face.size());
    for (uint32_t f = 0; f < face.size(); ++f) {
        inverse.face[face[f]] = f;
        inverse.turn[face[f]] = static_cast<uint8_t>((4u - turn[f]) & 3u);
    }
    return inverse;
}

FaceRenumbering FaceRenumbering::OfChildren() const {
    FaceRenumbering children;
    children.face.resize(face.size() * 4);
    children.turn.resize(face.size() * 4);
    for (uint32_t f = 0; f < face.size(); ++f) {
        for (uint32_t k = 0; k < 4; ++k) {
            children.face[f * 4 + k] = face[f] * 4 + ((k + turn[f]) & 3u);
            children.turn[f * 4 + k] = turn[f];
        }
    }
    return children;
}

CoarseFaces FindCoarseFaces(LevelMesh& level, JobControl* job) {
    if (level.CornersPerFace() != 4)
        throw HostError("level 0 has triangles, so it is not a refinement of a coarser mesh");
    for (const uint32_t corners : {4u, 3u}) {
        RoleSearch search(level, corners, job);
        if (!search.Run()) continue;
        CoarseFaces coarse = Gather(level, search, corners, job);
        if (IsMesh(coarse, job)) return coarse;
    }
    throw HostError(
        "the faces of level 0 are not connected like the refinement of a coarser mesh of quads "
        "or of triangles");
}

}  // namespace trovik
