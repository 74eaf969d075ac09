// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/freeze/FreezeDab.h"
#include "framework/freeze/FreezeStamp.h"
#include "framework/strokes/StrokePutBack.h"
#include "host/BrushOperation.h"

#include <memory>

namespace trovik {

/// The host's own brush, which freezes in place of moving: a StrokeLoop drives it like any other,
/// with the same paths, mirrors, pressure, falloffs, facing angles and stamps.
///
/// A dab takes each vertex under it (VerticesUnderDab) by a weight w: falloff at its distance,
/// times facing, times stamp, times strength in percent / 100, within 0 to 1. With s the vertex's
/// share, its amount / 127:
///     freezing                       s + (1 - s) w
///     ModifierInvert: unfreezing     s - s w
///     ModifierSmooth: blurring       s + (m - s) w, m the mean share of its neighbours before the
///                                    dab
/// Shares are kept in single precision during a stroke; amounts are rounded from them.
///
/// At the end of a stroke one step, labelled "Freeze", goes into the history of the geometry. No
/// other freezing may come between the two ends of a stroke.
/// Cost of a dab: the faces under it.
class TROVIK_API FreezeBrush : public BrushOperation, public StrokePutBack {
public:
    FreezeBrush();
    ~FreezeBrush() override;

    void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    /// \param strength  percent. \param box  grows by the world places of the vertices that
    /// changed.
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    /// Every vertex of the mesh, with no falloff.
    void ApplyToWholeMesh(Mesh* mesh, float strength, bool byFacing) override;
    void EndStroke() override;
    void PutBackStroke() override;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
    /// The one tool of the brush, "Freeze". It is not in the catalogue of BrushOperation, which
    /// lists what plug-ins bring.
    static BrushConfiguration* Tool();

private:
    void Apply(const std::vector<FreezeReach>& reached,
               const std::vector<float>& weights,
               AxisAlignedBoundingBox& box);
    void ReportMask(const std::vector<uint32_t>& vertices) const;
    float FalloffAt(float distance, float radius) const;
    float FacingFactor(uint32_t vertex, const Vector& eye) const;
    float MeanAround(const FreezeReach& at) const;
    Vector Eye() const;

    LevelMesh* level = nullptr;
    /// That of the stroke, which later settings do not change. Borrowed from the base for its
    /// length.
    const Store<float>* falloff = nullptr;
    Modifier strokeModifier = ModifierNone;
    std::unique_ptr<FreezeRecords> records;
    FreezeStamp stamp;
};

}  // namespace trovik
