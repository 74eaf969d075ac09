// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/Steps.h"
#include "framework/levels/SameBits.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

/// What vertices of a level were before BindLevel carried changes up into it.
struct Carried {
    uint32_t level;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;
    std::vector<PackedNormal> normals;
};

class LevelStep : public UndoStep {
public:
    LevelStep(uint32_t from, uint32_t to) : before(from) { SetTarget(to); }

    void SetTarget(uint32_t to) {
        after = to;
        label = "Level " + std::to_string(to);
    }

    /// Binds the level `after` and takes down what that carried.
    void Bind(LevelGeometry& geometry) {
        std::vector<Carried> copies;
        for (uint32_t level = before + 1; level <= after; ++level)
            copies.push_back(CopyOf(*geometry.Level(level)));
        geometry.BindLevel(after);
        for (Carried& copy : copies) {
            KeepDifferences(copy, *geometry.Level(copy.level));
            // A redo that carries nothing finds the level as the first carrying left it, so what
            // that one took down stays true.
            if (copy.vertices.empty()) continue;
            std::erase_if(carried, [&](const Carried& one) { return one.level == copy.level; });
            carried.push_back(std::move(copy));
        }
    }

    void Apply(LevelGeometry& geometry) override {
        if (isDone) {
            geometry.BindLevel(before);
            for (uint32_t level = after + 1; level <= before; ++level) RestoreBits(geometry, level);
        } else {
            Bind(geometry);
        }
        isDone = !isDone;
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        uint64_t bytes = sizeof(LevelStep) + label.capacity();
        for (const Carried& one : carried) {
            bytes += sizeof one + one.vertices.capacity() * sizeof(uint32_t) +
                     one.positions.capacity() * sizeof(Vector) +
                     one.normals.capacity() * sizeof(PackedNormal);
        }
        return bytes;
    }

private:
    static Carried CopyOf(const LevelMesh& mesh) {
        Carried copy{static_cast<uint32_t>(mesh.Index()), {}, {}, {}};
        copy.positions.resize(mesh.VertexCount());
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) copy.positions[v] = mesh.Position(v);
        copy.normals.assign(mesh.vertexNormals.array,
                            mesh.vertexNormals.array + mesh.vertexNormals.fill);
        copy.normals.resize(mesh.VertexCount());
        return copy;
    }

    static void KeepDifferences(Carried& copy, const LevelMesh& mesh) {
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector position = mesh.Position(v);
            const PackedNormal normal =
                v < mesh.vertexNormals.fill ? mesh.vertexNormals.array[v] : copy.normals[v];
            if (SameBits(position, copy.positions[v]) && SameBits(normal, copy.normals[v]))
                continue;
            const std::size_t kept = copy.vertices.size();
            copy.vertices.push_back(v);
            copy.positions[kept] = copy.positions[v];
            copy.normals[kept] = copy.normals[v];
        }
        copy.positions.resize(copy.vertices.size());
        copy.normals.resize(copy.vertices.size());
        copy.vertices.shrink_to_fit();
        copy.positions.shrink_to_fit();
        copy.normals.shrink_to_fit();
    }

    /// Carrying a change up and carrying its reverse up leaves rounding behind. The first step,
    /// among those undone since this one was done, that carried into the level knows the bits from
    /// before.
    static void RestoreBits(LevelGeometry& geometry, uint32_t level) {
        const UndoHistory& history = geometry.History();
        for (std::size_t i = history.Position(); i < history.StepCount(); ++i) {
            const auto* later = dynamic_cast<const LevelStep*>(&history.Step(i));
            if (later == nullptr) continue;
            const auto list = std::find_if(later->carried.begin(),
                                           later->carried.end(),
                                           [&](const Carried& one) { return one.level == level; });
            if (list == later->carried.end()) continue;
            LevelMesh& mesh = *geometry.Level(level);
            for (std::size_t k = 0; k < list->vertices.size(); ++k) {
                const uint32_t vertex = list->vertices[k];
                mesh.SetPosition(vertex, list->positions[k]);
                if (vertex < mesh.vertexNormals.fill)
                    mesh.vertexNormals.array[vertex] = list->normals[k];
            }
            return;
        }
    }

    uint32_t before;
    uint32_t after = 0;
    std::vector<Carried> carried;
    bool isDone = true;
};

}  // namespace

std::unique_ptr<UndoStep> BindLevelAsStep(LevelGeometry& geometry, uint32_t index) {
    auto step = std::make_unique<LevelStep>(geometry.BoundIndex(), index);
    step->Bind(geometry);
    return step;
}

std::unique_ptr<UndoStep> SubdivideAsStep(LevelGeometry& geometry) {
    // Subdivide starts from the highest level, and what the way there carries belongs to the step.
    const uint32_t before = geometry.BoundIndex();
    auto step = std::make_unique<LevelStep>(before, geometry.LevelCount() - 1);
    step->Bind(geometry);
    geometry.Subdivide();
    step->SetTarget(geometry.BoundIndex());
    return step;
}

}  // namespace trovik
