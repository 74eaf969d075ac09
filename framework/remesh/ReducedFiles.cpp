// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/ReducedFiles.h"

#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/remesh/FaceSplitting.h"
#include "framework/remesh/MeshCleaning.h"
#include "framework/remesh/SurfaceCopy.h"
#include "framework/remesh/SurfaceTransfer.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

namespace trovik {

namespace {

/// Decimates a copy; the result has its attributes and its transform.
std::unique_ptr<LevelGeometry> Decimated(LevelGeometry& copy,
                                         const Decimation& decimation,
                                         std::vector<std::string>& warnings,
                                         JobControl* job) {
    SourceSurface source(copy);
    NewSurface made = Decimate(decimation).make(source, job);
    MakeOrientedManifold(made.mesh, job);
    TransferAttributes(source, made, job);
    made.mesh.name = copy.Level(0)->Name().toStdString();
    warnings = std::move(made.report.warnings);
    auto result = std::make_unique<LevelGeometry>(made.mesh, job);
    result->Transform() = copy.Transform();
    return result;
}

void Write(const std::string& path,
           LevelGeometry& copy,
           const Decimation& decimation,
           const LevelSource::Options& options,
           ReducedFiles& files,
           JobControl* job) {
    std::vector<std::string> warnings;
    const std::unique_ptr<LevelGeometry> mesh = Decimated(copy, decimation, warnings, job);
    const LevelSource source(*mesh, {options.world, options.space});
    for (std::string& further : WriteMeshFile(path, source, job))
        files.furtherFiles.push_back(std::move(further));
    files.meshes.push_back({path, source.VertexCount(), source.FaceCount(), std::move(warnings)});
}

}  // namespace

std::string LodPath(const std::string& path, uint32_t lod) {
    std::filesystem::path file(path);
    const std::string extension = file.extension().string();
    file.replace_extension(".lod" + std::to_string(lod) + extension);
    return file.string();
}

std::unique_ptr<LevelGeometry> CopyForReduction(LevelGeometry& geometry,
                                                bool includesHidden,
                                                JobControl* job) {
    SourceSurface source(geometry);
    NewSurface copy = CopyOf(source, job);
    const LevelMesh& level = source.Level();
    if (!includesHidden && level.HiddenFaceCount() > 0) {
        std::vector<bool> isHidden(level.faceCount);
        for (uint32_t face = 0; face < level.faceCount; ++face)
            isHidden[face] = level.IsFaceHidden(face);
        if (RemoveFaces(copy, isHidden) == level.faceCount)
            throw HostError("every face is hidden; there is nothing to export");
        MakeOrientedManifold(copy.mesh, job);
    }
    TransferAttributes(source, copy, job);
    copy.mesh.name = geometry.Level(0)->Name().toStdString();
    auto result = std::make_unique<LevelGeometry>(copy.mesh, job);
    result->Transform() = geometry.Transform();
    TransferMask(source, copy.vertexSources, *result, job);
    return result;
}

std::unique_ptr<LevelGeometry> CopyForReduction(PolygonMesh polygons, JobControl* job) {
    if (!HasUniformFaces(polygons)) SplitIntoTriangles(polygons, job);
    MakeOrientedManifold(polygons, job);
    return std::make_unique<LevelGeometry>(polygons, job);
}

ReducedFiles WriteReduced(const std::string& path,
                          LevelGeometry& copy,
                          const MeshReduction& reduction,
                          const LevelSource::Options& options,
                          JobControl* job) {
    ReducedFiles files;
    const LevelMesh& level = *copy.Bound();
    double triangles = static_cast<double>(level.faceCount) * (level.CornersPerFace() - 2);
    if (reduction.decimation) {
        try {
            Write(path, copy, *reduction.decimation, options, files, job);
        } catch (const NothingRemains& error) {
            throw HostError(path + ": " + error.what());
        }
        triangles = static_cast<double>(files.meshes.back().faces);
    }
    const bool keepsBorders = !reduction.decimation || reduction.decimation->keepsBorders;
    for (uint32_t lod = 1; lod <= reduction.lods; ++lod) {
        triangles *= static_cast<double>(reduction.lodRatio);
        Decimation decimation;
        decimation.faces = static_cast<uint32_t>(std::max(std::lround(triangles), 1L));
        decimation.keepsBorders = keepsBorders;
        const std::string file = LodPath(path, lod);
        try {
            Write(file, copy, decimation, options, files, job);
        } catch (const NothingRemains&) {
            files.warnings.push_back(file +
                                     " and the following levels of detail are not written, "
                                     "because no faces would remain");
            break;
        }
    }
    return files;
}

}  // namespace trovik
