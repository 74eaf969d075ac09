// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/FaceOrientation.h"

#include "framework/jobs/JobPhase.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/SurfaceReplacement.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace trovik {

namespace {

/// A connection across an edge with two faces.
struct Link {
    uint32_t face;
    /// Whether both faces traverse the edge in the same direction.
    bool differs;
};

/// A set of faces that are connected across edges with two faces.
struct Piece {
    std::vector<uint32_t> faces;
    bool isClosed = true;
    double volume = 0.0;
    AxisAlignedBoundingBox box;
};

Vector At(const PolygonMesh& mesh, uint32_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

double Determinant(const Vector& a, const Vector& b, const Vector& c) {
    return static_cast<double>(a.x) *
               (static_cast<double>(b.y) * c.z - static_cast<double>(b.z) * c.y) +
           static_cast<double>(a.y) *
               (static_cast<double>(b.z) * c.x - static_cast<double>(b.x) * c.z) +
           static_cast<double>(a.z) *
               (static_cast<double>(b.x) * c.y - static_cast<double>(b.y) * c.x);
}

/// Calls `visit(a, b, c)` for each triangle of a fan around the first corner of the face.
template <typename Visit>
void ForEachTriangle(const PolygonMesh& mesh, std::span<const uint32_t> v, const Visit& visit) {
    for (std::size_t k = 1; k + 1 < v.size(); ++k)
        visit(At(mesh, v[0]), At(mesh, v[k]), At(mesh, v[k + 1]));
}

/// Returns how often the piece winds around a point; see Van Oosterom, Strackee: "The Solid Angle
/// of a Plane Triangle" (1983).
double WindingNumber(const PolygonMesh& mesh,
                     const FaceTable& faces,
                     const Piece& piece,
                     const std::vector<bool>& isFlipped,
                     const Vector& point) {
    double angle = 0.0;
    for (const uint32_t face : piece.faces) {
        double ofFace = 0.0;
        ForEachTriangle(mesh, faces.Vertices(face), [&](Vector a, Vector b, Vector c) {
            a = a - point;
            b = b - point;
            c = c - point;
            const double la = static_cast<double>(a.Length());
            const double lb = static_cast<double>(b.Length());
            const double lc = static_cast<double>(c.Length());
            const double below = la * lb * lc + static_cast<double>(a | b) * lc +
                                 static_cast<double>(b | c) * la + static_cast<double>(c | a) * lb;
            ofFace += 2.0 * std::atan2(Determinant(a, b, c), below);
        });
        angle += isFlipped[face] ? -ofFace : ofFace;
    }
    return angle / (4.0 * std::numbers::pi);
}

class Orienter {
public:
    explicit Orienter(const PolygonMesh& polygons)
        : mesh(polygons), faces(polygons), isFlipped(faces.FaceCount()) {}

    std::vector<bool> Run(JobControl* job) {
        FindLinks();
        FindPieces(job);
        JobPhase phase(job, "Orienting pieces", pieces.size(), 1);
        for (const Piece& piece : pieces) {
            phase.Add();
            const bool isReversed =
                piece.isClosed ? (piece.volume < 0.0) != IsCavity(piece) : IsMostlyFlipped(piece);
            if (!isReversed) continue;
            for (const uint32_t face : piece.faces) reversed.push_back(face);
        }
        phase.Finish();
        for (const uint32_t face : reversed) isFlipped[face] = !isFlipped[face];
        return std::move(isFlipped);
    }

private:
    void FindLinks() {
        firstLink.assign(faces.FaceCount() + 1, 0);
        isOpen.assign(faces.FaceCount(), false);
        const std::vector<FaceSide> sides = SortedSides(mesh);
        const auto forEachPair = [&](const auto& visit) {
            ForEachEdge(sides, [&](const FaceSide* first, const FaceSide* end) {
                if (end - first == 2 && first[0].face != first[1].face) {
                    visit(first[0].face, first[1].face, first[0].rises == first[1].rises);
                    return;
                }
                for (; first != end; ++first) isOpen[first->face] = true;
            });
        };
        forEachPair([&](uint32_t a, uint32_t b, bool) {
            ++firstLink[a + 1];
            ++firstLink[b + 1];
        });
        for (std::size_t i = 1; i < firstLink.size(); ++i) firstLink[i] += firstLink[i - 1];
        links.resize(firstLink.back());
        std::vector<std::size_t> next(firstLink.begin(), firstLink.end() - 1);
        forEachPair([&](uint32_t a, uint32_t b, bool differs) {
            links[next[a]++] = {b, differs};
            links[next[b]++] = {a, differs};
        });
    }

    void FindPieces(JobControl* job) {
        std::vector<bool> isVisited(faces.FaceCount());
        JobPhase phase(job, "Comparing orientations", faces.FaceCount());
        for (uint32_t seed = 0; seed < faces.FaceCount(); ++seed) {
            if (isVisited[seed]) continue;
            Piece& piece = pieces.emplace_back();
            piece.faces.push_back(seed);
            isVisited[seed] = true;
            for (std::size_t i = 0; i < piece.faces.size(); ++i) {
                const uint32_t face = piece.faces[i];
                phase.Add();
                Include(piece, face);
                for (std::size_t k = firstLink[face]; k < firstLink[face + 1]; ++k) {
                    const Link& link = links[k];
                    if (isVisited[link.face]) continue;
                    isVisited[link.face] = true;
                    isFlipped[link.face] = isFlipped[face] != link.differs;
                    piece.faces.push_back(link.face);
                }
            }
        }
        phase.Finish();
    }

    void Include(Piece& piece, uint32_t face) {
        if (isOpen[face]) piece.isClosed = false;
        double volume = 0.0;
        ForEachTriangle(
            mesh, faces.Vertices(face), [&](const Vector& a, const Vector& b, const Vector& c) {
                volume += Determinant(a, b, c);
            });
        piece.volume += isFlipped[face] ? -volume : volume;
        for (const uint32_t v : faces.Vertices(face)) piece.box.Extend(At(mesh, v));
    }

    bool IsMostlyFlipped(const Piece& piece) const {
        const auto flipped = std::count_if(piece.faces.begin(),
                                           piece.faces.end(),
                                           [this](uint32_t face) { return isFlipped[face]; });
        return static_cast<std::size_t>(flipped) * 2 > piece.faces.size();
    }

    bool IsCavity(const Piece& piece) const {
        const Vector point = At(mesh, faces.Vertices(piece.faces[0])[0]);
        int depth = 0;
        for (const Piece& other : pieces) {
            const AxisAlignedBoundingBox& box = other.box;
            if (&other == &piece || !other.isClosed || point.x < box.minX || point.x > box.maxX ||
                point.y < box.minY || point.y > box.maxY || point.z < box.minZ ||
                point.z > box.maxZ)
                continue;
            if (std::fabs(WindingNumber(mesh, faces, other, isFlipped, point)) > 0.5) ++depth;
        }
        return depth % 2 == 1;
    }

    const PolygonMesh& mesh;
    FaceTable faces;
    std::vector<bool> isFlipped;
    std::vector<bool> isOpen;
    std::vector<std::size_t> firstLink;
    std::vector<Link> links;
    std::vector<Piece> pieces;
    std::vector<uint32_t> reversed;
};

}  // namespace

std::vector<bool> FacesToFlip(const PolygonMesh& mesh, JobControl* job) {
    return Orienter(mesh).Run(job);
}

std::size_t FlipFaces(NewSurface& surface, const std::vector<bool>& isFlipped) {
    std::size_t count = 0;
    const FaceTable faces(surface.mesh);
    auto& vertices = surface.mesh.faceVertices;
    auto& uvs = surface.mesh.attributes.cornerUvs;
    for (std::size_t face = 0; face < isFlipped.size(); ++face) {
        if (!isFlipped[face]) continue;
        ++count;
        const auto first = static_cast<std::ptrdiff_t>(faces.FirstCorner(face));
        const auto end = static_cast<std::ptrdiff_t>(faces.FirstCorner(face + 1));
        // The first corner stays, so that the face still begins with the same vertex.
        std::reverse(vertices.begin() + first + 1, vertices.begin() + end);
        if (!uvs.empty()) std::reverse(uvs.begin() + first + 1, uvs.begin() + end);
    }
    return count;
}

}  // namespace trovik
