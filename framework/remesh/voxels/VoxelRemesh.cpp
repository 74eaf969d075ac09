// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/VoxelRemesh.h"

#include "framework/errors/HostError.h"
#include "framework/memory/FreeMemory.h"
#include "framework/remesh/LevelProjection.h"
#include "framework/remesh/MeshCleaning.h"
#include "framework/remesh/voxels/ClosedSurface.h"
#include "framework/remesh/voxels/DualSurface.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// A surface with a smaller ratio of volume to area^1.5 is flat; that of a sphere is 0.09.
constexpr double minFullness = 1e-6;
/// Memory for one new face: its part of the grids, and of the new level and its temporary copies.
constexpr double bytesPerFace = 450.0;
/// Number of faces of a first, faster remesh that improves the estimate of the voxel size.
constexpr double trialFaces = 50'000.0;
constexpr int maxTries = 16;
/// The search for a voxel size ends at this relative error of the number of faces.
constexpr double targetError = 0.02;
/// A larger relative error is reported as a warning.
constexpr double maxError = 0.05;
/// Connected components with fewer faces are about as small as a voxel. They remain of tips and
/// walls that are thinner than the voxels.
constexpr std::size_t minPieceFaces = 24;
/// Vertices are projected to points of the old surface within this number of voxels.
constexpr float reachInVoxels = 2.0f;

std::string Text(float number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

double RelativeError(uint64_t faces, uint32_t wanted) {
    return std::fabs(static_cast<double>(faces) / wanted - 1.0);
}

/// A field and the size of its voxels.
struct SizedField {
    std::unique_ptr<VoxelField> field;
    float size = 0.0f;
    uint64_t faces = 0;

    /// The relative error; infinite without faces, so that any surface is better than none.
    double ErrorFor(uint32_t wanted) const {
        if (faces == 0) return std::numeric_limits<double>::infinity();
        return RelativeError(faces, wanted);
    }
};

SizedField FieldOf(const ClosedSurface& surface, float size, JobControl* job) {
    SizedField result;
    const double faces = surface.projectedArea / std::pow(static_cast<double>(size), 2);
    const std::string what =
        "remeshing with voxels of size " + Text(size) + ", which gives about " +
        std::to_string(static_cast<uint64_t>(std::min(faces, 1e18))) + " faces,";
    if (!(surface.largestCoordinate / static_cast<double>(size) <
          VoxelLibrary::maxCoordinate - 16.0))
        throw HostError(what + " needs a finer grid than is possible");
    CheckFreeMemory(what, static_cast<uint64_t>(std::min(faces * bytesPerFace, 1e18)));
    result.size = size;
    result.field = LoadedVoxelLibrary().Distances(surface.positions, surface.triangles, size, job);
    result.faces = CountDualFaces(*result.field, job);
    return result;
}

/// Searches for the voxel size that gives a number of faces, which is approximately proportional to
/// 1 / size^2.
SizedField FieldWithFaces(const ClosedSurface& surface, uint32_t wanted, JobControl* job) {
    double low = 0.0;
    double high = surface.diagonal;
    double size = std::sqrt(surface.projectedArea / wanted);
    if (wanted > trialFaces) {
        // Parts of the surface that are inside other parts do not contribute.
        const double trialSize = std::sqrt(surface.projectedArea / trialFaces);
        const SizedField trial = FieldOf(surface, static_cast<float>(trialSize), job);
        size =
            trialSize * std::sqrt(static_cast<double>(std::max<uint64_t>(trial.faces, 1)) / wanted);
    }
    SizedField best;
    for (int i = 0; i < maxTries; ++i) {
        if (!(size > low && size < high)) size = low > 0.0 ? std::sqrt(low * high) : high * 0.5;
        SizedField next = FieldOf(surface, static_cast<float>(size), job);
        const double ratio = static_cast<double>(next.faces) / wanted;
        if (best.field == nullptr || next.ErrorFor(wanted) < best.ErrorFor(wanted))
            best = std::move(next);
        if (best.ErrorFor(wanted) <= targetError) break;
        (ratio > 1.0 ? low : high) = size;
        size *= std::sqrt(std::max(ratio, 0.25));
    }
    return best;
}

/// Moves the vertices of the bound level and adds levels; see VoxelRemesh.
void Complete(LevelGeometry& geometry,
              SourceSurface& old,
              const VoxelRemesh& settings,
              float reach,
              JobControl* job) {
    if (settings.levels > 0) geometry.CheckForecast(settings.levels, settings.byteBudget);
    if (settings.projects) ProjectLevel(*geometry.Bound(), old, reach, job);
    for (uint32_t i = 0; i < settings.levels; ++i) {
        geometry.Subdivide(LevelGeometry::unlimitedBytes, job);
        ProjectLevel(*geometry.Bound(), old, reach, job);
    }
}

/// Removes components that are about as small as a voxel, unless there are no others.
void RemoveSmallPieces(NewSurface& surface) {
    const std::vector<bool> isSmall = FacesOfSmallPieces(surface.mesh, minPieceFaces);
    if (std::find(isSmall.begin(), isSmall.end(), false) == isSmall.end()) return;
    const std::size_t removed = RemoveFaces(surface, isSmall);
    surface.vertexSources.clear();
    surface.faceSources.clear();
    if (removed > 0)
        surface.report.notes.push_back(std::to_string(removed) +
                                       " faces of pieces as small as a voxel were removed");
}

NewSurface MakeRemeshed(SourceSurface& source, const VoxelRemesh& settings, JobControl* job) {
    const ClosedSurface surface(source, job);
    if (surface.volume <= minFullness * std::pow(surface.area, 1.5))
        throw HostError(
            "the mesh encloses no volume; an open surface such as a plane cannot be remeshed with "
            "voxels");
    const SizedField sized =
        settings.faces
            ? FieldWithFaces(surface, *settings.faces, job)
            : FieldOf(surface, source.LocalLength(settings.voxelSize.value_or(0.0f)), job);
    if (sized.faces == 0)
        throw HostError("no faces would remain; the mesh is thinner than voxels of size " +
                        Text(sized.size));
    NewSurface made;
    made.mesh = DualSurfaceOf(*sized.field, job);
    for (auto& position : made.mesh.positions)
        for (float& coordinate : position) coordinate *= sized.size;
    RemoveSmallPieces(made);
    if (surface.filledHoles > 0)
        made.report.notes.push_back(std::to_string(surface.filledHoles) +
                                    (surface.filledHoles == 1 ? " hole was" : " holes were") +
                                    " filled");
    const std::size_t faces = made.mesh.faceSizes.size();
    if (settings.faces && RelativeError(faces, *settings.faces) > maxError)
        made.report.warnings.push_back("the mesh has " + std::to_string(faces) +
                                       " faces; no voxel size gives a number within 5 % of " +
                                       std::to_string(*settings.faces));
    if (!settings.projects && settings.levels == 0) return made;
    const float reach = sized.size * reachInVoxels;
    if (surface.filledHoles == 0) {
        made.complete = [&source, settings, reach](LevelGeometry& geometry, JobControl* inner) {
            Complete(geometry, source, settings, reach, inner);
        };
        return made;
    }
    made.complete = [closed = std::shared_ptr<LevelGeometry>(surface.MakeGeometry(job)),
                     settings,
                     reach](LevelGeometry& geometry, JobControl* inner) {
        SourceSurface filled(*closed);
        Complete(geometry, filled, settings, reach, inner);
    };
    return made;
}

}  // namespace

SurfaceOperation RemeshWithVoxels(const VoxelRemesh& settings) {
    return {"Voxel remesh", [settings](SourceSurface& source, JobControl* job) {
                return MakeRemeshed(source, settings, job);
            }};
}

}  // namespace trovik
