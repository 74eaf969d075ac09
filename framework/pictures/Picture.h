// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cstddef>
#include <string>
#include <vector>

/// \file
/// Pictures of meshes without a screen.
///
///     PictureMesh shown;                      // borrow positions, normals, faces
///     const PictureCamera camera = FrameMeshes({shown}, Vector(0, 0, -1), 35.0f, 4.0f / 3.0f);
///     const Picture picture = RenderPicture({shown}, camera, PictureOptions{});
///     WriteImageFile("head.png", picture.rgb.data(), ...);

namespace trovik {

/// Where a picture is seen from. World space; degrees.
struct PictureCamera {
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    /// Need not be square to the line of sight; along it, another direction is taken.
    Vector up{0.0f, 1.0f, 0.0f};
    /// Opening angle from top to bottom; above 0 and below 180.
    float verticalFieldOfView = 35.0f;
    /// Above 0: parallel projection, the picture that many world units high, of what lies in front
    /// of the eye; the opening angle is then not used.
    float orthographicHeight = 0.0f;
};

/// A mesh as the picture maker sees it. The arrays are borrowed for the call.
struct PictureMesh {
    /// x, y, z of each vertex, mesh-local, `positionStride` bytes apart.
    const float* positions = nullptr;
    std::size_t positionStride = 12;
    uint32_t vertexCount = 0;
    /// Packed x, y, z (1/32767) of each vertex, `normalStride` bytes apart; null: flat faces.
    const int16_t* normals = nullptr;
    std::size_t normalStride = 8;
    /// `cornersPerFace` vertex numbers a face. A face that names a vertex that is not there is left
    /// out of the picture.
    const uint32_t* faceVertexIndices = nullptr;
    uint32_t faceCount = 0;
    /// 3 or 4.
    uint32_t cornersPerFace = 4;
    /// Local to world, row by row, row-vector convention.
    float localToWorld[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    /// Freeze byte of each vertex (amount in the low 7 bits), `freezeStride` bytes apart; null:
    /// none. Frozen areas are tinted.
    const uint8_t* freeze = nullptr;
    std::size_t freezeStride = 1;
    /// Linear red, green, blue.
    float color[3] = {0.52f, 0.39f, 0.315f};
};

struct PictureOptions {
    /// Pixels; 1 to 16384 each.
    int width = 960;
    int height = 720;
    /// Rays through each pixel; less than 1 counts as 1.
    int samples = 16;
    /// Draws the edges of the faces, equally thin near and far; they fade where faces are only a
    /// few pixels wide.
    bool wireframe = false;
    /// Darkens creases and hollows.
    bool ambientOcclusion = true;
    /// Rays for that at each sample; less than 1 counts as 1.
    int occlusionSamples = 2;
    /// Another seed gives other noise, of the same strength.
    uint32_t seed = 0;
    /// Linear colours of the backdrop at the upper and lower edge of the picture.
    Vector backgroundTop{0.15f, 0.165f, 0.19f};
    Vector backgroundBottom{0.035f, 0.038f, 0.044f};
    /// Fills Picture::alpha and leaves the backdrop out of `rgb`.
    bool transparentBackground = false;
};

/// Rows from the top, pixels from the left.
struct Picture {
    int width = 0;
    int height = 0;
    /// sRGB, three bytes a pixel.
    std::vector<uint8_t> rgb;
    /// With a transparent background how much of each pixel is covered, one byte a pixel; `rgb` is
    /// not multiplied by it, and black where nothing is. Otherwise empty.
    std::vector<uint8_t> alpha;
};

/// Clay under a warm key light from the upper left of the camera with a cool fill, a rim light,
/// soft shadows and ambient occlusion, shaded smoothly by the packed normals.
///
/// The same input gives the same bytes whatever the number of threads, on one machine. Faces with
/// vertices that are not finite are left out. No meshes, or empty ones, give the plain backdrop.
/// Memory beside the picture: about 100 bytes per quad. Uses all threads of the calling arena.
/// \throw HostError for a size out of range, faces of neither 3 nor 4 corners, a camera that has no
/// direction, or when memory runs out.
TROVIK_API Picture RenderPicture(const std::vector<PictureMesh>& meshes,
                                 const PictureCamera& camera,
                                 const PictureOptions& options);

/// The nearest camera that sees all of the meshes' finite vertices when looking along `direction`
/// (world space, any length but 0) with y, or z when looking along y, as up: 5 % of the picture stay
/// free on every side. Nothing to see gives a camera one unit away from the origin.
/// \param aspect  width divided by height of the picture.
TROVIK_API PictureCamera FrameMeshes(const std::vector<PictureMesh>& meshes,
                                     const Vector& direction,
                                     float verticalFieldOfView,
                                     float aspect);

/// Pictures in rows of `columns`, `gap` pixels around each. All cells are as large as the widest
/// and the highest picture. With captions there is a line of text under each picture, shortened
/// to its cell; missing ones stay empty.
/// \throw HostError for less than one column or a gap below zero.
TROVIK_API Picture PlaceInRows(const std::vector<Picture>& pictures,
                               int columns,
                               int gap,
                               const std::vector<std::string>& captions);

}  // namespace trovik
