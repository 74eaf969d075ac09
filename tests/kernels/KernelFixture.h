// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeFixture.h"

#include <vector>

namespace trovik::test {

/// The state of a brush in the middle of a dab, with members set directly, so that a test can call
/// a kernel without a traversal or dab preparation.
///
/// Set up the mesh through `stroke` (layer, renderers, mask, transform), then call Start. A dab has
/// full pressure, strength 1, direction +z and an empty dirty box at its centre, unless a test sets
/// the brush's members otherwise. The grids are filled with NaN, so that unwritten cells can be
/// detected.
class KernelFixture {
public:
    KernelFixture(const PolygonMesh& polygons, unsigned subdivisions, int32_t patchLevelOfDabs);
    ~KernelFixture();

    /// Begins a stroke with the tool and sets up its first dab.
    void Start(Tool tool, int falloffIndex = 0);
    /// Sets the centre and radius, in the space in which distances are measured, and resets the
    /// dirty box to the centre.
    void Aim(const Vector& center, float radius);
    /// Begins the next dab of the stroke at the same position.
    void NextDab();
    /// Ends the stroke and begins one with the same tool and a new dab.
    void Restart(Tool tool, int falloffIndex = 0);

    /// Runs the kernel that the brush's members select.
    bool RunKernel(uint32_t patch);
    /// Runs the complete traversal callback: ghost cells, kernel, normals, notifications.
    bool RunTester(uint32_t patch) { return brush.Tester(brush.patchMesh, patch); }

    uint32_t Points() const { return (1u << patchLevel) + 1; }
    uint32_t VertexAt(uint32_t patch, uint32_t row, uint32_t column) const;
    uint32_t CellAt(uint32_t row, uint32_t column) const;
    Vector GridAt(uint32_t row, uint32_t column) const;
    /// The vertex nearest to a point.
    uint32_t VertexNear(const Vector& point) const;
    float Height(uint32_t vertex) const { return mesh.Position(vertex).z; }
    /// The record of the vertex in the stroke's change, or null.
    const StoredVertexInfo* Record(uint32_t vertex) const;
    Vector BoxMin() const { return static_cast<Vector>(brush.brushSpace->boundsMin); }
    Vector BoxMax() const { return static_cast<Vector>(brush.brushSpace->boundsMax); }

    /// Sets a stamp with the given pixels (one float each, or three for a vector stamp). Pixel
    /// coordinates are x and y times `scale`; pixel centres are at integers.
    void SetStamp(uint32_t width,
                  uint32_t height,
                  const std::vector<float>& pixels,
                  bool isVector,
                  float scale = 1.0f);

    StrokeFixture stroke;
    SwiftStroke& brush;
    LevelMesh& mesh;
    const int32_t patchLevel;
    std::vector<HWVector> positionCells;
    std::vector<HWVector> layerCells;

private:
    bool running = false;
};

/// Sets the facing falloff and a camera for it during its lifetime.
class FacingAngle {
public:
    /// Angles are in degrees; the camera is at `eye`, in world space.
    FacingAngle(SwiftStroke& brush, const Vector& eye, float start, float range);
    ~FacingAngle();
    FacingAngle(const FacingAngle&) = delete;
    FacingAngle& operator=(const FacingAngle&) = delete;
};

}  // namespace trovik::test
