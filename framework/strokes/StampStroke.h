// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"
#include "framework/strokes/StampPlacement.h"
#include "framework/strokes/StrokeRandom.h"
#include "host/BrushOperation.h"

namespace trovik {

struct StrokeDab;

/// Values of the brush's attribute "stamppositioning": where a dab's stamp lies and which way it
/// points. Its attribute "stamprotation" turns it further, in whole degrees clockwise.
enum class StampPositioning : int {
    /// As the tool does: Repeat and Knife as Stroke, Imprint as drawn, all others Upright.
    Tool = 0,
    /// In the middle of the dab, upright in the view.
    Upright = 1,
    /// In the middle of the dab, its top along the stroke.
    Stroke = 2,
    /// Where the stroke's first dab laid it, in the size that it had there.
    Start = 3,
};

/// The stamp along one stroke: where each dab's copy lies, how it is turned, scattered and spaced.
///
/// Whether there is a stamp, and the size of its image, are those of the stroke's beginning, as are
/// the pixels that the brush copied then. Other settings are read as the dabs come. The brush's
/// IsOrientedToSurface lays the stamp flat on the surface; otherwise it is projected from the
/// scene's active camera. Random numbers come from the seed alone, in an order that hangs on
/// nothing but the dabs before.
class TROVIK_API StampStroke {
public:
    /// Borrows all until the next Begin.
    void Begin(const BrushOperation& brush,
               const LevelGeometry& geometry,
               const PatchTree& tree,
               uint64_t seed);
    /// Back to how it stood after Begin.
    void Restart();

    /// Makes of the dab what the stamp wants of it. With a stamp that is randomised (Spray's is)
    /// the dab gets another place within one radius, and a radius between one half and all of its
    /// own, unless the dab keeps its place. Sets the dab's stamp matrix.
    void Lay(StrokeDab& dab);

    /// Stamp matrix for a tool that is applied to the whole mesh: projected from the camera, over
    /// the ball around this box (mesh-local).
    Matrix OverAll(const AxisAlignedBoundingBox& box) const;

    /// Distance to the next dab, world units: `share` of the radius. Repeat with a stamp lays its
    /// copies side by side instead: two radii and the brush's stamp spacing, percent of the radius,
    /// with a random part on top. To be asked once for each dab.
    float Spacing(float radius, float share);

private:
    bool HasStamp() const { return width != 0 && height != 0; }
    void Scatter(StrokeDab& dab);
    StampPlacement Place(const StrokeDab& dab, const Vector& toward) const;

    const BrushOperation* brush = nullptr;
    const LevelGeometry* geometry = nullptr;
    const PatchTree* tree = nullptr;
    uint64_t seed = 0;
    /// Of the stamp's image; 0 without a stamp.
    uint32_t width = 0;
    uint32_t height = 0;
    StrokeRandom random;
    StrokeRandom spacingRandom;
    /// Middle of the dab before, world, as the path had it.
    Vector previous;
    bool hasPrevious = false;
    /// Matrix of the first dab, for stamps that stay there.
    Matrix startMatrix;
    bool hasStart = false;
};

}  // namespace trovik
