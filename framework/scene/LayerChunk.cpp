// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/LayerChunk.h"

#include "framework/math/IsFinite.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/scene/SceneChunks.h"

#include <cmath>

namespace trovik {

namespace {

/// The first format in which layers can be hidden.
constexpr uint32_t visibilityFormat = 331;

struct StoredEntry {
    uint32_t vertex;
    SculptLayer::State state;
};
static_assert(sizeof(StoredEntry) == 40);
static_assert(sizeof(LayerBase::LayeredVertex) == 40);
static_assert(sizeof(LayerBase::StoredNormal) == 24);

bool IsFinite(const SculptLayer::State& state) {
    return IsFinite(state.rest) && IsFinite(state.offset) && IsFinite(state.seen);
}

}  // namespace

void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer) {
    auto level = static_cast<uint32_t>(layer.Level()->Index());
    QString name = QString::fromStdString(layer.Name());
    float strength = layer.Strength();
    uint8_t writable = layer.UserProperties().writable ? 1 : 0;
    uint8_t active = layer.Level()->ActiveLayer() == &layer ? 1 : 0;
    stream.Transfer(level);
    static_cast<Stream&>(stream).Transfer(name);
    stream.Transfer(strength);
    stream.Transfer(writable);
    stream.Transfer(active);
    uint8_t visible = layer.UserProperties().visible ? 1 : 0;
    if (stream.IsFormatAtLeast(visibilityFormat)) stream.Transfer(visible);
    uint32_t count = layer.SlotCount();
    stream.Transfer(count);
    WriteGathered<StoredEntry>(stream, count, [&layer](uint64_t index) {
        const auto slot = static_cast<uint32_t>(index);
        return StoredEntry{layer.VertexOfSlot(slot), layer.StateOfSlot(slot)};
    });
}

std::shared_ptr<SculptLayer> ReadLayerChunk(SceneStream& stream, const LevelGeometry& geometry) {
    uint32_t level = 0;
    QString name;
    float strength = 0.0f;
    uint8_t writable = 0;
    uint8_t active = 0;
    stream.Transfer(level);
    static_cast<Stream&>(stream).Transfer(name);
    stream.Transfer(strength);
    stream.Transfer(writable);
    stream.Transfer(active);
    uint8_t visible = 1;
    if (stream.IsFormatAtLeast(visibilityFormat)) stream.Transfer(visible);
    if (level >= geometry.LevelCount())
        SceneStream::Refuse(
            QStringLiteral("a layer belongs to level %1, which does not exist").arg(level));
    if (!std::isfinite(strength))
        SceneStream::Refuse(QStringLiteral("the strength of a layer is not finite"));
    LevelMesh* mesh = geometry.Level(level);
    auto layer = std::make_shared<SculptLayer>(mesh, name.toStdString());
    layer->SetUserProperties({name.toStdString(), strength, visible != 0, writable != 0});
    for (const StoredEntry& entry : ReadList<StoredEntry>(stream)) {
        if (entry.vertex >= mesh->VertexCount())
            SceneStream::Refuse(QStringLiteral("there is no vertex %1").arg(entry.vertex));
        if (!IsFinite(entry.state)) {
            SceneStream::Refuse(
                QStringLiteral("the layer's values at vertex %1 are not finite").arg(entry.vertex));
        }
        const uint32_t slot = layer->SlotCount();
        if (layer->SlotOf(entry.vertex) != slot)
            SceneStream::Refuse(QStringLiteral("vertex %1 occurs twice").arg(entry.vertex));
        SculptLayer::State state = entry.state;
        layer->SwapState(slot, state);
    }
    if (active != 0) mesh->SetActiveLayer(layer.get());
    return layer;
}

void WriteLayerBaseChunk(SceneStream& stream, uint32_t level, const LayerBase& ground) {
    stream.Transfer(level);
    WriteList(stream, ground.LayeredVertices());
    WriteList(stream, ground.Normals());
}

void ReadLayerBaseChunk(SceneStream& stream, LevelGeometry& geometry) {
    uint32_t level = 0;
    stream.Transfer(level);
    if (level >= geometry.LevelCount()) {
        SceneStream::Refuse(
            QStringLiteral("a layer base belongs to level %1, which does not exist").arg(level));
    }
    const uint32_t vertexCount = geometry.Level(level)->VertexCount();
    // Vertices must be in ascending order without duplicates, because the lists are searched.
    const auto check = [vertexCount](const auto& list) {
        uint64_t least = 0;
        for (const auto& one : list) {
            if (one.vertex >= vertexCount)
                SceneStream::Refuse(QStringLiteral("there is no vertex %1").arg(one.vertex));
            if (one.vertex < least)
                SceneStream::Refuse(QStringLiteral("vertex %1 is out of order").arg(one.vertex));
            least = uint64_t{one.vertex} + 1;
        }
    };
    auto layeredVertices = ReadList<LayerBase::LayeredVertex>(stream);
    check(layeredVertices);
    for (const LayerBase::LayeredVertex& layeredVertex : layeredVertices) {
        if (!IsFinite(layeredVertex.base) || !IsFinite(layeredVertex.position)) {
            SceneStream::Refuse(QStringLiteral("the layer base of vertex %1 is not finite")
                                    .arg(layeredVertex.vertex));
        }
    }
    auto normals = ReadList<LayerBase::StoredNormal>(stream);
    check(normals);
    geometry.Layers()
        .LayerBaseOf(*geometry.Level(level))
        .Restore(std::move(layeredVertices), std::move(normals));
}

}  // namespace trovik
