// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "framework/multires/LevelGeometry.h"

#include <cstring>
#include <string>
#include <vector>

namespace trovik::test {

/// Everything that the user sees of a geometry and its bound level, and the masks and layers of all
/// levels.
class VisibleState {
public:
    explicit VisibleState(LevelGeometry& geometry) {
        LevelMesh& mesh = *geometry.Bound();
        Begin("level");
        Put(geometry.BoundIndex());
        Begin("transform");
        Put(geometry.Transform().ToWorld());
        Put(geometry.Transform().ToLocal());
        Begin("faces");
        for (uint32_t i = 0; i < mesh.faceVertexIndices.fill; ++i)
            Put(mesh.faceVertexIndices.array[i]);
        Begin("positions");
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) Put(mesh.Position(v));
        Begin("normals");
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const PackedNormal& normal = mesh.vertexNormals.array[v];
            for (const int16_t word : {normal.x, normal.y, normal.z}) Put(word);
        }
        for (uint32_t level = 0; level < geometry.LevelCount(); ++level) {
            const LevelMesh& one = *geometry.Level(level);
            Begin("mask and hidden faces of level " + std::to_string(level));
            Put(one.FrozenVertexCount());
            for (uint32_t v = 0; v < one.VertexCount(); ++v) {
                Put(one.Freeze(v));
                Put(one.FreezeOfTools(v));
            }
            for (uint32_t face = 0; face < one.faceCount; ++face) Put(one.IsFaceHidden(face));
        }
        for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
            AppendLayers(geometry, *geometry.Level(level));
    }
    bool operator==(const VisibleState&) const = default;

    /// Returns the name of the first part that differs; empty if the states are equal.
    std::string DifferenceTo(const VisibleState& other) const {
        for (std::size_t i = 0; i < parts.size(); ++i)
            if (i >= other.parts.size() || parts[i] != other.parts[i]) return parts[i].name;
        return parts.size() == other.parts.size() ? "" : "number of layers";
    }

private:
    struct Part {
        std::string name;
        std::string bytes;
        bool operator==(const Part&) const = default;
    };
    void AppendLayers(const LevelGeometry& geometry, const LevelMesh& mesh) {
        for (const auto& layer : geometry.Layers().OfLevel(mesh)) {
            const SculptLayer::Properties& given = layer->UserProperties();
            Begin("layer " + given.name);
            Put(given.strength);
            Put(given.visible);
            Put(given.writable);
            Put(layer.get() == mesh.ActiveLayer());
            Begin("offsets of layer " + given.name);
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v) Put(layer->Offset(v));
            Begin("rest positions of layer " + given.name);
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v) Put(layer->Rest(v));
        }
    }
    template <typename T>
    void Put(const T& value) {
        char raw[sizeof value];
        std::memcpy(raw, &value, sizeof value);
        parts.back().bytes.append(raw, sizeof value);
    }
    void Begin(const std::string& name) { parts.push_back({name, ""}); }

    std::vector<Part> parts;
};

}  // namespace trovik::test
