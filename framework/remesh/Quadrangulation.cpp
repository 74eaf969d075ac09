// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/Quadrangulation.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/remesh/FaceSplitting.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/SurfaceCopy.h"
#include "framework/remesh/TriangleMatching.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t none = TriangleMatching::none;
/// Cosine of the largest and the smallest accepted corner angle, about 10 and 170 degrees.
constexpr float maxCornerCosine = 0.985f;
/// How often pairs at vertices with too few faces are exchanged.
constexpr int maxExchanges = 16;

/// Returns a value from 0 to 1 that is 1 for a flat rectangle, and 0 for a quad that is not convex
/// or has a very sharp or flat corner.
float Squareness(const std::array<Vector, 4>& corners, const Vector& normal) {
    float largest = 0.0f;
    for (std::size_t k = 0; k < 4; ++k) {
        const Vector before = corners[k] - corners[(k + 3) % 4];
        const Vector after = corners[(k + 1) % 4] - corners[k];
        if (!(((before & after) | normal) > 0.0f)) return 0.0f;
        const float lengths = before.Length() * after.Length();
        if (!(lengths > 0.0f)) return 0.0f;
        largest = std::max(largest, std::fabs(before | after) / lengths);
    }
    return largest < maxCornerCosine ? 1.0f - largest : 0.0f;
}

/// The triangles of a surface and their possible pairs.
class TrianglePairs {
public:
    TrianglePairs(SourceSurface& source,
                  NewSurface& copy,
                  const Quadrangulation& withSettings,
                  JobControl* job)
        : settings(withSettings),
          surface(copy),
          mesh(copy.mesh),
          level(source.Level()),
          attributes(source.Attributes(job)) {
        FindCandidates(job);
    }

    /// Pairs triangles, and replaces the faces. \return the number of triangles that are left.
    std::size_t Pair(JobControl* job) {
        TriangleMatching matching(std::move(candidates));
        std::vector<uint32_t> facesLeft = faceCounts;
        matching.PairGreedily(
            [&](uint32_t triangle, uint32_t side) {
                uint32_t& first = facesLeft[Vertex(triangle, side)];
                uint32_t& second = facesLeft[Vertex(triangle, side + 1)];
                if (first <= leastFaces || second <= leastFaces) return false;
                --first;
                --second;
                return true;
            },
            job);
        // Augmenting paths ignore the numbers of faces at the vertices.
        for (int i = 0; i < maxExchanges; ++i) {
            matching.Augment(job);
            if (!SeparateAtPoorVertices(matching)) break;
        }
        // A vertex with two faces is better than splitting all faces.
        SeparateAtPoorVertices(matching);
        matching.LiftBans();
        matching.Augment(job);
        return MakeFaces(matching.Partners(), job);
    }

private:
    /// An interior vertex needs this number of faces; border vertices have no limit.
    static constexpr uint32_t leastFaces = 3;
    static constexpr uint32_t unlimited = 0x7fffffffu;

    uint32_t Vertex(uint32_t triangle, uint32_t corner) const {
        return mesh.faceVertices[std::size_t{triangle} * 3 + corner % 3];
    }
    Vector At(uint32_t vertex) const {
        const auto& p = mesh.positions[vertex];
        return {p[0], p[1], p[2]};
    }
    Vector NormalOf(uint32_t triangle) const {
        const Vector a = At(Vertex(triangle, 0));
        return (At(Vertex(triangle, 1)) - a) & (At(Vertex(triangle, 2)) - a);
    }

    void FindCandidates(JobControl* job) {
        const std::size_t count = mesh.faceSizes.size();
        candidates.resize(count);
        faceCounts.resize(mesh.positions.size());
        for (const uint32_t vertex : mesh.faceVertices) ++faceCounts[vertex];
        constexpr float degree = 0.017453293f;
        minCosine = std::cos(settings.maxAngle * degree);
        const std::vector<FaceSide> sides = SortedSides(mesh);
        JobPhase phase(job, "Measuring pairs of triangles", sides.size());
        ForEachEdge(sides, [&](const FaceSide* side, const FaceSide* end) {
            phase.Add(static_cast<uint64_t>(end - side));
            if (end - side != 2) {
                faceCounts[side->low] = faceCounts[side->high] = unlimited;
                return;
            }
            if (!MayPair(side[0], side[1])) return;
            const float quality = QualityOf(side[0], side[1]);
            if (!(quality > 0.0f)) return;
            candidates[side[0].face][side[0].corner] = {side[1].face, quality};
            candidates[side[1].face][side[1].corner] = {side[0].face, quality};
        });
        phase.Finish();
    }

    bool MayPair(const FaceSide& a, const FaceSide& b) const {
        if (IsMasked(a.face) != IsMasked(b.face)) return false;
        if (settings.keepsGroups)
            for (const auto* list :
                 {&attributes.faceGroups, &attributes.faceMaterials, &attributes.faceSmoothing})
                if (!list->empty() && (*list)[a.face] != (*list)[b.face]) return false;
        return !settings.keepsUvs ||
               (HasSameUv(a, b.corner + 1, b, a.corner) && HasSameUv(a, b.corner, b, a.corner + 1));
    }

    /// Whether a corner of triangle `a` and one of `b` have the same UV.
    bool HasSameUv(const FaceSide& a,
                   uint32_t cornerOfB,
                   const FaceSide& b,
                   uint32_t cornerOfA) const {
        const auto& uvs = attributes.cornerUvs;
        if (uvs.empty()) return true;
        const uint32_t first = uvs[std::size_t{a.face} * 3 + cornerOfA % 3];
        const uint32_t second = uvs[std::size_t{b.face} * 3 + cornerOfB % 3];
        if (first == second) return true;
        if (first == SurfaceAttributes::none || second == SurfaceAttributes::none) return false;
        return attributes.uvs[first] == attributes.uvs[second];
    }

    bool IsMasked(uint32_t triangle) const {
        for (uint32_t corner = 0; corner < 3; ++corner)
            if (level.Freeze(Vertex(triangle, corner)) < keptMaskAmount) return false;
        return true;
    }

    float QualityOf(const FaceSide& a, const FaceSide& b) const {
        const Vector first = NormalOf(a.face);
        const Vector second = NormalOf(b.face);
        const float lengths = first.Length() * second.Length();
        if (!(lengths > 0.0f)) return 0.0f;
        const float cosine = (first | second) / lengths;
        if (cosine < minCosine) return 0.0f;
        return Squareness({At(Vertex(a.face, a.corner)),
                           At(Vertex(b.face, b.corner + 2)),
                           At(Vertex(a.face, a.corner + 1)),
                           At(Vertex(a.face, a.corner + 2))},
                          first + second) *
               (0.5f + 0.5f * cosine);
    }

    /// Separates the worst pair at each interior vertex with fewer than three faces. \return
    /// whether there was one.
    bool SeparateAtPoorVertices(TriangleMatching& matching) const {
        std::vector<uint32_t> facesLeft = faceCounts;
        std::vector<uint32_t> worst(facesLeft.size(), none);
        ForEachPair(matching, [&](uint32_t triangle, uint32_t side) {
            for (const uint32_t vertex : {Vertex(triangle, side), Vertex(triangle, side + 1)}) {
                --facesLeft[vertex];
                uint32_t& least = worst[vertex];
                if (least == none ||
                    matching.QualityOfPair(triangle) < matching.QualityOfPair(least))
                    least = triangle;
            }
        });
        bool isAny = false;
        for (std::size_t vertex = 0; vertex < worst.size(); ++vertex) {
            if (worst[vertex] == none || facesLeft[vertex] >= leastFaces) continue;
            matching.Ban(worst[vertex]);
            isAny = true;
        }
        return isAny;
    }

    /// Calls `visit(triangle, side)` for the lower triangle of each pair.
    template <typename Visit>
    void ForEachPair(const TriangleMatching& matching, const Visit& visit) const {
        const std::vector<uint32_t>& partners = matching.Partners();
        for (uint32_t triangle = 0; triangle < partners.size(); ++triangle) {
            const uint32_t partner = partners[triangle];
            if (partner == none || partner < triangle) continue;
            visit(triangle, SideTo(triangle, partner));
        }
    }

    /// The side of a triangle whose vertices another triangle traverses in the opposite direction.
    uint32_t SideTo(uint32_t triangle, uint32_t partner) const {
        uint32_t side = 0;
        for (uint32_t k = 0; k < 3; ++k)
            for (uint32_t j = 0; j < 3; ++j)
                if (Vertex(triangle, k) == Vertex(partner, j + 1) &&
                    Vertex(triangle, k + 1) == Vertex(partner, j))
                    side = k;
        return side;
    }

    std::size_t MakeFaces(const std::vector<uint32_t>& partners, JobControl* job) {
        PolygonMesh result;
        std::vector<uint32_t> sources;
        const auto& uvs = mesh.attributes.cornerUvs;
        std::size_t left = 0;
        const auto add = [&](uint32_t triangle, uint32_t corner) {
            const std::size_t index = std::size_t{triangle} * 3 + corner % 3;
            result.faceVertices.push_back(mesh.faceVertices[index]);
            if (!uvs.empty()) result.attributes.cornerUvs.push_back(uvs[index]);
        };
        JobPhase phase(job, "Making quads", partners.size());
        for (uint32_t triangle = 0; triangle < partners.size(); ++triangle) {
            phase.Add();
            const uint32_t partner = partners[triangle];
            if (partner != none && partner < triangle) continue;
            const uint32_t side = partner == none ? none : SideTo(triangle, partner);
            for (uint32_t corner = 0; corner < 3; ++corner) {
                add(triangle, corner);
                if (corner == side) add(partner, SideTo(partner, triangle) + 2);
            }
            result.faceSizes.push_back(partner == none ? 3 : 4);
            sources.push_back(surface.faceSources[triangle]);
            if (partner == none) ++left;
        }
        phase.Finish();
        mesh.faceSizes = std::move(result.faceSizes);
        mesh.faceVertices = std::move(result.faceVertices);
        mesh.attributes.cornerUvs = std::move(result.attributes.cornerUvs);
        surface.faceSources = std::move(sources);
        return left;
    }

    const Quadrangulation& settings;
    NewSurface& surface;
    PolygonMesh& mesh;
    const LevelMesh& level;
    const SurfaceAttributes& attributes;
    float minCosine = 0.0f;
    std::vector<TriangleMatching::Candidates> candidates;
    /// Number of faces at each interior vertex; `unlimited` at border vertices.
    std::vector<uint32_t> faceCounts;
};

NewSurface MakeQuads(SourceSurface& source, const Quadrangulation& settings, JobControl* job) {
    NewSurface made;
    if (source.Level().CornersPerFace() == 4) {
        made.isUnchanged = true;
        made.report.warnings.push_back("the mesh already consists of quads");
        return made;
    }
    made = CopyOf(source, job);
    const std::size_t left = TrianglePairs(source, made, settings, job).Pair(job);
    const std::size_t quads = made.mesh.faceSizes.size() - left;
    using Split = Quadrangulation::Split;
    if (left > 0 && settings.split == Split::Never)
        throw HostError(std::to_string(left) + (left == 1 ? " triangle has" : " triangles have") +
                        " no partner, and a mesh consists of quads or of triangles only; permit "
                        "the split of all faces");
    made.report.notes.push_back(std::to_string(quads) + (quads == 1 ? " pair" : " pairs") +
                                " of triangles became quads");
    // A mixture of triangles and quads is split when the levels are made; triangles alone are not.
    if (settings.split == Split::Always || (quads == 0 && left > 0)) SplitIntoFlatQuads(made, job);
    return made;
}

}  // namespace

SurfaceOperation Quadrangulate(const Quadrangulation& settings) {
    return {"Quadrangulate", [settings](SourceSurface& source, JobControl* job) {
                return MakeQuads(source, settings, job);
            }};
}

}  // namespace trovik
