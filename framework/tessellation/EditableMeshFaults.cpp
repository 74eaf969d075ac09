// SPDX-License-Identifier: Apache-2.0
#include "framework/tessellation/EditableMesh.h"

#include <string>

namespace trovik {

std::string EditableMesh::FindFault() const {
    const auto at = [](const char* what, uint32_t index) {
        return std::string(what) + " " + std::to_string(index);
    };
    uint32_t faceCount = 0;
    std::vector<uint32_t> outgoing(vertices.Size());
    for (uint32_t face = 0; face < faces.Size(); ++face) {
        if (!HasFace(face)) continue;
        ++faceCount;
        for (uint32_t h = face * 3; h < face * 3 + 3; ++h) {
            if (From(h) >= vertices.Size() || !HasVertex(From(h)))
                return at("half-edge", h) + " starts at a vertex that does not exist";
            if (From(h) == To(h)) return at("half-edge", h) + " has equal ends";
            ++outgoing[From(h)];
            const uint32_t twin = Twin(h);
            if (twin == none) continue;
            if (twin >= faces.Size() * 3 || !HasFace(FaceOf(twin)) || Twin(twin) != h)
                return at("half-edge", h) + " has a wrong twin";
            if (From(twin) != To(h) || To(twin) != From(h))
                return at("half-edge", h) + " and its twin have different ends";
            if (IsFeature(h) != IsFeature(twin))
                return at("half-edge", h) + " and its twin have different feature marks";
            if (!IsFeature(h) && (UvOf(h) != UvOf(Next(twin)) || UvOf(Next(h)) != UvOf(twin)))
                return at("half-edge", h) + " is a seam, but not a feature";
        }
    }
    if (faceCount != FaceCount()) return "the number of faces is wrong";
    uint32_t vertexCount = 0;
    for (uint32_t v = 0; v < vertices.Size(); ++v) {
        if (!HasVertex(v)) continue;
        ++vertexCount;
        const uint32_t first = HalfEdgeOf(v);
        if (!HasFace(FaceOf(first)) || From(first) != v)
            return at("vertex", v) + " refers to a half-edge that does not start at it";
        uint32_t count = 0;
        uint32_t last = first;
        std::vector<uint32_t> around;
        ForEachOutgoing(v, [&](uint32_t h) {
            last = h;
            ++count;
        });
        ForEachNeighbour(v, [&](uint32_t n) { around.push_back(n); });
        if (around.size() != Valence(v)) return at("vertex", v) + " has a wrong valence";
        if (count != outgoing[v]) return at("vertex", v) + " has more than one fan of faces";
        if (IsBorder(Previous(last)) != IsBorder(first))
            return at("vertex", v) + " does not refer to its half-edge on the border";
        for (std::size_t i = 0; i < around.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (around[i] == around[j]) return at("vertex", v) + " has a double edge";
    }
    if (vertexCount != VertexCount()) return "the number of vertices is wrong";
    return {};
}

}  // namespace trovik
