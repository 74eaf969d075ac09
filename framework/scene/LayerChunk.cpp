// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/LayerChunk.h"

#include "framework/levels/LevelGeometry.h"
#include "framework/scene/SceneChunks.h"

#include <cmath>

namespace trovik {

namespace {

struct StoredEntry {
    uint32_t vertex;
    SculptLayer::State state;
};
static_assert(sizeof(StoredEntry) == 40);

bool IsFinite(const Vector& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

bool IsFinite(const SculptLayer::State& state) {
    return IsFinite(state.rest) && IsFinite(state.offset) && IsFinite(state.seen);
}

}  // namespace

void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer) {
    auto level = static_cast<uint32_t>(layer.Level()->Index());
    QString name = QString::fromStdString(layer.Name());
    float strength = layer.Strength();
    uint8_t writable = layer.Writable() ? 1 : 0;
    uint8_t active = layer.Level()->ActiveLayer() == &layer ? 1 : 0;
    stream.Transfer(level);
    static_cast<Stream&>(stream).Transfer(name);
    stream.Transfer(strength);
    stream.Transfer(writable);
    stream.Transfer(active);
    std::vector<StoredEntry> entries(layer.SlotCount());
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot)
        entries[slot] = {layer.VertexOfSlot(slot), layer.StateOfSlot(slot)};
    WriteList(stream, entries);
}

std::unique_ptr<SculptLayer> ReadLayerChunk(SceneStream& stream, const LevelGeometry& geometry) {
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
    if (level >= geometry.LevelCount())
        SceneStream::Refuse(QStringLiteral("a layer of level %1, which is not there").arg(level));
    if (!std::isfinite(strength))
        SceneStream::Refuse(QStringLiteral("the strength of a layer is no number"));
    LevelMesh* mesh = geometry.Level(level);
    auto layer = std::make_unique<SculptLayer>(mesh, name.toStdString());
    layer->SetStrength(strength);
    layer->SetWritable(writable != 0);
    for (const StoredEntry& entry : ReadList<StoredEntry>(stream)) {
        if (entry.vertex >= mesh->VertexCount())
            SceneStream::Refuse(QStringLiteral("there is no vertex %1").arg(entry.vertex));
        if (!IsFinite(entry.state)) {
            SceneStream::Refuse(
                QStringLiteral("the layer's vertex %1 lies at no number").arg(entry.vertex));
        }
        const uint32_t slot = layer->SlotCount();
        if (layer->SlotOf(entry.vertex) != slot)
            SceneStream::Refuse(QStringLiteral("vertex %1 comes twice").arg(entry.vertex));
        SculptLayer::State state = entry.state;
        layer->SwapState(slot, state);
    }
    if (active != 0) mesh->SetActiveLayer(layer.get());
    return layer;
}

}  // namespace trovik
