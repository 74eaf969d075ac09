// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/remesh/SurfaceReplacement.h"

#include <optional>

namespace trovik {

/// Settings of a decimation. At least one of `faces`, `ratio` and `error` must be set.
struct Decimation {
    /// Number of triangles to keep, including those of masked areas.
    std::optional<uint32_t> faces = {};
    /// Largest distance between the old and the new surface, in world units.
    std::optional<float> error = {};
    /// Keeps all vertices of open borders. Borders are always kept if a part is masked.
    bool keepsBorders = true;
    /// The fraction of the triangles to keep; if it is set, `faces` is ignored.
    std::optional<float> ratio = {};
};

/// Thrown if no faces would remain.
class TROVIK_API NothingRemains : public HostError {
public:
    NothingRemains() : HostError("no faces would remain") {}
    NothingRemains(const NothingRemains&) noexcept = default;
    NothingRemains& operator=(const NothingRemains&) = delete;
    ~NothingRemains() override;
};

/// Replaces the mesh by a coarser one, whose vertices are a subset of the old ones. Quads are split
/// into triangles. Faces whose vertices are all masked by at least half are kept; texture seams are
/// kept as seams.
///
/// Edges are collapsed in the order of their quadric error; see Garland, Heckbert: "Surface
/// Simplification Using Quadric Error Metrics" (1997). Quadrics are only an estimate of the
/// distance, so the result is measured at the vertices of the old surface and at the vertices, edge
/// midpoints and face centres of the new one, and the decimation is repeated with a smaller
/// estimate until it is within `error`.
///
/// If the number of faces cannot be reached, a warning reports it. Throws NothingRemains.
TROVIK_API SurfaceOperation Decimate(const Decimation& settings);

}  // namespace trovik
