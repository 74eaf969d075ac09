// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"

#include <cstdint>

namespace trovik {

/// How the stamp of one dab lies in the world: a middle, three axes of unit length that stand
/// square to each other, and a size. The image's rows run along `Right`, its top points to `Up`,
/// and `Out` points to the viewer.
///
/// The longer side of the image measures two radii; pixels are square. Pixel k is centred on
/// coordinate k, as the brush rounds, so the middle of an image of width W lies at (W - 1) / 2 and
/// its borders at -0.5 and W - 0.5.
class TROVIK_API StampPlacement {
public:
    /// Flat on the surface.
    /// \param middle, normal, toward  world. `normal` of any length but 0. `toward`, where the
    /// image's top shall point, is brought into the surface; where that leaves nothing, `Up` is the
    /// camera's up direction brought into the surface, and where that stands on it too, the
    /// camera's view direction.
    /// \param radius  world units, more than 0.
    static StampPlacement OnSurface(const Vector& middle,
                                    const Vector& normal,
                                    float radius,
                                    const Vector& toward,
                                    const Matrix& cameraToWorld);

    /// Projected from the camera: the stamp stands at the middle, square to the view, with this
    /// radius there, and what lies behind it on a line of sight takes the same pixel. A middle that
    /// is nearer to the eye than one radius is projected along parallel lines.
    /// \param toward  as for OnSurface, brought into the image plane; the camera's up otherwise.
    static StampPlacement ByCamera(const Vector& middle,
                                   float radius,
                                   const Vector& toward,
                                   const Matrix& cameraToWorld);

    /// Turns the stamp clockwise as the viewer sees it. Quarter turns are exact.
    void Turn(float fullTurns);

    /// Mesh-local position to stamp pixel, projective; its z is the height over the stamp in
    /// pixels, 0 in the stamp's plane. Worked out in double precision and rounded once.
    /// \param width, height  of the image, at least 1.
    Matrix ToPixels(uint32_t width, uint32_t height, const Matrix& localToWorld) const;

    const Vector& Middle() const { return middle; }
    const Vector& Right() const { return right; }
    const Vector& Up() const { return up; }
    const Vector& Out() const { return out; }

    /// The matrix of a mirrored dab: the pixel of a place is that of the place whose mirror image
    /// it is. For mirrors over the mesh's planes the same bits but for signs.
    /// \param pointMap  takes main places to mirrored ones, mesh-local; must have an inverse.
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

/// A direction as the cosine and sine of its angle.
struct TurnDirection {
    float cosine;
    float sine;
};
/// The same bits on every machine; exact at quarter turns.
TROVIK_API TurnDirection DirectionOfTurn(float fullTurns);

}  // namespace trovik
