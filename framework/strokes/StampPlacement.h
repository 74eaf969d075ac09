// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"

#include <cstdint>

namespace trovik {

/// The placement of one dab's stamp in world space: a centre, three orthonormal axes and a size.
/// The image rows run along `Right`, the image's up direction is `Up`, and `Out` points towards the
/// viewer.
///
/// The longer side of the image measures two radii; pixels are square. Pixel k is centred on
/// coordinate k, which matches the brush's rounding. An image of width W therefore extends from
/// -0.5 to W - 0.5, and its centre is at (W - 1) / 2.
class TROVIK_API StampPlacement {
public:
    /// A stamp that lies flat on the surface.
    /// \param middle, normal, toward  in world space. `normal` may have any non-zero length.
    /// `toward`, the image's up direction, is projected onto the surface. If the projection
    /// vanishes, `Up` is the camera's up direction projected onto the surface, and if that vanishes
    /// too, the camera's view direction.
    /// \param radius  in world units, above 0.
    static StampPlacement OnSurface(const Vector& middle,
                                    const Vector& normal,
                                    float radius,
                                    const Vector& toward,
                                    const Matrix& cameraToWorld);

    /// A stamp projected from the camera: it is centred on `middle`, perpendicular to the view
    /// direction, and has the given radius there. All points on the same line of sight map to the
    /// same pixel. If `middle` is less than one radius from the eye, the projection is parallel.
    /// \param toward  as for OnSurface, but projected onto the image plane; if the projection
    /// vanishes, the camera's up direction is used.
    /// \param isOrthographic  whether the lines of sight are parallel; the position of the camera
    /// then has no effect.
    static StampPlacement ByCamera(const Vector& middle,
                                   float radius,
                                   const Vector& toward,
                                   const Matrix& cameraToWorld,
                                   bool isOrthographic = false);

    /// Rotates the stamp clockwise as seen by the viewer. Quarter turns are exact.
    void Turn(float fullTurns);

    /// Returns the projective matrix that maps mesh-local positions to stamp pixels; z is the
    /// height above the stamp's plane, in pixels. Computed in double precision and rounded once.
    /// \param width, height  image size in pixels, at least 1.
    Matrix ToPixels(uint32_t width, uint32_t height, const Matrix& localToWorld) const;

    const Vector& Middle() const { return middle; }
    const Vector& Right() const { return right; }
    const Vector& Up() const { return up; }
    const Vector& Out() const { return out; }

    /// The matrix of a mirrored dab, which maps each position to the same pixel as its mirror image
    /// on the main side. For mirrors in the mesh's coordinate planes, the matrices differ only in
    /// signs.
    /// \param pointMap  maps main positions to mirrored ones, mesh-local; must be invertible.
    static Matrix Mirrored(const Matrix& toPixels, const Matrix& pointMap);

private:
    void SetUp(const Vector& toward, const Matrix& cameraToWorld);

    Vector middle;
    Vector right{1.0f, 0.0f, 0.0f};
    Vector up{0.0f, 1.0f, 0.0f};
    Vector out{0.0f, 0.0f, 1.0f};
    Vector eye;
    float radius = 1.0f;
    bool projected = false;
};

/// A direction, given by the cosine and sine of its angle.
struct TurnDirection {
    float cosine;
    float sine;
};
/// Returns the direction of a rotation; bit-identical on every machine, and exact at quarter turns.
TROVIK_API TurnDirection DirectionOfTurn(float fullTurns);

}  // namespace trovik
