// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/Steps.h"

#include <cassert>

namespace trovik {

namespace {

/// The undo step for a mask change. It stores the freeze amounts to restore for some vertices of a
/// level; the level need not be bound.
class FreezeStep : public UndoStep {
public:
    explicit FreezeStep(uint32_t ofLevel) : level(ofLevel) { label = "Freeze"; }

    void Apply(LevelGeometry& geometry) override {
        LevelMesh& mesh = *geometry.Level(level);
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const uint8_t amount = mesh.Freeze(vertices[i]);
            mesh.SetFreeze(vertices[i], amounts[i]);
            amounts[i] = amount;
        }
        mesh.ContentChanged();
        geometry.ReportVertices(level, SurfaceChange::Mask, vertices);
    }

    uint64_t Bytes() const override {
        return sizeof(FreezeStep) + vertices.capacity() * sizeof(uint32_t) + amounts.capacity();
    }

    std::vector<StepArray> Arrays() override { return {StepArray(vertices), StepArray(amounts)}; }

    uint32_t level;
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> amounts;
};

template <typename VertexAt>
std::unique_ptr<UndoStep> StepOfDifferences(const LevelMesh& level,
                                            const std::vector<uint8_t>& amountsBefore,
                                            VertexAt vertexAt) {
    auto step = std::make_unique<FreezeStep>(static_cast<uint32_t>(level.Index()));
    for (std::size_t i = 0; i < amountsBefore.size(); ++i) {
        const uint32_t vertex = vertexAt(i);
        if (level.Freeze(vertex) == amountsBefore[i]) continue;
        step->vertices.push_back(vertex);
        step->amounts.push_back(amountsBefore[i]);
    }
    if (step->vertices.empty()) return nullptr;
    step->vertices.shrink_to_fit();
    step->amounts.shrink_to_fit();
    return step;
}

}  // namespace

std::vector<uint8_t> FreezeAmounts(const LevelMesh& level) {
    std::vector<uint8_t> amounts(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) amounts[v] = level.Freeze(v);
    return amounts;
}

std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                         const std::vector<uint8_t>& amountsBefore) {
    assert(amountsBefore.size() == level.VertexCount());
    return StepOfDifferences(
        level, amountsBefore, [](std::size_t i) { return static_cast<uint32_t>(i); });
}

std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                         const std::vector<uint32_t>& vertices,
                                         const std::vector<uint8_t>& amountsBefore) {
    assert(amountsBefore.size() == vertices.size());
    return StepOfDifferences(
        level, amountsBefore, [&vertices](std::size_t i) { return vertices[i]; });
}

}  // namespace trovik
