// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/freeze/FreezeDab.h"
#include "framework/freeze/FreezeStamp.h"
#include "framework/strokes/StrokeRevert.h"
#include "host/BrushOperation.h"

#include <memory>

namespace trovik {

/// The host's own brush, which paints the mask instead of moving vertices. A StrokeLoop drives it
/// like any other brush, with the same paths, mirrors, pressure, falloffs, facing angles and
/// stamps.
///
/// A dab changes each vertex under it (VerticesUnderDab) by a weight w, which is the product of the
/// falloff at the vertex's distance, the facing factor, the stamp value and the strength (percent /
/// 100), clamped to [0, 1]. If s is the vertex's mask weight (amount / 127), the new mask weight is
///
///     freezing                      s + (1 - s) w
///     ModifierInvert: unfreezing    s - s w
///     ModifierSmooth: blurring      s + (m - s) w
///
/// where m is the mean mask weight of its neighbours before the dab. During a stroke, mask weights
/// are kept in single precision; the mask stores them rounded to freeze amounts.
///
/// At the end of a stroke, one undo step labelled "Freeze" is added to the geometry's history. No
/// other code may change the mask during the stroke. Cost of a dab: O(faces under it).
class TROVIK_API FreezeBrush : public BrushOperation, public StrokeRevert {
public:
    FreezeBrush();
    ~FreezeBrush() override;

    void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    /// \param strength  in percent. \param box  extended to contain the world positions of the
    /// vertices whose mask changed.
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    /// Affects every vertex of the mesh, without a falloff.
    void ApplyToWholeMesh(Mesh* mesh, float strength, bool byFacing) override;
    void EndStroke() override;
    void RevertBrushStroke() override;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
    /// The brush's only tool, "Freeze". It is not in BrushOperation's catalogue, which lists the
    /// plug-ins' tools.
    static BrushConfiguration* Tool();

private:
    void Apply(const std::vector<FreezeReach>& reached,
               const std::vector<float>& weights,
               AxisAlignedBoundingBox& box);
    void ReportMask(const std::vector<uint32_t>& vertices) const;
    float MeanAround(const FreezeReach& at) const;

    LevelMesh* level = nullptr;
    /// The falloff of this stroke; changes to the setting during the stroke do not affect it.
    /// Borrowed from the base class for the duration of the stroke.
    const Store<float>* falloff = nullptr;
    Modifier strokeModifier = ModifierNone;
    std::unique_ptr<FreezeRecords> records;
    FreezeStamp stamp;
};

}  // namespace trovik
