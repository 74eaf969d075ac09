// SPDX-License-Identifier: Apache-2.0

/// \file Undo steps that add levels to a geometry's hierarchy or remove levels from it.
#include "framework/history/TopologyStep.h"
#include "framework/multires/Steps.h"

#include <utility>

namespace trovik {

namespace {

uint64_t BytesOf(const LevelMesh& level) {
    return level.faceCount * LevelForecast::bytesPerFace +
           level.VertexCount() * LevelForecast::bytesPerVertex;
}

uint64_t BytesOf(const LevelGeometry::RemovedLevels& taken) {
    uint64_t bytes = taken.attributes.Bytes();
    for (const auto& level : taken.levels) bytes += BytesOf(*level);
    return bytes;
}

void BindAgain(LevelGeometry& geometry, uint32_t bound) {
    // A host may have bound another level since the step was made or last applied.
    if (geometry.BoundIndex() != bound) geometry.BindLevel(bound);
}

class SubdivideStep : public TopologyStep {
public:
    SubdivideStep(LevelSwitch way, uint32_t newLevel) : change(std::move(way)), added(newLevel) {
        label = "Level " + std::to_string(added);
    }

    void Apply(LevelGeometry& geometry) override {
        if (isDone) {
            BindAgain(geometry, added);
            geometry.Exchange(change);
            taken = geometry.RemoveLevels(false, added - 1);
        } else {
            geometry.RestoreLevels(std::move(taken));
            taken = {};
            geometry.Exchange(change);
        }
        isDone = !isDone;
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        return sizeof(SubdivideStep) + change.Bytes() + BytesOf(taken) + label.capacity();
    }

private:
    LevelSwitch change;
    LevelGeometry::RemovedLevels taken;
    uint32_t added;
    bool isDone = true;
};

class DeleteLevelsStep : public TopologyStep {
public:
    DeleteLevelsStep(LevelGeometry& geometry, bool isLower, JobControl* job)
        : before(geometry.StateOfSwitch(job)), lower(isLower) {
        label = lower ? "Delete lower levels" : "Delete higher levels";
        Delete(geometry, job);
    }

    void Apply(LevelGeometry& geometry) override {
        if (isDone) {
            BindAgain(geometry, boundAfter);
            geometry.RestoreLevels(std::move(taken));
            taken = {};
            LevelSwitch state = before;
            geometry.Exchange(state);
        } else {
            Delete(geometry, nullptr);
        }
        isDone = !isDone;
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        return sizeof(DeleteLevelsStep) + before.Bytes() + BytesOf(taken) + label.capacity();
    }

private:
    void Delete(LevelGeometry& geometry, JobControl* job) {
        BindAgain(geometry, before.bound);
        taken = geometry.RemoveLevels(lower, before.bound, job);
        boundAfter = geometry.BoundIndex();
    }

    LevelSwitch before;
    LevelGeometry::RemovedLevels taken;
    bool lower;
    uint32_t boundAfter = 0;
    bool isDone = true;
};

class UnsubdivideStep : public TopologyStep {
public:
    UnsubdivideStep(LevelGeometry& geometry, JobControl* job)
        : before(geometry.StateOfSwitch(job)), coarse(FindCoarseFaces(*geometry.Level(0), job)) {
        label = "Unsubdivide";
        old = geometry.AddCoarserBase(coarse, nullptr, job);
    }

    void Apply(LevelGeometry& geometry) override {
        if (isDone) {
            BindAgain(geometry, before.bound + 1);
            level = geometry.RemoveCoarserBase(coarse, std::move(old));
            old = {};
            LevelSwitch state = before;
            geometry.Exchange(state);
        } else {
            BindAgain(geometry, before.bound);
            old = geometry.AddCoarserBase(coarse, std::move(level));
        }
        isDone = !isDone;
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        return sizeof(UnsubdivideStep) + before.Bytes() + coarse.Bytes() + old.attributes.Bytes() +
               (level == nullptr ? 0 : BytesOf(*level)) + label.capacity();
    }

private:
    LevelSwitch before;
    CoarseFaces coarse;
    std::unique_ptr<LevelMesh> level;
    LevelGeometry::OldBaseData old;
    bool isDone = true;
};

class ReplaceLevelsStep : public TopologyStep {
public:
    ReplaceLevelsStep(LevelGeometry& geometry, LevelGeometry& replacement, std::string name)
        : other(geometry.Adopt(replacement)) {
        label = std::move(name);
        geometry.ExchangeLevels(other);
    }

    void Apply(LevelGeometry& geometry) override {
        geometry.ExchangeLevels(other);
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        uint64_t bytes = sizeof(ReplaceLevelsStep) + label.capacity() + other.attributes.Bytes();
        for (const auto& level : other.levels) bytes += BytesOf(*level);
        return bytes;
    }

private:
    /// The levels that are not in the geometry: the previous ones, or, while the step is undone,
    /// the new ones.
    LevelGeometry::AllLevels other;
};

}  // namespace

std::unique_ptr<UndoStep> ReplaceLevelsAsStep(LevelGeometry& geometry,
                                              LevelGeometry& replacement,
                                              const std::string& label) {
    geometry.RefuseInStroke("replacing the mesh");
    return std::make_unique<ReplaceLevelsStep>(geometry, replacement, label);
}

std::unique_ptr<UndoStep> SubdivideAsStep(LevelGeometry& geometry,
                                          uint64_t byteBudget,
                                          JobControl* job) {
    LevelSwitch way = geometry.Subdivide(byteBudget, job);
    return std::make_unique<SubdivideStep>(std::move(way), geometry.BoundIndex());
}

std::unique_ptr<UndoStep> DeleteLevelsAsStep(LevelGeometry& geometry, bool lower, JobControl* job) {
    const uint32_t bound = geometry.BoundIndex();
    if (lower ? bound == 0 : bound + 1 == geometry.LevelCount()) return nullptr;
    return std::make_unique<DeleteLevelsStep>(geometry, lower, job);
}

std::unique_ptr<UndoStep> UnsubdivideAsStep(LevelGeometry& geometry, JobControl* job) {
    return std::make_unique<UnsubdivideStep>(geometry, job);
}

}  // namespace trovik
