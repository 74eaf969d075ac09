// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/grab/GrabSides.h"
#include "framework/grab/RegionChoice.h"
#include "framework/strokes/StrokeRevert.h"
#include "host/BrushOperation.h"

#include <memory>
#include <span>

namespace trovik {

/// The host's brush for moving form: its tools carry a region of the surface along with the
/// pointer. A StrokeLoop drives it like any other brush, with the same mirrors, pressure, falloffs,
/// facing angles, layers and undo.
///
/// A dab moves the surface at its hit by the vector from the hit to the dab's position, both in
/// world space: the hit is the point that is held, and the position is that of the pointer.
///
/// - Grab: the region under the first dab moves. Further dabs with the same hit replace the
///   displacement, which always starts from the shape before the first dab, so that moving the
///   pointer back restores the shape bit-exactly. A dab with another hit starts a new grab from the
///   current shape. Where the regions of mirrored sides overlap, the displacement of a vertex is
///   the sum of w d divided by the sum of w over these sides, where w is the vertex's weight and d
///   its displacement on a side. Regions that coincide are thus moved once and not once per side.
/// - ElasticGrab: like Grab, but the surface deforms like an elastic solid; see Kelvinlet. All
///   vertices with more than 1/4096 of the largest displacement move; the falloff is ignored. In
///   the modes other than Grab, only the component of the vector along the surface normal at the
///   hit counts, and one radius is an angle of 1 radian, or a growth by 1. ModifierInvert reverses
///   these modes.
/// - SnakeHook: each dab moves the region around its hit in the current shape, so that a path of
///   dabs pulls material along.
///
/// A vertex moves by its weight (see ChooseRegion) times the strength (percent / 100) times the
/// vector. Stamps are ignored. At the end of a stroke, one undo step with the tool's name is added
/// to the geometry's history. A new brush has no active tool, and behaves like Grab. If the active
/// layer is not writable, dabs have no effect.
class TROVIK_API GrabBrush : public BrushOperation, public StrokeRevert, public MeshUnlocker {
public:
    enum Tool : uint32_t { Grab, ElasticGrab, SnakeHook };

    GrabBrush();
    ~GrabBrush() override;

    /// Returns DrawMode::Drag or DrawMode::Pull.
    int StrokeDrawMode() const override;
    bool SetActiveConfiguration(const QString& toolName) override;
    void SetActiveConfiguration(BrushConfiguration* configuration) override;
    void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    /// \param strength  in percent. \param box  extended to contain the world positions of the
    /// region after the move.
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    /// Has no effect: there is no pointer to follow.
    void ApplyToWholeMesh(Mesh* mesh, float strength, bool byFacing) override;
    void EndStroke() override;
    void RevertBrushStroke() override;
    bool IsStrokeFree() override { return change == nullptr; }

    /// \throw Error* if a value of ElasticGrab that is read is out of range.
    void Serialize(Stream& stream) override;

    /// Maximum number of threads for moving a region; results do not depend on it.
    void SetThreads(unsigned count) { threads = count; }

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
    /// The brush's tools, which RegisterGrabBrush adds to BrushOperation's catalogue.
    static std::span<BrushConfiguration* const> Tools();
    /// \return null if the brush has no tool of this name.
    static BrushConfiguration* ToolOf(const QString& toolName);

    /// Whether only the part of the surface moves that is connected with the hit; see RegionReach.
    AttributeInstance<bool> connectedOnly;
    /// Whether the region moves only along the surface normal at the hit.
    AttributeInstance<bool> alongNormal;
    /// ElasticGrab: an ElasticMode, and the values of ElasticMaterial.
    AttributeInstance<int> elasticMode;
    AttributeInstance<int> elasticScales;
    AttributeFloatRange poissonRatio;

private:
    const Matrix& MirrorMap() const;
    GrabSide& SideOf(const SurfacePoint& hit, float size);
    ElasticField FieldOf(const SurfacePoint& hit, float size, WeightedVertices& chosen) const;
    Kelvinlet::Load LoadOf(const SurfacePoint& hit, float size, const Vector& way) const;
    void Pull(const SurfacePoint& hit, float size, const Vector& displacement);
    void ExtendBox(AxisAlignedBoundingBox& box, const MovedRegion& region) const;
    RegionReach Reach() const;
    uint32_t ActiveTool() const;
    void SetDefaults();
    void ShowSettings();
    void CheckElastic() const;

    LevelMesh* level = nullptr;
    std::unique_ptr<MeshChange> change;
    /// The falloff of this stroke, borrowed from the base class for the duration of the stroke.
    const Store<float>* falloff = nullptr;
    /// The sides of the current grab, the main side first.
    GrabSides sides;
    unsigned threads = allWorkerThreads;
};

/// Adds the tools of the grab brush to BrushOperation's catalogue, after those of the plug-ins that
/// have been loaded. Further calls have no effect.
TROVIK_API void RegisterGrabBrush();

}  // namespace trovik
