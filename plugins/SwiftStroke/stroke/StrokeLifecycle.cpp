// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "brush/ToolCatalogue.h"
#include "stroke/AtScopeEnd.h"

#include <cmath>
#include <exception>

namespace trovik {

namespace {

/// Returns the number of dabs between two refinements, which depends on the stroke smoothing
/// distance. The comparisons use double precision, because 0.15f and 0.1f are slightly above 0.15
/// and 0.1.
uint32_t RefineIntervalFor(float distance) {
    if (distance > 0.25f) return 1;
    if (static_cast<double>(distance) > 0.15) return 3;
    if (static_cast<double>(distance) > 0.1) return 4;
    if (distance > 0.0f) return 8;
    return 16;
}

}  // namespace

void SwiftStroke::BeginStroke(Mesh* strokeMesh, Modifier modifier, TriggerType trigger) {
    const TVCrashReporterFlag flag(4, 0x20);
    if (modifier == ModifierSmooth && ActiveConfiguration() == nullptr) {
        // There is no tool to return to, so the stroke does not start. Without a falloff table,
        // dabs have no effect; see also ApplyToWholeMesh.
        falloffTable = nullptr;
        strokeActive = false;
        return;
    }
    if (useTessellator) {
        DetailBrush::BeginStroke(strokeMesh, modifier, trigger);
        refineDabCount = 0;
        const CheckableFloat smoothing = strokeSmoothingAttribute.Value();
        if (smoothing.checked) refineInterval = RefineIntervalFor(smoothing.value);
    } else {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): DetailBrush prepares the tessellator.
        BrushOperation::BeginStroke(strokeMesh, modifier, trigger);
    }
    ReleaseScratch();
    const float rate = buildUpRate.Value();
    buildUpRateCubed = rate * rate * rate;

    // This changes the tool, so it must precede everything that depends on the tool.
    if (modifier == ModifierSmooth && ActiveConfiguration()->ID() != smoothConfiguration->ID()) {
        inTemporarySmooth = true;
        const AtScopeEnd endSwap([this] { inTemporarySmooth = false; });
        configurationBeforeSmooth = ActiveConfiguration();
        SetActiveConfiguration(smoothConfiguration);
    }
    if (trigger != TriggerStroke) {
        mesh = nullptr;
        return;
    }

    planeDabCount = 0xffffffffu;
    for (int pass = 0; pass < 2; ++pass) {
        planeDistances[pass] = 0.0f;
        directions[pass] = Vector();
        planePoints[pass] = Vector();
    }

    // Strength is in world units, so a mesh with a larger scale requires smaller mesh-local
    // displacements.
    strokeStrengthScale = 1.0f;
    if (strokeMesh != nullptr) {
        Vector scale;
        strokeMesh->Geometry()->Transformation()->Scale(&scale);
        const float volume = scale.y * scale.x * scale.z;
        brushSpace->inverseScale =
            volume == 0.0f ? HWVector(Vector(1.0f, 1.0f, 1.0f))
                           : HWVector(Vector(1.0f / scale.x, 1.0f / scale.y, 1.0f / scale.z));
        // Uses the absolute value, because powf of a negative volume (mirrored mesh) would be NaN.
        const float side = powf(std::fabs(volume), 0.33333334f);
        strokeStrengthScale = side;
        if (side != 0.0f) strokeStrengthScale = 1.0f / side;
    }

    strokePlaneSign = 1.0f;
    if (modifier == ModifierInvert) {
        if (isPlaneTool)
            strokePlaneSign = -1.0f;
        else if (!isSmooth)
            strokeStrengthScale *= -1.0f;
    }

    const Store<float>& falloff = FalloffData();
    falloffTable = falloff.fill == 0 ? nullptr : falloff.array;
    setFalloffLast(falloff.fill == 0 ? 0.0f : static_cast<float>(falloff.fill - 1));

    PrepareStamp();
    if (strokeMesh != nullptr) SetMesh(strokeMesh);
    strokeVertexCount = 0;
    strokeActive = true;
}

void SwiftStroke::EndStroke() {
    const TVCrashReporterFlag flag(4, 0x40);
    if (useTessellator) DetailBrush::EndStroke();
    ReleaseScratch();
    if (configurationBeforeSmooth != nullptr) {
        SetActiveConfiguration(configurationBeforeSmooth);
        configurationBeforeSmooth = nullptr;
    }
    if (mesh == nullptr) return;

    // Uses the change's mesh pointer, which is reset when the mesh is destroyed; the pair's pointer
    // is not.
    const auto isEditable = [this](const MeshChangePair& pair) {
        const Mesh* changed = pair.change->mesh;
        return useTessellator && changed != nullptr && MeshEditable(changed);
    };
    bool anyEditable = false;
    for (uint32_t i = 0; i < meshChanges.fill && !anyEditable; ++i)
        anyEditable = isEditable(meshChanges.array[i]);
    std::exception_ptr failure;
    for (uint32_t i = 0; i < meshChanges.fill; ++i) {
        const MeshChangePair& pair = meshChanges.array[i];
        const bool keepTopology = !isEditable(pair);
        const bool joinPrevious = !(i == 0 && !anyEditable);
        try {
            pair.change->Finish(keepTopology, joinPrevious);
        } catch (...) {
            // The stroke must end for all its meshes before the first error is rethrown.
            if (failure == nullptr) failure = std::current_exception();
        }
        delete pair.change;
    }
    meshChanges.Clear();
    strokeActive = false;
    FinishMesh();
    coarseMeshWarned = false;
    if (failure != nullptr) std::rethrow_exception(failure);
}

void SwiftStroke::FinishMesh() {
    const TVCrashReporterFlag flag(4, 0x80);
    if (mesh == nullptr) return;
    mesh->Unlock();
    mesh->ContentChanged();
    mesh = nullptr;
}

}  // namespace trovik
