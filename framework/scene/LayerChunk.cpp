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
static_assert(sizeof(LayerGround::Knot) == 40);
static_assert(sizeof(LayerGround::NotedNormal) == 24);

bool IsFinite(const SculptLayer::State& state) {
    return IsFinite(state.rest) && IsFinite(state.offset) && IsFinite(state.seen);
}

}  // namespace

void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer) {
    auto level = static_cast<uint32_t>(layer.Level()->Index());
    QString name = QString::fromStdString(layer.Name());
    float strength = layer.Strength();
    uint8_t writable = layer.Given().writable ? 1 : 0;
    uint8_t active = layer.Level()->ActiveLayer() == &layer ? 1 : 0;
    stream.Transfer(level);
    static_cast<Stream&>(stream).Transfer(name);
    stream.Transfer(strength);
    stream.Transfer(writable);
    stream.Transfer(active);
    uint8_t visible = layer.Given().visible ? 1 : 0;
    if (stream.IsFormatAtLeast(visibilityFormat)) stream.Transfer(visible);
    std::vector<StoredEntry> entries(layer.SlotCount());
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot)
        entries[slot] = {layer.VertexOfSlot(slot), layer.StateOfSlot(slot)};
    WriteList(stream, entries);
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
        SceneStream::Refuse(QStringLiteral("a layer of level %1, which does not exist").arg(level));
    if (!std::isfinite(strength))
        SceneStream::Refuse(QStringLiteral("the strength of a layer is not finite"));
    LevelMesh* mesh = geometry.Level(level);
    auto layer = std::make_shared<SculptLayer>(mesh, name.toStdString());
    layer->Give({name.toStdString(), strength, visible != 0, writable != 0});
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

void WriteGroundChunk(SceneStream& stream, uint32_t level, const LayerGround& ground) {
    stream.Transfer(level);
    WriteList(stream, ground.Knots());
    WriteList(stream, ground.Normals());
}

void ReadGroundChunk(SceneStream& stream, LevelGeometry& geometry) {
    uint32_t level = 0;
    stream.Transfer(level);
    if (level >= geometry.LevelCount()) {
        SceneStream::Refuse(
            QStringLiteral("the layer base of level %1, which does not exist").arg(level));
    }
    const uint32_t vertexCount = geometry.Level(level)->VertexCount();
    // Ascending without duplicates, because the lists are searched.
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
    auto knots = ReadList<LayerGround::Knot>(stream);
    check(knots);
    for (const LayerGround::Knot& knot : knots) {
        if (!IsFinite(knot.base) || !IsFinite(knot.place)) {
            SceneStream::Refuse(
                QStringLiteral("the layer base of vertex %1 is not finite").arg(knot.vertex));
        }
    }
    auto normals = ReadList<LayerGround::NotedNormal>(stream);
    check(normals);
    geometry.Layers().Ground(*geometry.Level(level)).Restore(std::move(knots), std::move(normals));
}

}  // namespace trovik
