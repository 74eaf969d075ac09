// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"
#include "framework/strokes/StampPlacement.h"
#include "framework/strokes/StrokeRandom.h"
#include "host/BrushOperation.h"

namespace trovik {

struct StrokeDab;

/// Values of the "stamppositioning" brush attribute, which determines the position and orientation
/// of a dab's stamp. The "stamprotation" attribute adds a clockwise rotation in whole degrees.
enum class StampPositioning : int {
    /// The tool's default: Stroke for Repeat and Knife, the drag direction for Imprint, and Upright
    /// for all others.
    Tool = 0,
    /// Centred on the dab, upright in the view.
    Upright = 1,
    /// Centred on the dab, with its up direction along the stroke.
    Stroke = 2,
    /// With the position and size that the stamp had at the first dab of the stroke.
    Start = 3,
};

/// The state of the stamp during one stroke. It determines the position, rotation, scattering and
/// spacing of each dab's copy.
///
/// The presence of a stamp, its size and its pixels are determined at the start of the stroke.
/// Other settings are read for each dab. If the brush's IsOrientedToSurface is set, the stamp lies
/// flat on the surface; otherwise it is projected from the scene's active camera. Random numbers
/// depend only on the seed and the preceding dabs.
class TROVIK_API StampStroke {
public:
    /// Borrows all arguments until the next Begin.
    void Begin(const BrushOperation& brush,
               const LevelGeometry& geometry,
               const PatchTree& tree,
               uint64_t seed);
    /// Resets to the state right after Begin.
    void Restart();

    /// Applies the stamp settings to a dab. A randomised stamp (such as that of Spray) moves the
    /// dab by up to one radius and scales its radius to between half and full size, unless
    /// StrokeDab::keepPosition is set. Sets the dab's stamp matrix.
    void PlaceStamp(StrokeDab& dab);

    /// The stamp matrix for a tool that is applied to the whole mesh: the stamp is projected from
    /// the camera onto the bounding sphere of this box (mesh-local).
    Matrix OverAll(const AxisAlignedBoundingBox& box) const;

    /// Distance to the next dab in world units: `fraction` times the radius. With a stamp, the
    /// Repeat tool places its copies side by side instead: the distance is two radii plus the
    /// brush's stamp spacing (in percent of the radius) plus random jitter. Call once per dab.
    float Spacing(float radius, float fraction);

private:
    bool HasStamp() const { return width != 0 && height != 0; }
    void Scatter(StrokeDab& dab);
    StampPlacement Place(const StrokeDab& dab, const Vector& toward) const;

    const BrushOperation* brush = nullptr;
    const LevelGeometry* geometry = nullptr;
    const PatchTree* tree = nullptr;
    uint64_t seed = 0;
    /// Size of the stamp image; 0 if there is no stamp.
    uint32_t width = 0;
    uint32_t height = 0;
    StrokeRandom random;
    StrokeRandom spacingRandom;
    /// Position of the previous dab on the path (before scattering), in world space.
    Vector previous;
    bool hasPrevious = false;
    /// Matrix of the first dab, for StampPositioning::Start.
    Matrix startMatrix;
    bool hasStart = false;
};

}  // namespace trovik
