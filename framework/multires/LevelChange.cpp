// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelChange.h"

#include "framework/math/SameBits.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/memory/SystemMemory.h"
#include "framework/mesh/StrokeResources.h"
#include "framework/mesh/TriangleEdit.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/multires/RecordChange.h"
#include "framework/multires/StrokeStep.h"
#include "framework/multires/TessellationStep.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>
#include <utility>

namespace trovik {

namespace {

/// Number of the current stroke. Strokes are counted across all geometries, so that a step does not
/// join a step of an earlier stroke. Like all changes, it is accessed only on the host's main
/// thread.
uint64_t currentStroke = 1;

/// The record array of the last change. The next change reuses it, because the array has already
/// grown and its pages are already mapped. Otherwise, the first dab of a stroke would spend half of
/// its time on growing the array and on page faults.
class SpareMemory {
public:
    void LendTo(Store<StoredVertexInfo>& records) {
        if (IsMemoryLimited()) spare.Clear();
        std::swap(records.array, spare.array);
        std::swap(records.capacity, spare.capacity);
    }
    /// \param vertexCount  vertex count of the mesh to which the records belong.
    void Recycle(Store<StoredVertexInfo>& records, uint32_t vertexCount) {
        if (records.capacity <= spare.capacity || IsMemoryLimited()) return;
        LendTo(records);
        const uint64_t bytes = uint64_t{spare.capacity} * sizeof(StoredVertexInfo);
        const uint64_t kept = std::clamp(uint64_t{vertexCount} * sparePerVertex, least, most);
        if (bytes > kept)
            ReleasePages(reinterpret_cast<uint8_t*>(spare.array) + kept, bytes - kept);
    }
    void Drop() { spare.Clear(); }

private:
    /// If there is a memory limit, the array is not kept, so that its memory is available to other
    /// arrays.
    static bool IsMemoryLimited() {
        return MemoryAccount::Limit() != std::numeric_limits<int64_t>::max();
    }

    /// Maximum number of bytes kept per vertex, so that the spare memory is small relative to the
    /// mesh. The fixed limits below also apply.
    static constexpr uint64_t sparePerVertex = 4;
    static constexpr uint64_t least = uint64_t{1} << 20;
    static constexpr uint64_t most = uint64_t{32} << 20;
    Store<StoredVertexInfo> spare{"spare change records"};
};

/// One instance for all meshes. It is never destroyed, because changes may exist until the process
/// ends.
SpareMemory& Spare() {
    static auto* const spare = new SpareMemory;
    return *spare;
}

/// Restores the position and the normal of the record.
void RestoreVertex(LevelMesh& level, const StoredVertexInfo& record) {
    const float* p = record.originalPosition;
    level.SetPosition(record.vertexIndex, {p[0], p[1], p[2]});
    if (record.vertexIndex >= level.vertexNormals.fill) return;
    PackedNormal& normal = level.vertexNormals.array[record.vertexIndex];
    normal.x = record.originalNormal.x;
    normal.y = record.originalNormal.y;
    normal.z = record.originalNormal.z;
}

}  // namespace

LevelChange::LevelChange(LevelMesh* ofLevel)
    : EndableChange(ofLevel),
      level(ofLevel),
      resources(ofLevel->LockResources()),
      vertexCount(ofLevel->VertexCount()),
      recordStore("mesh change records") {
    records = &recordStore;
    recordCount = &recordStore.fill;
    countsOutsideEdits = true;
    if (const SculptLayer* active = level->ActiveLayer()) {
        layer = active->Handle();
        layerStrength = active->EffectiveStrength();
    }
    if (LevelChange* open = level->OpenChange()) {
        open->Unlink();
        // Another brush has an open stroke, which may be finished after this one. The step of that
        // stroke is pushed to the history now, so that steps are undone in the reverse order of the
        // edits.
        if (open->resources != resources) open->PushStep(++currentStroke);
    }
    // Reserves room in the second list first, so that a failed allocation leaves the change in
    // neither list.
    level->Changes().reserve(level->Changes().size() + 1);
    if (resources != nullptr) resources->AddChange(*this);
    level->Changes().push_back(this);
    level->SetOpenChange(this, &outsideEdits);
    Spare().LendTo(recordStore);
    level->changeRecords = recordStore.array;
    level->changeRecordCount = 0;
}

LevelChange::~LevelChange() {
    if (linked) {
        // Without an undo step, renumbered elements would not match the earlier steps.
        if (topology != nullptr) {
            try {
                RevertTopology();
            } catch (const std::bad_alloc&) {
            } catch (Error* error) {
                Error::Dispose(error);
            }
        }
        RestoreStamps();
    }
    Close();
    Spare().Recycle(recordStore, vertexCount);
}

void LevelChange::DropSpareMemory() { Spare().Drop(); }

void LevelChange::Finish(bool keepTopology, bool joinPrevious) {
    assert(!finished && "a change can be finished only once");
    finished = true;
    if (!joinPrevious) ++currentStroke;
    if (level == nullptr) return;
    for (GeometryObserver* observer : level->Hierarchy().Observers())
        observer->ChangeFinished(*level, keepTopology, joinPrevious);
    if (linked) Unlink();
    std::erase(level->Changes(), this);
    PushStep(currentStroke);
}

void LevelChange::PushStep(uint64_t strokeNumber) {
    if (step == nullptr) return;
    UndoHistory& history = GeometryOf(*level).History();
    step->label = history.NextLabel();
    history.PushOfStroke(std::move(step), strokeNumber);
}

void LevelChange::FinishAs(const std::string& label) {
    UndoHistory& history = GeometryOf(*level).History();
    const std::string ofStrokes = history.NextLabel();
    history.SetNextLabel(label);
    Finish(true, false);
    history.SetNextLabel(ofStrokes);
}

void LevelChange::Unlink() {
    if (!linked) return;
    const std::vector<uint32_t> movedHidden = MovedHidden();
    if (topology != nullptr) {
        RestoreHidden(movedHidden);
        step = FinishTopology();
        return;
    }
    RestoreStamps();
    RestoreHidden(movedHidden);
    step = StrokeStep::FromChange(*this);
}

void LevelChange::Detach() {
    linked = false;
    step.reset();
    topology.reset();
    level = nullptr;
    mesh = nullptr;
}

void LevelChange::Close() {
    if (level != nullptr) std::erase(level->Changes(), this);
    if (resources != nullptr) resources->RemoveChange(*this);
}

std::vector<uint32_t> LevelChange::RevertStroke() {
    assert(linked && "only an open change can be reverted");
    ++outsideEdits;
    if (topology != nullptr) return RevertTopology();
    std::vector<uint32_t> vertices;
    vertices.reserve(recordStore.fill);
    for (uint32_t i = 0; i < recordStore.fill; ++i) {
        StoredVertexInfo& record = recordStore.array[i];
        RestoreVertex(*level, record);
        record.buildUp = 0.0f;
        vertices.push_back(record.vertexIndex);
    }
    if (SculptLayer* active = layer == nullptr ? nullptr : *layer) {
        // Iterates backwards: if there are two entries for one record, the first one is the state
        // before the stroke.
        for (auto before = layerBefore.rbegin(); before != layerBefore.rend(); ++before) {
            if (before->record >= recordStore.fill) continue;
            SculptLayer::State state = before->state;
            active->SwapState(recordStore.array[before->record].layerSlot, state);
        }
    }
    return vertices;
}

void LevelChange::StartStroke() { ++currentStroke; }

TriangleEdit& LevelChange::Topology() {
    assert(linked && "only an open change can edit the topology");
    if (topology == nullptr) {
        LevelGeometry& geometry = GeometryOf(*level);
        topology = std::make_unique<TriangleEdit>(*level, geometry.AttributesForEdit());
        geometry.ExchangeMirror(mirror);
    }
    return *topology;
}

std::unique_ptr<UndoStep> LevelChange::FinishTopology() {
    for (uint32_t i = 0; i < recordStore.fill; ++i)
        if (IsChanged(*level, recordStore.array[i]))
            topology->RecordVertex(recordStore.array[i].vertexIndex);
    RestoreStamps();
    topology->Compact();
    level->Hierarchy().ReportTopology(topology->TakeChangedFaces());
    TriangleContent before = topology->Finish();
    topology.reset();
    if (before.vertexNumbers.empty() && before.faceNumbers.empty()) {
        GeometryOf(*level).ExchangeMirror(mirror);
        return nullptr;
    }
    return std::make_unique<TessellationStep>(std::move(before), std::move(mirror));
}

std::vector<uint32_t> LevelChange::RevertTopology() {
    // Vertices that the edit has recorded are restored with it.
    for (uint32_t i = 0; i < recordStore.fill; ++i)
        if (IsChanged(*level, recordStore.array[i]))
            topology->RecordVertex(recordStore.array[i].vertexIndex);
    TriangleContent content = topology->Finish();
    LevelGeometry& geometry = GeometryOf(*level);
    topology->TakeChangedFaces();
    const std::vector<uint32_t> faces =
        TriangleEdit::Exchange(*level, geometry.AttributesForEdit(), content);
    topology.reset();
    geometry.ExchangeMirror(mirror);
    for (uint32_t i = 0; i < recordStore.fill; ++i) {
        const StoredVertexInfo& record = recordStore.array[i];
        if (record.vertexIndex >= level->VertexCount()) continue;
        Vertex& vertex = level->vertices.array[record.vertexIndex];
        if (vertex.changeLink == i) vertex.changeLink = record.visitStampWord;
    }
    recordStore.fill = 0;
    level->changeRecordCount = 0;
    geometry.ReportTopology(faces);
    std::erase_if(content.vertexNumbers,
                  [this](uint32_t vertex) { return vertex >= level->VertexCount(); });
    return content.vertexNumbers;
}

uint32_t LevelChange::ReserveLayerSlot(uint32_t vertex) {
    SculptLayer* active = layer == nullptr ? nullptr : *layer;
    if (active == nullptr) return SculptLayer::noSlot;
    const uint32_t slot = active->SlotOf(vertex);
    layerBefore.push_back({recordStore.fill, active->StateOfSlot(slot)});
    return slot;
}

void LevelChange::NoteOlderPositions() {
    if (level == nullptr || !level->Older().KeepsPositions()) return;
    for (uint32_t i = 0; i < recordStore.fill; ++i) {
        const StoredVertexInfo& record = recordStore.array[i];
        const float* p = record.originalPosition;
        const Vector before(p[0], p[1], p[2]);
        if (!SameBits(before, level->Position(record.vertexIndex)))
            level->Older().NotePosition(record.vertexIndex, before);
    }
}

// For a fully frozen vertex, brushes write the position plus 0 times a displacement, which changes
// -0 to +0. With a layer, brushes compose the position again, which may round it differently.
std::vector<uint32_t> LevelChange::MovedHidden() const {
    std::vector<uint32_t> moved;
    if (level == nullptr || level->HiddenVertexCount() == 0) return moved;
    for (uint32_t i = 0; i < recordStore.fill; ++i) {
        const StoredVertexInfo& record = recordStore.array[i];
        if (level->IsVertexHidden(record.vertexIndex) && HasMoved(*level, record))
            moved.push_back(i);
    }
    return moved;
}

void LevelChange::RestoreHidden(const std::vector<uint32_t>& moved) {
    for (const uint32_t i : moved) {
        const float* p = recordStore.array[i].originalPosition;
        level->SetPosition(recordStore.array[i].vertexIndex, {p[0], p[1], p[2]});
    }
}

void LevelChange::RestoreStamps() {
    NoteOlderPositions();
    for (uint32_t i = 0; i < recordStore.fill; ++i) {
        const StoredVertexInfo& record = recordStore.array[i];
        Vertex& vertex = level->vertices.array[record.vertexIndex];
        if (vertex.changeLink == i) vertex.changeLink = record.visitStampWord;
    }
    linked = false;
    if (level->OpenChange() != this) return;
    level->SetOpenChange(nullptr, nullptr);
    level->changeRecords = nullptr;
    level->changeRecordCount = 0;
}

}  // namespace trovik
