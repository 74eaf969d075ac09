// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <string>
#include <vector>

namespace trovik {

/// Where a picture is seen from. World space; degrees.
struct PictureCamera {
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    Vector up{0.0f, 1.0f, 0.0f};
    /// Opening angle from top to bottom.
    float verticalFieldOfView = 35.0f;
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
    float color[3] = {0.55f, 0.43f, 0.36f};
};

struct PictureOptions {
    int width = 960;
    int height = 720;
    /// Rays through each pixel; at least 1.
    int samples = 16;
    bool wireframe = false;
};

/// Rows from the top, sRGB, three bytes a pixel.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;
};

/// Clay under a warm key light with a cool fill, a rim light, soft shadows and ambient occlusion,
/// shaded smoothly by the packed normals. The same input gives the same bytes whatever the number
/// of threads. Vertices that are not finite take their faces out of the picture.
/// \throw HostError if finite vertices or the camera are outside of maxRenderCoordinate
/// (RenderRange.h), if memory is short, or if the ray library cannot be loaded.
Picture RenderPicture(const std::vector<PictureMesh>& meshes,
                      const PictureCamera& camera,
                      const PictureOptions& options);

/// A camera that shows all of the meshes with a small margin, looking along `direction` (world).
PictureCamera FrameMeshes(const std::vector<PictureMesh>& meshes,
                          const Vector& direction,
                          float verticalFieldOfView,
                          float aspect);

/// Pictures of one size in rows of `columns`, `gap` pixels apart. A caption is written under each
/// picture when `captions` has as many entries as there are pictures.
Picture PlaceInRows(const std::vector<Picture>& pictures,
                    int columns,
                    int gap,
                    const std::vector<std::string>& captions);

}  // namespace trovik
