// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"
#include "host/Error.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace trovik {

class LevelMesh;

/// One call from the host into a brush. `kind` determines which members are set; the others keep
/// their initial values.
struct BrushCall {
    enum Kind : int { SetActiveConfiguration, BeginStroke, ApplyDab, ApplyToWholeMesh, EndStroke };

    BrushCall(Kind callKind, BrushOperation& calledBrush) : kind(callKind), brush(calledBrush) {}

    Kind kind;
    BrushOperation& brush;
    /// For SetActiveConfiguration: the tool.
    const BrushConfiguration* configuration = nullptr;
    /// For BeginStroke and ApplyToWholeMesh: the mesh argument; null if the brush receives no mesh.
    Mesh* mesh = nullptr;
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    BrushOperation::TriggerType trigger = BrushOperation::TriggerStroke;
    /// For ApplyDab: the arguments of the call. `box` is read before and after the call.
    const SurfacePoint* hit = nullptr;
    Vector position;
    float size = 0.0f;
    float pressure = 0.0f;
    /// For ApplyDab and ApplyToWholeMesh.
    float strength = 0.0f;
    const AxisAlignedBoundingBox* box = nullptr;
    /// For ApplyToWholeMesh.
    bool byFacing = false;
};

/// Notified immediately before and after every call into a brush. An observer must not throw or
/// change any state that the brush reads.
class TROVIK_API StrokeObserver {
public:
    virtual void BeforeCall(const BrushCall& call) = 0;
    /// \param error  message of the exception that the brush threw, which is rethrown afterwards;
    /// null if the call returned.
    virtual void AfterCall(const BrushCall& call, const std::string* error) = 0;
    /// Called before the host runs a command that may change meshes without the brush, such as
    /// "undo". Within a stroke, the host calls this before every such change; between strokes, the
    /// call is optional.
    virtual void BeforeCommand(BrushOperation& brush, const std::string& name) {
        (void)brush, (void)name;
    }
    /// Called after the host has made both sides of a mirrored stroke exactly symmetric,
    /// immediately before EndStroke.
    /// \param vertices  the vertices whose position or normal has changed, in ascending order.
    virtual void AfterSettling(BrushOperation& brush,
                               const LevelMesh& mesh,
                               const std::vector<uint32_t>& vertices) {
        (void)brush, (void)mesh, (void)vertices;
    }

protected:
    ~StrokeObserver() = default;
};

/// Calls `run`, which makes the call described by `call`, and notifies the observer before and
/// after it. \param observer  may be null.
template <typename Run>
void Observed(StrokeObserver* observer, const BrushCall& call, Run&& run) {
    if (observer == nullptr) {
        std::forward<Run>(run)();
        return;
    }
    observer->BeforeCall(call);
    std::string reason;
    try {
        std::forward<Run>(run)();
    } catch (Error* error) {
        reason = error->Message().toStdString();
        observer->AfterCall(call, &reason);
        throw;
    } catch (const std::exception& error) {
        reason = error.what();
        observer->AfterCall(call, &reason);
        throw;
    } catch (...) {
        reason = "unknown exception";
        observer->AfterCall(call, &reason);
        throw;
    }
    observer->AfterCall(call, nullptr);
}

}  // namespace trovik
