// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SurfaceTransfer.h"

#include "framework/jobs/JobPhase.h"
#include "framework/layers/LayerStack.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/LevelPositions.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr uint32_t none = NewSurface::none;
constexpr uint32_t own = NewSurface::own;

uint32_t SourceOf(const std::vector<uint32_t>& sources, std::size_t index) {
    return index < sources.size() ? sources[index] : none;
}

/// Where each vertex or face of the new surface gets its data from.
class Origins {
public:
    /// \param pointOf  returns the mesh-local position of an element.
    template <typename PointOf>
    Origins(SourceSurface& source,
            const std::vector<uint32_t>& elementSources,
            std::size_t count,
            PointOf pointOf,
            JobControl* job)
        : sources(elementSources) {
        std::vector<Vector> points;
        for (std::size_t i = 0; i < count; ++i) {
            if (SourceOf(sources, i) != none) continue;
            elements.push_back(i);
            points.push_back(pointOf(i));
        }
        if (!points.empty()) nearest = source.Nearest(points, job);
    }

    /// Calls `copy(element, source)` for each element with a source, and `sample(element, nearest
    /// point)` for each without one. Elements with their own data are skipped.
    template <typename Copy, typename Sample>
    void ForEach(std::size_t count, const Copy& copy, const Sample& sample) const {
        for (std::size_t i = 0; i < count; ++i)
            if (const uint32_t from = SourceOf(sources, i); from != none && from != own)
                copy(i, from);
        for (std::size_t i = 0; i < elements.size(); ++i) sample(elements[i], nearest[i]);
    }

private:
    const std::vector<uint32_t>& sources;
    std::vector<std::size_t> elements;
    std::vector<NearestPoint> nearest;
};

Origins OriginsOfVertices(SourceSurface& source,
                          const std::vector<uint32_t>& sources,
                          const LevelMesh& level,
                          JobControl* job) {
    return {source,
            sources,
            level.VertexCount(),
            [&level](std::size_t v) { return level.Position(static_cast<uint32_t>(v)); },
            job};
}

Vector Of(const std::array<float, 3>& p) { return {p[0], p[1], p[2]}; }

void TransferColors(SourceSurface& source, NewSurface& made, JobControl* job) {
    const auto& colors = source.Attributes().colors;
    PolygonMesh& mesh = made.mesh;
    auto& result = mesh.attributes.colors;
    if (colors.empty() && result.empty()) return;
    const std::size_t count = mesh.positions.size();
    const Origins origins(
        source,
        made.vertexSources,
        count,
        [&](std::size_t v) { return Of(mesh.positions[v]); },
        job);
    constexpr std::array<float, 4> white = {1.0f, 1.0f, 1.0f, 1.0f};
    result.resize(count, white);
    const auto colorOf = [&](uint32_t vertex) { return colors.empty() ? white : colors[vertex]; };
    origins.ForEach(
        count,
        [&](std::size_t v, uint32_t from) { result[v] = colorOf(from); },
        [&](std::size_t v, const NearestPoint& at) {
            for (std::size_t channel = 0; channel < 4; ++channel) {
                result[v][channel] = 0.0f;
                for (std::size_t i = 0; i < 3; ++i)
                    result[v][channel] += at.weights[i] * colorOf(at.vertices[i])[channel];
            }
        });
}

/// Puts the old names of groups or materials before the new ones, and changes the values of the
/// faces with new names accordingly.
void MergeNames(const std::vector<std::string>& old,
                std::vector<std::string>& names,
                std::vector<uint32_t>& values) {
    std::vector<std::string> all = old;
    std::vector<uint32_t> numbers;
    for (const std::string& name : names) {
        const auto found = std::ranges::find(all, name);
        numbers.push_back(static_cast<uint32_t>(found - all.begin()));
        if (found == all.end()) all.push_back(name);
    }
    for (uint32_t& value : values)
        if (value != SurfaceAttributes::none) value = numbers[value];
    names = std::move(all);
}

void TransferFaceData(SourceSurface& source, NewSurface& made, JobControl* job) {
    const SurfaceAttributes& from = source.Attributes();
    SurfaceAttributes& to = made.mesh.attributes;
    MergeNames(from.groupNames, to.groupNames, to.faceGroups);
    MergeNames(from.materialNames, to.materialNames, to.faceMaterials);
    const std::pair<const std::vector<uint32_t>*, std::vector<uint32_t>*> lists[] = {
        {&from.faceGroups, &to.faceGroups},
        {&from.faceMaterials, &to.faceMaterials},
        {&from.faceSmoothing, &to.faceSmoothing}};
    bool isAny = false;
    for (const auto& list : lists) isAny = isAny || !list.first->empty() || !list.second->empty();
    if (!isAny) return;
    const PolygonMesh& mesh = made.mesh;
    std::vector<std::size_t> firstCorners(mesh.faceSizes.size());
    std::size_t corner = 0;
    for (std::size_t face = 0; face < firstCorners.size(); ++face) {
        firstCorners[face] = corner;
        corner += mesh.faceSizes[face];
    }
    const auto centre = [&](std::size_t face) {
        Vector sum;
        for (uint32_t k = 0; k < mesh.faceSizes[face]; ++k)
            sum += Of(mesh.positions[mesh.faceVertices[firstCorners[face] + k]]);
        return sum * (1.0f / static_cast<float>(mesh.faceSizes[face]));
    };
    const std::size_t count = mesh.faceSizes.size();
    const Origins origins(source, made.faceSources, count, centre, job);
    for (const auto& list : lists) {
        const auto* old = list.first;
        auto* result = list.second;
        if (old->empty() && result->empty()) continue;
        result->resize(count, SurfaceAttributes::none);
        const auto valueOf = [&old](uint32_t face) {
            return old->empty() ? SurfaceAttributes::none : (*old)[face];
        };
        origins.ForEach(
            count,
            [&](std::size_t face, uint32_t origin) { (*result)[face] = valueOf(origin); },
            [&](std::size_t face, const NearestPoint& at) { (*result)[face] = valueOf(at.face); });
    }
}

/// Removes all attributes except UVs, unless elements have their own data.
void DropUnusedAttributes(NewSurface& made) {
    const auto isOwn = [](uint32_t source) { return source == own; };
    if (std::ranges::any_of(made.vertexSources, isOwn) ||
        std::ranges::any_of(made.faceSources, isOwn))
        return;
    SurfaceAttributes uvs;
    uvs.uvs = std::move(made.mesh.attributes.uvs);
    uvs.cornerUvs = std::move(made.mesh.attributes.cornerUvs);
    made.mesh.attributes = std::move(uvs);
}

/// Adds a vertex to a layer without moving it.
void AddToLayer(SculptLayer& layer, LevelMesh& level, uint32_t vertex, const Vector& offset) {
    const Vector position = level.Position(vertex);
    const float strength = layer.EffectiveStrength();
    SculptLayer::State state{position - offset * strength, offset, position};
    if (strength == 0.0f) state.rest = position;
    layer.SwapState(layer.SlotOf(vertex), state);
}

}  // namespace

void TransferAttributes(SourceSurface& source, NewSurface& made, JobControl* job) {
    const SurfaceAttributes& from = source.Attributes(job);
    DropUnusedAttributes(made);
    SurfaceAttributes& to = made.mesh.attributes;
    to.hasAlpha = to.hasAlpha || from.hasAlpha;
    std::vector<std::string> files = from.materialFiles;
    for (std::string& file : to.materialFiles)
        if (std::ranges::find(files, file) == files.end()) files.push_back(std::move(file));
    to.materialFiles = std::move(files);
    to.space = from.space;
    TransferColors(source, made, job);
    TransferFaceData(source, made, job);
}

void TransferMask(SourceSurface& source,
                  const std::vector<uint32_t>& vertexSources,
                  LevelGeometry& target,
                  JobControl* job) {
    const LevelMesh& from = source.Level();
    if (from.FrozenVertexCount() == 0) return;
    LevelMesh& to = *target.Bound();
    const Origins origins = OriginsOfVertices(source, vertexSources, to, job);
    origins.ForEach(
        to.VertexCount(),
        [&](std::size_t v, uint32_t origin) {
            to.SetFreeze(static_cast<uint32_t>(v), from.Freeze(origin));
        },
        [&](std::size_t v, const NearestPoint& at) {
            float amount = 0.0f;
            for (std::size_t i = 0; i < 3; ++i)
                amount += at.weights[i] * static_cast<float>(from.Freeze(at.vertices[i]));
            to.SetFreeze(static_cast<uint32_t>(v), static_cast<uint8_t>(std::lround(amount)));
        });
}

void TransferLayers(SourceSurface& source,
                    const std::vector<uint32_t>& vertexSources,
                    LevelGeometry& target,
                    JobControl* job) {
    const LevelMesh& from = source.Level();
    const LayerStack::Layers layers = source.Geometry().Layers().OfLevel(from);
    if (layers.empty()) return;
    LevelMesh& to = *target.Bound();
    const Origins origins = OriginsOfVertices(source, vertexSources, to, job);
    for (const auto& old : layers) {
        auto layer = std::make_shared<SculptLayer>(&to, old->Name());
        layer->SetUserProperties(old->UserProperties());
        const auto offsetOf = [&](uint32_t vertex) {
            const uint32_t slot = old->FindSlot(vertex);
            return slot == SculptLayer::noSlot ? Vector() : old->StateOfSlot(slot).offset;
        };
        origins.ForEach(
            to.VertexCount(),
            [&](std::size_t v, uint32_t origin) {
                if (old->FindSlot(origin) == SculptLayer::noSlot) return;
                AddToLayer(*layer, to, static_cast<uint32_t>(v), offsetOf(origin));
            },
            [&](std::size_t v, const NearestPoint& at) {
                Vector offset;
                for (std::size_t i = 0; i < 3; ++i)
                    offset += offsetOf(at.vertices[i]) * at.weights[i];
                if (offset == Vector()) return;
                AddToLayer(*layer, to, static_cast<uint32_t>(v), offset);
            });
        target.Layers().Insert(layer);
        if (from.ActiveLayer() == old.get()) to.SetActiveLayer(layer.get());
    }
    target.Layers().LayerBaseOf(to).Settle(to, target.Layers().OfLevel(to));
}

}  // namespace trovik
