// SPDX-License-Identifier: Apache-2.0
#include "MeshInfo.h"

#include "Interruption.h"
#include "ProgressLine.h"
#include "ThicknessReport.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/remesh/MeshRepair.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// Returns the attributes of a mesh as text, one line each.
std::vector<std::pair<std::string, std::string>> AttributeLines(const PolygonMesh& polygons) {
    const SurfaceAttributes& attributes = polygons.attributes;
    std::vector<std::pair<std::string, std::string>> lines;
    if (!polygons.normals.empty()) lines.push_back({"normals", "one per vertex"});
    if (!attributes.cornerUvs.empty()) {
        const PolygonSource source(polygons);
        lines.push_back({"texture",
                         std::to_string(attributes.uvs.size()) + " coordinates, " +
                             (source.UvsFollowVertices() ? "no seams" : "with seams")});
    }
    if (!attributes.colors.empty())
        lines.push_back({"colours", attributes.hasAlpha ? "with alpha" : "without alpha"});
    if (!attributes.groupNames.empty())
        lines.push_back({"groups", std::to_string(attributes.groupNames.size())});
    if (!attributes.materialNames.empty()) {
        std::string text = std::to_string(attributes.materialNames.size());
        for (const std::string& file : attributes.materialFiles)
            text += (file == attributes.materialFiles.front() ? ", defined in " : ", ") + file;
        lines.push_back({"materials", text});
    }
    if (!attributes.faceSmoothing.empty()) lines.push_back({"smoothing", "groups of faces"});
    if (attributes.space.metersPerUnit > 0.0)
        lines.push_back({"units", UnitName(attributes.space.metersPerUnit)});
    if (attributes.space.up != UpAxis::Unknown)
        lines.push_back({"up", UpAxisName(attributes.space.up)});
    return lines;
}

/// Returns the attributes of a mesh as JSON.
nlohmann::json AttributeJson(const PolygonMesh& polygons) {
    const SurfaceAttributes& attributes = polygons.attributes;
    return {{"normals", !polygons.normals.empty()},
            {"textureCoordinates", attributes.uvs.size()},
            {"textureSeams",
             !attributes.cornerUvs.empty() && !PolygonSource(polygons).UvsFollowVertices()},
            {"colors", !attributes.colors.empty()},
            {"alpha", attributes.hasAlpha},
            {"groups", attributes.groupNames},
            {"materials", attributes.materialNames},
            {"materialFiles", attributes.materialFiles},
            {"smoothingGroups", !attributes.faceSmoothing.empty()},
            {"units", UnitName(attributes.space.metersPerUnit)},
            {"up", UpAxisName(attributes.space.up)}};
}

/// A mesh as stored in its file, and the level 0 that is created from it.
struct MeshInfo {
    std::size_t vertices = 0;
    std::size_t faces = 0;
    std::map<uint32_t, std::size_t> facesByCorners;
    AxisAlignedBoundingBox box;
    std::vector<std::pair<std::string, std::string>> attributeLines;
    nlohmann::json attributesJson;
    std::vector<std::string> notes;
    ManifoldReport manifold;
    bool quads = false;
    uint32_t baseVertices = 0;
    uint32_t baseFaces = 0;
    std::size_t borderEdges = 0;
    MeshDefects defects;
    std::vector<DefectAdvice> advice;
    std::optional<ThicknessReport> thickness;
};

MeshInfo Examine(const std::string& path, std::optional<float> minThickness) {
    PolygonMesh polygons = ReadMeshFile(path);
    ThrowIfInterrupted();
    MeshInfo info;
    info.vertices = polygons.positions.size();
    info.faces = polygons.faceSizes.size();
    for (const uint32_t size : polygons.faceSizes) ++info.facesByCorners[size];
    for (const auto& p : polygons.positions) info.box.Extend({p[0], p[1], p[2]});
    info.attributeLines = AttributeLines(polygons);
    info.attributesJson = AttributeJson(polygons);
    info.notes = polygons.notes;
    if (std::string note = RefinementNote(polygons); !note.empty())
        info.notes.push_back(std::move(note));
    info.defects = FindDefects(polygons);
    info.advice = AdviceFor(info.defects);
    ThrowIfInterrupted();
    if (minThickness) {
        ProgressLine job(true);
        info.thickness = {*minThickness, FindThinWalls(polygons, *minThickness, &job)};
    }
    info.manifold = MakeOrientedManifold(polygons);
    LevelGeometry geometry(polygons);
    LevelMesh& base = *geometry.Level(0);
    info.quads = base.meshType == 1;
    info.baseVertices = base.VertexCount();
    info.baseFaces = base.faceCount;
    for (uint32_t face = 0; face < base.faceCount; ++face)
        for (uint32_t side = 0; side < base.CornersPerFace(); ++side)
            if (base.QuadEdgeNeighbour(face, side) == openBorder) ++info.borderEdges;
    return info;
}

nlohmann::json DefectsJson(const MeshInfo& info) {
    const MeshDefects& defects = info.defects;
    nlohmann::json json = {{"coincidentVertices", defects.coincidentVertices},
                           {"degenerateFaces", defects.degenerateFaces},
                           {"duplicateFaces", defects.duplicateFaces},
                           {"misorientedFaces", defects.misorientedFaces},
                           {"pieces", defects.pieces},
                           {"smallPieces", defects.smallPieces},
                           {"holes", defects.holes},
                           {"largestHole", defects.largestHole}};
    json["repairs"] = nlohmann::json::array();
    for (const DefectAdvice& advice : info.advice)
        json["repairs"].push_back(nlohmann::json::parse(advice.step));
    return json;
}

}  // namespace

nlohmann::json MeshInfoJson(const std::string& path, std::optional<float> minThickness) {
    const MeshInfo info = Examine(path, minThickness);
    const AxisAlignedBoundingBox& box = info.box;
    nlohmann::json bySize = nlohmann::json::object();
    for (const auto& [size, count] : info.facesByCorners) bySize[std::to_string(size)] = count;
    return {{"file", path},
            {"vertices", info.vertices},
            {"faces", info.faces},
            {"facesByCorners", bySize},
            {"low", {box.minX, box.minY, box.minZ}},
            {"high", {box.maxX, box.maxY, box.maxZ}},
            {"carries", info.attributesJson},
            {"verticesAddedBySplitting", info.manifold.addedVertices},
            {"level0",
             {{"type", info.quads ? "quads" : "triangles"},
              {"vertices", info.baseVertices},
              {"faces", info.baseFaces},
              {"borderEdges", info.borderEdges}}},
            {"defects", DefectsJson(info)},
            {"thickness", info.thickness ? JsonOf(*info.thickness) : nlohmann::json()},
            {"notes", info.notes}};
}

void PrintMeshInfo(const std::string& path, std::optional<float> minThickness, bool quiet) {
    const MeshInfo info = Examine(path, minThickness);
    if (quiet) return;
    std::printf("%s\n", path.c_str());
    std::printf("  vertices  %zu\n  faces     %zu", info.vertices, info.faces);
    const char* separator = "  (";
    for (const auto& [size, count] : info.facesByCorners) {
        std::printf("%s%zu with %u corners", separator, count, size);
        separator = ", ";
    }
    const AxisAlignedBoundingBox& box = info.box;
    std::printf(")\n  box       %g %g %g  to  %g %g %g\n",
                static_cast<double>(box.minX),
                static_cast<double>(box.minY),
                static_cast<double>(box.minZ),
                static_cast<double>(box.maxX),
                static_cast<double>(box.maxY),
                static_cast<double>(box.maxZ));
    for (const auto& [what, text] : info.attributeLines)
        std::printf("  %-9s %s\n", what.c_str(), text.c_str());
    if (!info.manifold.Untouched())
        std::printf("  split     added %zu vertices where the mesh is not an oriented manifold\n",
                    info.manifold.addedVertices);
    std::printf("  level 0   %u %s, %u vertices, %zu border edges\n",
                info.baseFaces,
                info.quads ? "quads" : "triangles",
                info.baseVertices,
                info.borderEdges);
    for (const DefectAdvice& advice : info.advice)
        std::printf("  defect    %s; %s repairs it\n", advice.defect.c_str(), advice.step.c_str());
    if (info.thickness) std::printf("  thickness %s\n", TextOf(*info.thickness).c_str());
    for (const std::string& note : info.notes) std::printf("  note      %s\n", note.c_str());
}

}  // namespace trovik
