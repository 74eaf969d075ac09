// SPDX-License-Identifier: Apache-2.0

/// \file
/// Insertion and removal of levels at both ends of the level hierarchy.
#include "framework/jobs/JobPhase.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/LevelRefiner.h"
#include "framework/multires/AttributeCarrying.h"
#include "framework/multires/HiddenFaces.h"
#include "framework/multires/LevelGeometry.h"
#include "host/ClassDesc.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace trovik {

namespace {

/// Moves element i to index map[i].
template <typename T>
void Permute(T* elements, std::size_t count, const std::vector<uint32_t>& map) {
    const std::vector<T> before(elements, elements + count);
    for (std::size_t i = 0; i < count; ++i) elements[map[i]] = before[i];
}

/// Returns the mirror, converted to the faces of `level`, which becomes the base of the mirror.
std::unique_ptr<TopologicalMirror> MirrorOfLevel(const TopologicalMirror& mirror,
                                                 const LevelMesh& level,
                                                 JobControl* job) {
    JobPhase phase(job, "Finding mirrored faces", level.faceCount);
    std::vector<uint32_t> images(level.faceCount, openBorder);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        phase.Add();
        const auto across = mirror.Across(static_cast<uint32_t>(level.Index()), face, 0);
        if (across) images[face] = across->face * 4 + across->corner;
    }
    phase.Finish();
    return TopologicalMirror::FromImages(level, std::move(images));
}

/// Returns the mirror of the coarse faces, given the mirror of their refinement. The image of a
/// coarse face is the face whose child is the image of its first child.
std::unique_ptr<TopologicalMirror> MirrorOfCoarse(const TopologicalMirror& mirror,
                                                  const CoarseFaces& coarse,
                                                  const LevelMesh& coarseLevel,
                                                  JobControl* job) {
    JobPhase phase(job, "Finding mirrored faces", coarseLevel.faceCount);
    const FaceRenumbering back = coarse.fineFaces.Inverse();
    std::vector<uint32_t> images(coarseLevel.faceCount, openBorder);
    for (uint32_t face = 0; face < coarseLevel.faceCount; ++face) {
        phase.Add();
        // Corner 0 of child 0 is a vertex of the coarse mesh.
        const uint32_t fineFace = back.face[face * coarse.corners];
        const auto across = mirror.Across(0, fineFace, back.turn[face * coarse.corners]);
        if (!across) continue;
        const uint32_t image = coarse.fineFaces.face[across->face];
        const uint32_t child = image % coarse.corners;
        const uint32_t corner = (across->corner + coarse.fineFaces.turn[across->face]) & 3u;
        if (corner != (coarse.corners == 4 ? child : 0u)) return nullptr;
        images[face] = image / coarse.corners * 4 + child;
    }
    phase.Finish();
    return TopologicalMirror::FromImages(coarseLevel, std::move(images));
}

/// Returns the mirror of a restored level 0. If the geometry had no mirror when that level was
/// replaced, `previous` is null; the current mirror was found on the faces of the replacement, so
/// the search is repeated.
std::unique_ptr<TopologicalMirror> MirrorOfRestored(LevelMesh& base,
                                                    std::unique_ptr<TopologicalMirror> previous) {
    return previous != nullptr ? std::move(previous) : TopologicalMirror::Find(base);
}

}  // namespace

bool LevelGeometry::Holds(const LevelMesh* level) const {
    return std::any_of(
        levels.begin(), levels.end(), [level](const auto& one) { return one.get() == level; });
}

void LevelGeometry::NumberLevels() {
    for (uint32_t i = 0; i < LevelCount(); ++i) {
        levels[i]->index = static_cast<int>(i);
        levels[i]->coarserVertexCount = i == 0 ? 0 : levels[i - 1]->vertexCount;
    }
}

void LevelGeometry::DropFromBelow() {
    levels[0]->Older().fromBelow.Drop();
    levels[0]->Older().freezeFromBelow.Drop();
}

LevelGeometry::RemovedLevels LevelGeometry::RemoveLevels(bool lower,
                                                         uint32_t kept,
                                                         JobControl* job) {
    RefuseInStroke("removing levels");
    RemovedLevels taken;
    taken.lower = lower;
    assert((lower ? bound >= kept : bound <= kept) && "the bound level cannot be removed");
    const auto middle = levels.begin() + kept;
    const auto first = lower ? levels.begin() : middle + 1;
    const auto last = lower ? middle : levels.end();
    if (lower && kept > 0) {
        SurfaceAttributes ofLevel = AttributesOfLevel(*this, kept, job);
        std::unique_ptr<TopologicalMirror> mirrorOfLevel;
        if (mirror != nullptr) mirrorOfLevel = MirrorOfLevel(*mirror, *levels[kept], job);
        // This is the last call that can throw Cancelled.
        levels[kept]->MakeBaseTables(job);
        taken.attributes = std::exchange(attributes, std::move(ofLevel));
        if (mirror != nullptr) taken.mirror = std::exchange(mirror, std::move(mirrorOfLevel));
    }
    std::for_each(first, last, [](const auto& level) { level->Older() = OlderStates(); });
    taken.levels.assign(std::make_move_iterator(first), std::make_move_iterator(last));
    levels.erase(first, last);
    if (lower) {
        bound -= kept;
        DropFromBelow();
    } else {
        levels[kept]->Older().fromAbove.Drop();
        levels[kept]->Older().freezeFromAbove.Drop();
    }
    NumberLevels();
    if (lower) ReportAll(bound, SurfaceChange::Topology);
    return taken;
}

void LevelGeometry::RestoreLevels(RemovedLevels taken) {
    const auto count = static_cast<uint32_t>(taken.levels.size());
    if (taken.lower) {
        if (count > 0) {
            levels[0]->DropBaseTables();
            attributes = std::move(taken.attributes);
        }
        bound += count;
    }
    levels.insert(taken.lower ? levels.begin() : levels.end(),
                  std::make_move_iterator(taken.levels.begin()),
                  std::make_move_iterator(taken.levels.end()));
    NumberLevels();
    if (taken.lower && count > 0 && mirror != nullptr)
        mirror = MirrorOfRestored(*levels[0], std::move(taken.mirror));
    KeepSeen(bound);
    if (taken.lower) ReportAll(bound, SurfaceChange::Topology);
}

void LevelGeometry::Renumber(uint32_t index,
                             const std::vector<uint32_t>& vertexMap,
                             const std::vector<uint32_t>& faceMap) {
    LevelMesh& level = *levels[index];
    assert(level.OpenChange() == nullptr && "levels cannot be renumbered during a stroke");
    Permute(level.vertices.array, level.vertexCount, vertexMap);
    Permute(level.vertexNormals.array, level.vertexNormals.fill, vertexMap);
    Permute(level.faceFlags, level.faceCount, faceMap);
    OlderStates& older = level.Older();
    for (OlderValues<Vector>* known : {&older.fromAbove, &older.fromBelow})
        known->Renumber(vertexMap);
    for (OlderValues<uint8_t>* known : {&older.freezeFromAbove, &older.freezeFromBelow})
        known->Renumber(vertexMap);
    layers->Renumber(level, vertexMap);
    // The patch map uses the old numbers. It is deleted, and the next stroke builds a new one.
    const ClassDesc* patchMap = ClassDesc::ByName(QStringLiteral("PatchMap"));
    if (patchMap == nullptr) return;
    if (TreeNode* child = level.ChildByClass(patchMap, 0u)) {
        level.RemoveChild(child);
        delete child;
    }
}

std::vector<LevelGeometry::LevelNumbers> LevelGeometry::RefineNumbers(
    uint32_t first,
    FaceRenumbering faces,
    std::vector<uint32_t> lowerMap,
    std::vector<std::vector<uint32_t>>* facesBefore,
    JobControl* job) {
    std::vector<LevelNumbers> numbers;
    for (uint32_t index = first; index < LevelCount(); ++index) {
        LevelMesh& level = *levels[index];
        Store<uint32_t>& present = level.faceVertexIndices;
        std::vector<uint32_t> before(present.array, present.array + present.fill);
        if (facesBefore != nullptr) facesBefore->push_back(before);
        LevelRefiner(*levels[index - 1], job).RefineTopology(level);
        JobPhase phase(job, "Renumbering vertices", level.faceCount);
        // A vertex without faces is also a vertex of the level below.
        lowerMap.resize(level.vertexCount);
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            phase.Add();
            const uint32_t* now = present.array + faces.face[face] * 4;
            for (uint32_t k = 0; k < 4; ++k)
                lowerMap[before[face * 4 + k]] = now[(k + faces.turn[face]) & 3u];
        }
        phase.Finish();
        numbers.push_back({lowerMap, faces.face});
        if (index + 1 < LevelCount()) faces = faces.OfChildren();
    }
    return numbers;
}

void LevelGeometry::RenumberLevels(uint32_t first, const std::vector<LevelNumbers>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i)
        Renumber(first + static_cast<uint32_t>(i), numbers[i].vertexMap, numbers[i].faceMap);
}

void LevelGeometry::FitBase(const CoarseFaces& coarse,
                            const std::vector<uint32_t>& fineMap,
                            JobControl* job) {
    LevelMesh& base = *levels[0];
    const LevelMesh& fine = *levels[1];
    // At this point, only the faces of the fine level use the new vertex numbers.
    std::vector<Vector> finePositions(fine.VertexCount());
    for (uint32_t v = 0; v < fine.VertexCount(); ++v) finePositions[fineMap[v]] = fine.Position(v);
    const std::vector<Vector> positions = FitCoarsePositions(base, fine, finePositions, job);
    for (uint32_t v = 0; v < base.VertexCount(); ++v) {
        base.SetPosition(v, positions[v]);
        base.SetFreeze(v, fine.Freeze(coarse.fineVertices[v]));
    }
    base.ComputeNormals(job);
}

LevelGeometry::OldBaseData LevelGeometry::AddCoarserBase(CoarseFaces& coarse,
                                                         std::unique_ptr<LevelMesh> known,
                                                         JobControl* job) {
    RefuseInStroke("adding a coarser level");
    const bool fit = known == nullptr;
    if (fit) {
        known.reset(new LevelMesh(this, 0));
        const auto faces = static_cast<uint32_t>(coarse.faceVertices.size() / coarse.corners);
        known->AllocateFaces(faces, coarse.corners == 4 ? 1 : 0);
        std::copy(
            coarse.faceVertices.begin(), coarse.faceVertices.end(), known->faceVertexIndices.array);
        known->AllocateVertices(static_cast<uint32_t>(coarse.fineVertices.size()));
        known->SetName(levels[0]->Name());
        known->MakeBaseTables(job);
    }
    std::unique_ptr<TopologicalMirror> coarseMirror;
    if (mirror != nullptr) coarseMirror = MirrorOfCoarse(*mirror, coarse, *known, job);
    SurfaceAttributes coarseAttributes = AttributesOfCoarse(attributes, coarse, job);

    levels.insert(levels.begin(), std::move(known));
    ++bound;
    NumberLevels();
    std::vector<LevelNumbers> numbers;
    std::vector<std::vector<uint32_t>> facesBefore;
    try {
        std::vector<uint32_t> lowerMap(levels[1]->vertexCount);
        for (uint32_t v = 0; v < coarse.fineVertices.size(); ++v)
            lowerMap[coarse.fineVertices[v]] = v;
        numbers = RefineNumbers(
            1, coarse.fineFaces, std::move(lowerMap), job == nullptr ? nullptr : &facesBefore, job);
        if (fit) FitBase(coarse, numbers.front().vertexMap, job);
    } catch (...) {
        for (std::size_t i = 0; i < facesBefore.size(); ++i)
            std::copy(facesBefore[i].begin(),
                      facesBefore[i].end(),
                      levels[i + 1]->faceVertexIndices.array);
        levels.erase(levels.begin());
        --bound;
        NumberLevels();
        throw;
    }
    levels[1]->DropBaseTables();
    coarse.fineVertexMap = numbers.front().vertexMap;
    RenumberLevels(1, numbers);
    if (fit) HideParents(*levels[0], *levels[1]);
    OldBaseData old{std::exchange(mirror, std::move(coarseMirror)),
                    std::exchange(attributes, std::move(coarseAttributes))};
    KeepSeen(bound);
    ReportAll(bound, SurfaceChange::Topology);
    return old;
}

std::unique_ptr<LevelMesh> LevelGeometry::RemoveCoarserBase(const CoarseFaces& coarse,
                                                            OldBaseData old) {
    std::unique_ptr<LevelMesh> taken = std::move(levels[0]);
    levels.erase(levels.begin());
    taken->Older() = OlderStates();
    bound = bound == 0 ? 0 : bound - 1;
    NumberLevels();
    LevelMesh& base = *levels[0];
    std::vector<uint32_t> back(base.vertexCount);
    for (uint32_t v = 0; v < base.vertexCount; ++v) back[coarse.fineVertexMap[v]] = v;
    const std::vector<uint32_t> now(base.faceVertexIndices.array,
                                    base.faceVertexIndices.array + base.faceVertexIndices.fill);
    const FaceRenumbering& faces = coarse.fineFaces;
    for (uint32_t face = 0; face < base.faceCount; ++face) {
        for (uint32_t k = 0; k < 4; ++k) {
            base.faceVertexIndices.array[face * 4 + k] =
                back[now[faces.face[face] * 4 + ((k + faces.turn[face]) & 3u)]];
        }
    }
    const FaceRenumbering inverse = faces.Inverse();
    Renumber(0, back, inverse.face);
    base.MakeBaseTables();
    DropFromBelow();
    if (LevelCount() > 1) {
        RenumberLevels(1, RefineNumbers(1, inverse.OfChildren(), back, nullptr, nullptr));
    }
    if (mirror != nullptr) mirror = MirrorOfRestored(base, std::move(old.mirror));
    attributes = std::move(old.attributes);
    KeepSeen(bound);
    ReportAll(bound, SurfaceChange::Topology);
    return taken;
}

}  // namespace trovik
