// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/MeshDifference.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/picking/TriangleQueries.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Number of faces or vertices that are measured as one unit of parallel work. The partial results
/// of the units are added in order, so the sums do not depend on the number of threads.
constexpr uint32_t unitSize = 256;
/// Number of units between two progress reports.
constexpr uint32_t unitsPerReport = 64;
constexpr double maxSamples = 1e9;

/// A sum of samples; a DistanceSummary once all samples have been added.
struct DistanceSum {
    DistanceSummary summary;
    double weight = 0.0;
    double distances = 0.0;
    double squares = 0.0;

    void Add(double distance,
             double sampleWeight,
             double tolerance,
             const Vector& position,
             const Vector& other) {
        // NaN counts as the largest distance, and is not replaced by a number.
        if (summary.samples == 0 || distance > summary.max || std::isnan(distance)) {
            summary.max = distance;
            summary.position = position;
            summary.other = other;
        }
        ++summary.samples;
        if (!(distance <= tolerance)) ++summary.beyond;
        weight += sampleWeight;
        distances += sampleWeight * distance;
        squares += sampleWeight * distance * distance;
    }

    void Add(const DistanceSum& later) {
        if (later.summary.samples == 0) return;
        if (summary.samples == 0 || later.summary.max > summary.max ||
            std::isnan(later.summary.max)) {
            summary.max = later.summary.max;
            summary.position = later.summary.position;
            summary.other = later.summary.other;
        }
        summary.samples += later.summary.samples;
        summary.beyond += later.summary.beyond;
        weight += later.weight;
        distances += later.distances;
        squares += later.squares;
    }

    DistanceSummary Finished() const {
        DistanceSummary result = summary;
        if (weight > 0.0) {
            result.mean = distances / weight;
            result.rms = std::sqrt(squares / weight);
        } else {
            // All faces are degenerate; each sample is on one of their vertices.
            result.mean = result.rms = summary.max;
        }
        return result;
    }
};

/// Calls `work(first, end)` for units of the elements 0 to count - 1, in parallel.
template <typename Work>
void ForEachUnit(uint32_t count, JobControl* job, const char* name, const Work& work) {
    const uint32_t units = count / unitSize + (count % unitSize == 0 ? 0 : 1);
    JobPhase phase(job, name, units, 1);
    for (uint32_t first = 0; first < units; first += unitsPerReport) {
        const uint32_t now = std::min(unitsPerReport, units - first);
        RunInParallel(now, 1, [&](uint32_t i) {
            const uint32_t begin = (first + i) * unitSize;
            work(begin, std::min(count - begin, unitSize) + begin);
        });
        phase.Add(now);
    }
    phase.Finish();
}

/// Calls `take(triangle)` for the triangles of a face, which are those of PatchTree.
template <typename Take>
void ForEachTriangle(const LevelMesh& level, uint32_t face, const Take& take) {
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* vertices = level.faceVertexIndices.array + std::size_t{face} * corners;
    const auto corner = [&](uint32_t i) { return ToDouble(level.Position(vertices[i])); };
    take(Triangle3d{corner(0), corner(1), corner(2)});
    if (corners == 4) take(Triangle3d{corner(0), corner(2), corner(3)});
}

/// Returns the number of parts into which each edge of the triangle is divided.
double Divisions(const Triangle3d& triangle, double spacing) {
    return std::max(1.0, std::ceil(LongestEdgeOf(triangle) / spacing));
}

/// Calls `take(sample)` for the centres of the parts of a triangle whose edges are divided into k
/// parts.
template <typename Take>
void ForEachSample(const Triangle3d& triangle, uint32_t k, const Take& take) {
    const Vector3d along = triangle[1] - triangle[0];
    const Vector3d across = triangle[2] - triangle[0];
    const auto point = [&](double u, double v) {
        Vector sample;
        float* const coordinates[3] = {&sample.x, &sample.y, &sample.z};
        for (std::size_t axis = 0; axis < 3; ++axis)
            *coordinates[axis] = static_cast<float>(
                triangle[0][axis] + (u * along[axis] + v * across[axis]) / (3.0 * k));
        return sample;
    };
    for (uint32_t row = 0; row < k; ++row) {
        for (uint32_t column = 0; column + row < k; ++column) {
            take(point(3.0 * column + 1.0, 3.0 * row + 1.0));
            if (column + row + 1 < k) take(point(3.0 * column + 2.0, 3.0 * row + 2.0));
        }
    }
}

/// Returns the nearest point of the tree's surface. The tree is not empty and the point is finite.
PickHit NearestPoint(const PatchTree& tree, const Vector& point) {
    const std::optional<PickHit> hit = tree.Nearest(point);
    return hit ? *hit : PickHit{0, point, Vector(), 0.0f};
}

}  // namespace

bool HasSameFaces(const PolygonMesh& a, const PolygonMesh& b) {
    return a.positions.size() == b.positions.size() && a.faceSizes == b.faceSizes &&
           a.faceVertices == b.faceVertices;
}

DistanceSummary CompareVertices(const PolygonMesh& a,
                                const PolygonMesh& b,
                                double tolerance,
                                std::vector<float>* distances) {
    DistanceSum sum;
    if (distances != nullptr) distances->resize(a.positions.size());
    for (std::size_t i = 0; i < a.positions.size(); ++i) {
        const Vector from(a.positions[i][0], a.positions[i][1], a.positions[i][2]);
        const Vector to(b.positions[i][0], b.positions[i][1], b.positions[i][2]);
        const double distance = Length(ToDouble(to) - ToDouble(from));
        sum.Add(distance, 1.0, tolerance, from, to);
        if (distances != nullptr) (*distances)[i] = static_cast<float>(distance);
    }
    return sum.Finished();
}

void SplitMixedFaces(PolygonMesh& mesh) {
    const auto hasOnly = [&](uint32_t corners) {
        return std::all_of(mesh.faceSizes.begin(), mesh.faceSizes.end(), [corners](uint32_t size) {
            return size == corners;
        });
    };
    if (hasOnly(3) || hasOnly(4)) return;
    std::vector<uint32_t> corners;
    corners.reserve(mesh.faceVertices.size() * 3);
    const uint32_t* face = mesh.faceVertices.data();
    for (const uint32_t size : mesh.faceSizes) {
        for (uint32_t i = 2; i < size; ++i)
            corners.insert(corners.end(), {face[0], face[i - 1], face[i]});
        face += size;
    }
    mesh.faceVertices = std::move(corners);
    mesh.faceSizes.assign(mesh.faceVertices.size() / 3, 3);
    mesh.attributes = {};
}

std::vector<float> VertexDistances(const LevelMesh& from, const PatchTree& to, JobControl* job) {
    std::vector<char> isUsed(from.VertexCount());
    const std::size_t corners = std::size_t{from.faceCount} * from.CornersPerFace();
    for (std::size_t i = 0; i < corners; ++i) isUsed[from.faceVertexIndices.array[i]] = 1;
    std::vector<float> distances(from.VertexCount());
    ForEachUnit(from.VertexCount(), job, "Measuring vertices", [&](uint32_t vertex, uint32_t end) {
        for (; vertex < end; ++vertex)
            if (isUsed[vertex] != 0) distances[vertex] = NearestPoint(to, from.Position(vertex)).t;
    });
    return distances;
}

DistanceSummary DistanceToSurface(const LevelMesh& from,
                                  const PatchTree& to,
                                  const std::vector<float>& vertexDistances,
                                  double spacing,
                                  double tolerance,
                                  JobControl* job) {
    double expected = 0.0;
    for (uint32_t face = 0; face < from.faceCount; ++face)
        ForEachTriangle(from, face, [&](const Triangle3d& triangle) {
            expected += Square(Divisions(triangle, spacing));
        });
    if (!(expected <= maxSamples))
        throw HostError("the spacing of the samples is too small: it results in more than " +
                        std::to_string(static_cast<uint64_t>(maxSamples)) + " samples");

    std::vector<DistanceSum> sums(from.faceCount / unitSize + 1);
    ForEachUnit(from.faceCount, job, "Measuring faces", [&](uint32_t face, uint32_t end) {
        DistanceSum& sum = sums[face / unitSize];
        const auto add = [&](const Triangle3d& triangle) {
            const auto k = static_cast<uint32_t>(Divisions(triangle, spacing));
            const double weight = AreaOf(triangle) / Square(k);
            ForEachSample(triangle, k, [&](const Vector& sample) {
                const PickHit nearest = NearestPoint(to, sample);
                sum.Add(double{nearest.t}, weight, tolerance, sample, nearest.position);
            });
        };
        for (; face < end; ++face) ForEachTriangle(from, face, add);
    });
    DistanceSum total;
    for (const DistanceSum& sum : sums) total.Add(sum);
    for (uint32_t vertex = 0; vertex < from.VertexCount(); ++vertex) {
        const Vector position = from.Position(vertex);
        const double distance = double{vertexDistances[vertex]};
        // The nearest point is needed only for the largest distance.
        const bool isLargest = distance > total.summary.max;
        total.Add(distance,
                  0.0,
                  tolerance,
                  position,
                  isLargest ? NearestPoint(to, position).position : position);
    }
    return total.Finished();
}

}  // namespace trovik
