// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik {

/// Whether and how strokes refine a triangle mesh under the brush.
struct DetailSettings {
    /// The unit of `length`.
    enum class Measure : uint8_t {
        /// Strokes do not change the topology.
        Off,
        /// World units.
        World,
        /// Fractions of the radius of the dab.
        Radius,
        /// Viewport pixels at the depth of the dab.
        Pixels
    };
    Measure measure = Measure::Off;
    /// The edge length to aim for.
    float length = 0.1f;
    /// Whether edges are split that are much longer, and collapsed that are much shorter.
    bool splits = true;
    bool collapses = true;
    /// Edges at which the faces meet at a larger angle than this, in degrees, are kept as creases;
    /// 180 keeps none.
    float creaseAngle = 180.0f;

    /// Selects a unit, with a length that suits it: a tenth of the radius, or 8 pixels.
    /// \param radius  the radius of the brush in world units.
    void SelectMeasure(Measure selected, float radius) {
        if (selected == measure) return;
        measure = selected;
        if (measure == Measure::World) length = 0.1f * radius;
        if (measure == Measure::Radius) length = 0.1f;
        if (measure == Measure::Pixels) length = 8.0f;
    }
    bool IsOn() const { return measure != Measure::Off; }
    bool operator==(const DetailSettings&) const = default;
};

/// What a dab needs for refining the mesh; set by the stroke loop for each dab.
struct DabDetail {
    bool isOn = false;
    bool splits = true;
    bool collapses = true;
    float creaseAngle = 180.0f;
    /// The edge length to aim for and the radius of the dab, mesh-local.
    float length = 0.0f;
    float radius = 0.0f;
};

}  // namespace trovik
