// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelGeometry.h"

#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/memory/FilledStore.h"
#include "framework/memory/FreeMemory.h"
#include "framework/memory/SystemMemory.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/mesh/LevelRefiner.h"
#include "framework/mesh/StrokeResources.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/multires/FreezeCarrying.h"
#include "framework/multires/HiddenFaces.h"
#include "framework/multires/LevelChange.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

constexpr uint64_t maxElements = 0xfffffffeu;

}  // namespace

LevelGeometry::LevelGeometry(const PolygonMesh& polygons, JobControl* job)
    : layers(std::make_unique<LayerStack>()) {
    history.SetGuard([this](const std::string& action) { RefuseInStroke(action); });
    CheckPolygonMesh(polygons, polygons.name.empty() ? "mesh" : polygons.name, job);
    PolygonMesh uniform = ToUniformFaces(polygons, job);
    attributes = std::move(uniform.attributes);
    auto base = std::unique_ptr<LevelMesh>(new LevelMesh(this, 0));
    const auto faces = static_cast<uint32_t>(uniform.faceSizes.size());
    base->AllocateFaces(faces, uniform.faceSizes[0] == 4 ? 1 : 0);
    std::copy(
        uniform.faceVertices.begin(), uniform.faceVertices.end(), base->faceVertexIndices.array);
    base->AllocateVertices(static_cast<uint32_t>(uniform.positions.size()));
    for (uint32_t v = 0; v < base->vertexCount; ++v) {
        const auto& p = uniform.positions[v];
        base->SetPosition(v, {p[0], p[1], p[2]});
    }
    base->MakeBaseTables(job);
    base->ComputeNormals(job);
    base->SetName(QString::fromStdString(polygons.name));
    levels.push_back(std::move(base));
}

LevelGeometry::~LevelGeometry() {
    // Ends open strokes now. Otherwise, a brush that is bound to a level would unlock that level
    // after it was destroyed.
    for (const auto& level : levels) {
        StrokeResources* holder = level->LockResources();
        if (holder != nullptr && !level->Changes().empty()) holder->EndStroke();
    }
    // The destructors of the levels, including those in undo steps, access members of this class.
    history.Clear();
    levels.clear();
}

MeshChange* LevelGeometry::StartChange(LevelMesh& level) { return new LevelChange(&level); }

trovik::Layer* LevelGeometry::LayerOf(LevelMesh& level) { return level.ActiveLayer(); }

void LevelGeometry::LevelDestroyed(LevelMesh& level) {
    layers->Forget(level);
    for (SculptLayer* layer : level.Layers()) layer->OnLevelDestroyed();
    for (LevelChange* change : level.Changes()) change->Detach();
}

SubdivisionLevel* LevelGeometry::LowestLevel() const { return levels.front().get(); }
SubdivisionLevel* LevelGeometry::HighestLevel() const { return levels.back().get(); }
SubdivisionLevel* LevelGeometry::LevelByIndex(uint32_t index) const {
    return index < levels.size() ? levels[index].get() : nullptr;
}
trovik::Transformation* LevelGeometry::Transformation() const {
    return const_cast<MatrixTransform*>(&transform);
}

uint64_t LevelGeometry::CountNextLevelVertices() const {
    return uint64_t{levels.back()->VertexCount()} + levels.back()->faceCount + CountEdges();
}

// A refinement has two edges for each coarse edge and one for each face corner.
uint64_t LevelGeometry::CountEdges() const {
    const LevelMesh& base = *levels.front();
    uint64_t edges =
        LevelRefiner(*levels.front()).CountFineVertices() - base.VertexCount() - base.faceCount;
    for (uint32_t i = 0; i + 1 < LevelCount(); ++i)
        edges = 2 * edges + uint64_t{levels[i]->faceCount} * levels[i]->CornersPerFace();
    return edges;
}

void LevelGeometry::RefuseInStroke(const std::string& action) const {
    for (const auto& level : levels) {
        if (level->Changes().empty()) continue;
        const std::string meshName = levels[0]->Name().toStdString();
        std::string message = meshName.empty() ? std::string() : meshName + ": ";
        message.append(action).append(" is refused: a stroke on level ");
        throw HostError(message + std::to_string(level->Index()) + " has not ended");
    }
}

bool LevelGeometry::FindMirror(JobControl* job) {
    mirror = TopologicalMirror::Find(*levels.front(), 0, job);
    return mirror != nullptr;
}

std::unique_ptr<LevelMesh> LevelGeometry::MakeLevel(JobControl* job) const {
    LevelMesh& coarse = *levels.back();
    const uint64_t faces = static_cast<uint64_t>(coarse.faceCount) * coarse.CornersPerFace();
    const uint64_t vertices = CountNextLevelVertices();
    CheckForecast(1, std::numeric_limits<uint64_t>::max());
    auto* owner = const_cast<LevelGeometry*>(this);
    auto fine = std::unique_ptr<LevelMesh>(new LevelMesh(owner, static_cast<int>(levels.size())));
    try {
        fine->AllocateFaces(static_cast<uint32_t>(faces), 1);
        fine->AllocateVertices(static_cast<uint32_t>(vertices));
        ResizeStore(fine->vertexNormals, fine->vertexCount);
        PreferLargePages(fine->vertexNormals.array,
                         uint64_t{fine->vertexCount} * sizeof(PackedNormal));
    } catch (Error* error) {
        Error::Dispose(error);
        throw HostError("subdividing to " + std::to_string(faces) +
                        " faces needs more memory than the limit allows");
    } catch (const std::bad_alloc&) {
        throw HostError("subdividing to " + std::to_string(faces) +
                        " faces needs more memory than is available");
    }
    std::fill_n(fine->vertexNormals.array, fine->vertexCount, PackedNormal{0, 0, 0, 0});
    LevelRefiner(coarse, job).RefineTopology(*fine);
    return fine;
}

LevelMesh& LevelGeometry::AddLevel(JobControl* job) {
    levels.push_back(MakeLevel(job));
    return *levels.back();
}

LevelSwitch LevelGeometry::Subdivide(uint64_t byteBudget, JobControl* job) {
    CheckForecast(1, byteBudget);
    LevelSwitch before = StateOfSwitch(job);
    LevelMesh& coarse = *levels.back();
    std::unique_ptr<LevelMesh> made;
    try {
        CarryTo(LevelCount() - 1, before.carried, job);
        made = MakeLevel(job);
        LevelMesh& target = *made;
        LevelRefiner(coarse, job)
            .RefinePositions(target, [&target](uint32_t vertex, const Vector& position) {
                target.SetPosition(vertex, position);
            });
        CarryAllFreeze(coarse, target, job);
        HideChildren(coarse, target);
        target.ComputeNormals(job);
    } catch (...) {
        Revert(before);
        throw;
    }
    levels.push_back(std::move(made));
    DropUnchanged(bound);
    // The new level was computed from the current positions, so the two levels are synchronised.
    levels[bound]->Older().fromAbove.Drop();
    levels[bound]->Older().freezeFromAbove.Drop();
    bound = LevelCount() - 1;
    KeepSeen(bound);
    ReportSwitch(before.bound, before.carried);
    return before;
}

LevelForecast LevelGeometry::Forecast(uint32_t times) const {
    const LevelMesh& top = *levels.back();
    uint64_t corners = top.CornersPerFace();
    uint64_t faces = top.faceCount;
    uint64_t vertices = top.VertexCount();
    uint64_t edges = CountEdges();
    LevelForecast forecast;
    for (uint32_t i = 0; i < times && faces <= maxElements; ++i) {
        vertices += edges + faces;
        edges = 2 * edges + corners * faces;
        faces *= corners;
        corners = 4;
        forecast.bytes += faces * LevelForecast::bytesPerFace +
                          vertices * (LevelForecast::bytesPerVertex + sizeof(Vector));
        ++forecast.levels;
    }
    forecast.faces = faces;
    forecast.vertices = vertices;
    return forecast;
}

void LevelGeometry::CheckForecast(uint32_t times,
                                  uint64_t byteBudget,
                                  uint64_t additionalBytes) const {
    const LevelForecast forecast = Forecast(times);
    const std::string level = std::to_string(levels.size() - 1 + forecast.levels);
    // The index type must also be able to count four indices per face.
    if (forecast.vertices > maxElements || forecast.faces > maxElements / 4) {
        throw HostError("subdividing to level " + level + " would give " +
                        std::to_string(forecast.faces) + " faces; a level holds at most " +
                        std::to_string(maxElements / 4));
    }
    const auto refuse = [&](uint64_t bytes, const std::string& reason) {
        throw HostError("subdividing to level " + level + " would give " +
                        std::to_string(forecast.faces) + " faces and " +
                        std::to_string(forecast.vertices) + " vertices and take " +
                        std::to_string(bytes) + " bytes; " + reason);
    };
    if (forecast.bytes > byteBudget)
        refuse(forecast.bytes, "the budget is " + std::to_string(byteBudget));
    const FreeMemory free = QueryFreeMemory();
    if (forecast.bytes + additionalBytes > free.bytes)
        refuse(forecast.bytes + additionalBytes, "only " + free.Text());
}

std::vector<Vector> LevelGeometry::RefinedPositions(uint32_t index) const {
    const LevelMesh& fine = *levels[index + 1];
    std::vector<Vector> positions(fine.VertexCount());
    LevelRefiner(*levels[index])
        .RefinePositions(fine,
                         [&positions](uint32_t vertex, const Vector& p) { positions[vertex] = p; });
    return positions;
}

std::string LevelGeometry::WhyTopologyIsFixed() const {
    if (LevelCount() != 1) return "has more than one level";
    if (Level(0)->meshType == 1) return "consists of quads";
    if (!layers->OfLevel(*Level(0)).empty()) return "has layers";
    return {};
}

PolygonMesh LevelGeometry::ToPolygons(bool world) const {
    const LevelMesh& level = *Bound();
    PolygonMesh polygons;
    polygons.name = level.Name().toStdString();
    polygons.positions.resize(level.VertexCount());
    polygons.normals.resize(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        Vector p = level.Position(v);
        Vector normal = Unpacked(level.vertexNormals.array[v]).Normalized();
        if (world) {
            p = transform.ToWorld().AffineTransform(p, 1.0f);
            normal = WorldNormal(transform, normal);
        }
        polygons.positions[v] = {p.x, p.y, p.z};
        polygons.normals[v] = {normal.x, normal.y, normal.z};
    }
    polygons.faceSizes.assign(level.faceCount, level.CornersPerFace());
    polygons.faceVertices.assign(
        level.faceVertexIndices.array,
        level.faceVertexIndices.array +
            static_cast<std::size_t>(level.faceCount) * level.CornersPerFace());
    return polygons;
}

}  // namespace trovik
