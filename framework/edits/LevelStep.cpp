// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/Steps.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

class LevelStep : public UndoStep {
public:
    LevelStep(uint32_t from, uint32_t to, std::vector<LevelGeometry::Moved> movedLists)
        : before(from), after(to), moved(std::move(movedLists)) {
        label = "Level " + std::to_string(to);
    }

    void Apply(LevelGeometry& geometry) override {
        if (isDone) {
            geometry.BindLevel(before);
            for (uint32_t level = after + 1; level <= before; ++level) RestoreBits(geometry, level);
            isDone = false;
        } else {
            for (LevelGeometry::Moved& list : geometry.BindLevel(after)) Keep(std::move(list));
            isDone = true;
        }
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        uint64_t bytes = sizeof(LevelStep) + label.capacity();
        for (const LevelGeometry::Moved& list : moved) {
            bytes += sizeof list + list.vertices.capacity() * sizeof(uint32_t) +
                     list.positionsBefore.capacity() * sizeof(Vector);
        }
        return bytes;
    }

private:
    const LevelGeometry::Moved* ListOf(uint32_t level) const {
        const auto list = std::find_if(
            moved.begin(), moved.end(), [&](const auto& one) { return one.level == level; });
        return list == moved.end() || list->vertices.empty() ? nullptr : &*list;
    }

    /// A redo that carries nothing finds the level as the first carrying left it, so what that one
    /// took down stays true.
    void Keep(LevelGeometry::Moved&& list) {
        if (list.vertices.empty()) return;
        if (const LevelGeometry::Moved* known = ListOf(list.level)) {
            moved[static_cast<std::size_t>(known - moved.data())] = std::move(list);
        } else {
            moved.push_back(std::move(list));
        }
    }

    /// Carrying a change up and carrying its reverse up leaves rounding behind. The first step,
    /// among those undone since this one was done, that carried into the level knows the bits from
    /// before.
    static void RestoreBits(LevelGeometry& geometry, uint32_t level) {
        const UndoHistory& history = geometry.History();
        for (std::size_t i = history.Position(); i < history.StepCount(); ++i) {
            const auto* later = dynamic_cast<const LevelStep*>(&history.Step(i));
            const LevelGeometry::Moved* list = later == nullptr ? nullptr : later->ListOf(level);
            if (list == nullptr) continue;
            LevelMesh& mesh = *geometry.Level(level);
            for (std::size_t k = 0; k < list->vertices.size(); ++k)
                mesh.SetPosition(list->vertices[k], list->positionsBefore[k]);
            return;
        }
    }

    uint32_t before;
    uint32_t after;
    /// Positions that vertices of finer levels had before BindLevel carried changes into them.
    std::vector<LevelGeometry::Moved> moved;
    bool isDone = true;
};

}  // namespace

std::unique_ptr<UndoStep> MakeLevelStep(const LevelGeometry& geometry,
                                        uint32_t levelBefore,
                                        std::vector<LevelGeometry::Moved> moved) {
    return std::make_unique<LevelStep>(levelBefore, geometry.BoundIndex(), std::move(moved));
}

}  // namespace trovik
