// SPDX-License-Identifier: Apache-2.0
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/multires/CoarseFaces.h"

#include <cstddef>

namespace trovik {

namespace {

struct Point {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    void Add(const Point& p, double f) {
        x += p.x * f;
        y += p.y * f;
        z += p.z * f;
    }
};
using Points = std::vector<Point>;

double Dot(const Points& a, const Points& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i].x * b[i].x + a[i].y * b[i].y + a[i].z * b[i].z;
    return sum;
}

/// The Catmull-Clark step as a linear map, and its transpose.
class RefineMap {
public:
    /// \param jobPhase  polled, because the number of iterations of the fit is not known in
    /// advance. Borrowed.
    RefineMap(LevelMesh& coarseLevel, const LevelMesh& fineLevel, JobPhase& jobPhase)
        : coarse(coarseLevel),
          fine(fineLevel),
          phase(jobPhase),
          corners(coarseLevel.CornersPerFace()),
          faces(coarseLevel.VertexCount(), 0),
          onBorder(coarseLevel.VertexCount(), 0) {
        ForEachSide([this](uint32_t a, uint32_t b, uint32_t, uint32_t, uint32_t neighbour) {
            ++faces[a];
            if (neighbour == openBorder) onBorder[a] = onBorder[b] = 1;
        });
    }

    Points Refine(const Points& x) const {
        Points y(fine.VertexCount());
        const double share = 1.0 / corners;
        for (uint32_t f = 0; f < coarse.faceCount; ++f) {
            Point& centre = y[CentreOf(f)];
            for (uint32_t k = 0; k < corners; ++k) centre.Add(x[Corner(f, k)], share);
        }
        for (uint32_t v = 0; v < coarse.VertexCount(); ++v) y[v].Add(x[v], OwnWeight(v));
        ForEachSide([&](uint32_t a, uint32_t b, uint32_t f, uint32_t edge, uint32_t neighbour) {
            if (!IsKept(a) && onBorder[a] == 0) {
                y[a].Add(y[CentreOf(f)], Weight(a));
                y[a].Add(x[b], Weight(a));
            }
            if (neighbour == openBorder) {
                if (!IsKept(a)) y[a].Add(x[b], 0.125);
                if (!IsKept(b)) y[b].Add(x[a], 0.125);
                y[edge].Add(x[a], 0.5);
                y[edge].Add(x[b], 0.5);
            } else {
                // An inner edge receives a contribution from each of its two faces.
                y[edge].Add(x[a], 0.125);
                y[edge].Add(x[b], 0.125);
                y[edge].Add(y[CentreOf(f)], 0.25);
            }
        });
        return y;
    }

    Points Transposed(const Points& y) const {
        Points x(coarse.VertexCount());
        Points centres(coarse.faceCount);
        for (uint32_t v = 0; v < coarse.VertexCount(); ++v) x[v].Add(y[v], OwnWeight(v));
        for (uint32_t f = 0; f < coarse.faceCount; ++f) centres[f] = y[CentreOf(f)];
        ForEachSide([&](uint32_t a, uint32_t b, uint32_t f, uint32_t edge, uint32_t neighbour) {
            if (!IsKept(a) && onBorder[a] == 0) {
                centres[f].Add(y[a], Weight(a));
                x[b].Add(y[a], Weight(a));
            }
            if (neighbour == openBorder) {
                if (!IsKept(a)) x[b].Add(y[a], 0.125);
                if (!IsKept(b)) x[a].Add(y[b], 0.125);
                x[a].Add(y[edge], 0.5);
                x[b].Add(y[edge], 0.5);
            } else {
                x[a].Add(y[edge], 0.125);
                x[b].Add(y[edge], 0.125);
                centres[f].Add(y[edge], 0.25);
            }
        });
        const double share = 1.0 / corners;
        for (uint32_t f = 0; f < coarse.faceCount; ++f)
            for (uint32_t k = 0; k < corners; ++k) x[Corner(f, k)].Add(centres[f], share);
        return x;
    }

private:
    uint32_t Corner(uint32_t face, uint32_t k) const {
        return coarse.faceVertexIndices.array[face * corners + k];
    }
    uint32_t CentreOf(uint32_t face) const {
        return fine.faceVertexIndices.array[face * corners * 4 + 2];
    }
    /// Vertices without faces and border vertices with one face do not move.
    bool IsKept(uint32_t v) const { return faces[v] == 0 || (onBorder[v] != 0 && faces[v] == 1); }
    double Weight(uint32_t v) const { return 1.0 / (static_cast<double>(faces[v]) * faces[v]); }
    double OwnWeight(uint32_t v) const {
        if (IsKept(v)) return 1.0;
        return onBorder[v] != 0 ? 0.75 : (faces[v] - 2.0) / faces[v];
    }

    template <typename Visit>
    void ForEachSide(Visit visit) const {
        for (uint32_t f = 0; f < coarse.faceCount; ++f) {
            phase.Poll();
            for (uint32_t side = 0; side < corners; ++side) {
                const uint32_t slot = side * 4 + (corners == 4 ? (side + 1) & 3u : 1u);
                visit(Corner(f, side),
                      Corner(f, (side + 1) % corners),
                      f,
                      fine.faceVertexIndices.array[f * corners * 4 + slot],
                      coarse.QuadEdgeNeighbour(f, side));
            }
        }
    }

    LevelMesh& coarse;
    const LevelMesh& fine;
    JobPhase& phase;
    uint32_t corners;
    std::vector<uint32_t> faces;
    std::vector<uint8_t> onBorder;
};

constexpr int maxIterations = 200;
/// The fit stops when the squared gradient is below this fraction of the initial one, which is
/// sufficient for single precision.
constexpr double accuracy = 1e-20;

}  // namespace

std::vector<Vector> FitCoarsePositions(LevelMesh& coarse,
                                       const LevelMesh& fine,
                                       const std::vector<Vector>& finePositions,
                                       JobControl* job) {
    // One element per iteration.
    JobPhase phase(job, "Fitting the coarse level", maxIterations);
    const RefineMap map(coarse, fine, phase);
    // The fit starts from the positions of the fine vertices and reduces the residual.
    Points x(coarse.VertexCount());
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v) {
        const Vector p = finePositions[v];
        x[v] = {p.x, p.y, p.z};
    }
    Points residual = map.Refine(x);
    for (uint32_t v = 0; v < fine.VertexCount(); ++v) {
        const Vector p = finePositions[v];
        residual[v] = {p.x - residual[v].x, p.y - residual[v].y, p.z - residual[v].z};
    }
    Points gradient = map.Transposed(residual);
    Points direction = gradient;
    double size = Dot(gradient, gradient);
    const double enough = size * accuracy;
    for (int i = 0; i < maxIterations && size > enough; ++i) {
        const Points step = map.Refine(direction);
        const double length = Dot(step, step);
        if (!(length > 0.0)) break;
        const double f = size / length;
        for (std::size_t v = 0; v < x.size(); ++v) x[v].Add(direction[v], f);
        for (std::size_t v = 0; v < residual.size(); ++v) residual[v].Add(step[v], -f);
        gradient = map.Transposed(residual);
        phase.Add();
        const double next = Dot(gradient, gradient);
        const double keep = next / size;
        size = next;
        for (std::size_t v = 0; v < x.size(); ++v) {
            Point d = gradient[v];
            d.Add(direction[v], keep);
            direction[v] = d;
        }
    }
    phase.Finish();
    std::vector<Vector> positions(coarse.VertexCount());
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v)
        positions[v] = {
            static_cast<float>(x[v].x), static_cast<float>(x[v].y), static_cast<float>(x[v].z)};
    return positions;
}

}  // namespace trovik
