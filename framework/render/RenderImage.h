// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/ShadingMode.h"
#include "host/Vector.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

class EmbreeScene;
class JobControl;

/// The camera of a render. Positions are in world space, angles in degrees.
///
/// In orthographic projection, the image shows the part of the plane through `target` that it would
/// show in perspective. Meshes behind the eye are visible too.
struct RenderCamera {
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    Vector up{0.0f, 1.0f, 0.0f};
    /// Vertical field of view.
    float verticalFieldOfView = 35.0f;
    bool isOrthographic = false;
};

/// A mesh to be rendered. The arrays are borrowed for the call.
struct RenderMesh {
    /// x, y, z of each vertex, mesh-local, `positionStride` bytes apart.
    const float* positions = nullptr;
    std::size_t positionStride = 12;
    uint32_t vertexCount = 0;
    /// Packed normal of each vertex (x, y, z in units of 1/32767), `normalStride` bytes apart; null
    /// for flat faces.
    const int16_t* normals = nullptr;
    std::size_t normalStride = 8;
    const uint32_t* faceVertexIndices = nullptr;
    uint32_t faceCount = 0;
    /// The number of corners per face: 3 or 4.
    uint32_t cornersPerFace = 4;
    /// Local to world, row-major, row-vector convention.
    float localToWorld[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    /// Freeze byte of each vertex (amount in the low 7 bits), `freezeStride` bytes apart; may be
    /// null. Frozen areas are tinted.
    const uint8_t* freeze = nullptr;
    std::size_t freezeStride = 1;
    /// One byte per face; faces with the bit `hiddenBit` are omitted from renders and from the
    /// framing of cameras. May be null.
    const uint8_t* faceFlags = nullptr;
    uint8_t hiddenBit = 0;
    /// For ShadingMode::Cavity: the mean curvature of each vertex, positive in cavities (see
    /// ScaledCurvatures); null if it is 0 everywhere.
    const float* curvatures = nullptr;
    /// For ShadingMode::Uv: u, v of each corner, face by face; NaN for a corner without UVs. Null
    /// if no corner has UVs.
    const float* cornerUvs = nullptr;
    /// For ShadingMode::VertexColors: sRGB red, green and blue of each vertex, 0 .. 1; null if
    /// there are none.
    const float* vertexColors = nullptr;
    /// The base colour: linear red, green and blue.
    float color[3] = {0.46f, 0.33f, 0.26f};

    bool HasHiddenFaces() const { return faceFlags != nullptr; }
    bool IsHidden(uint32_t face) const {
        return faceFlags != nullptr && (faceFlags[face] & hiddenBit) != 0;
    }
};

struct RenderOptions {
    int width = 960;
    int height = 720;
    /// Number of rays through each pixel; at least 1.
    int samples = 16;
    bool wireframe = false;
    ShadingMode shading = ShadingMode::Clay;
    /// For ShadingMode::Matcap: one of Matcap::Names(); empty for the first.
    std::string matcap = {};
    /// Whether to omit the backdrop; the result then has alpha.
    bool transparent = false;
};

/// A rendered image: rows from the top, sRGB, three bytes per pixel.
struct RenderImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;
    /// Coverage of each pixel by the meshes, 0 .. 255, one byte per pixel; colours are not
    /// premultiplied. Empty if the render is opaque.
    std::vector<uint8_t> alpha = {};
};

/// Meshes prepared for rendering. The constructor builds the acceleration structure for ray tracing
/// in O(faces); any number of renders can share it. Borrows the arrays of the meshes.
class TROVIK_API RenderScene {
public:
    /// \throw HostError if finite vertices are beyond maxRenderCoordinate (RenderRange.h), if
    /// memory is insufficient, or if the ray tracing library cannot be loaded; Cancelled.
    explicit RenderScene(std::vector<RenderMesh> meshes, JobControl* job = nullptr);
    ~RenderScene();
    RenderScene(const RenderScene&) = delete;
    RenderScene& operator=(const RenderScene&) = delete;

    /// Renders one image. Both sides of a face are shaded in the same way. The result is
    /// bit-identical for any number of threads. Faces with a non-finite vertex are omitted.
    ///
    /// Shadows and ambient occlusion are each sampled with `options.samples` rays per pixel. They
    /// are then smoothed between neighbouring pixels of the same surface, within their sampling
    /// error; see VisibilityFilter.h. Memory: about 200 bytes for each of at most 2 million pixels,
    /// in addition to the result.
    /// \throw HostError for a camera without a direction or beyond maxRenderCoordinate, or for an
    /// unknown matcap; Cancelled.
    RenderImage Render(const RenderCamera& camera,
                       const RenderOptions& options,
                       JobControl* job = nullptr) const;

private:
    std::vector<RenderMesh> meshes;
    std::unique_ptr<EmbreeScene> scene;
};

/// Renders meshes once; use RenderScene for several renders of the same meshes.
TROVIK_API RenderImage RenderOnce(const std::vector<RenderMesh>& meshes,
                                  const RenderCamera& camera,
                                  const RenderOptions& options,
                                  JobControl* job = nullptr);

/// Returns a camera that looks along `direction` (world space) and frames all meshes with a small
/// margin. Hidden faces are ignored; if nothing is visible, the result is the default camera.
/// \param up  the up direction of the image; replaced if it is parallel to `direction`.
TROVIK_API RenderCamera FrameMeshes(const std::vector<RenderMesh>& meshes,
                                    const Vector& direction,
                                    float verticalFieldOfView,
                                    float aspect,
                                    const Vector& up = Vector(0.0f, 1.0f, 0.0f),
                                    bool isOrthographic = false);

/// Returns the camera of frame `index` of a turntable with `count` frames. The camera orbits its
/// target around its up direction, so that the meshes appear to rotate counter-clockwise when seen
/// from above.
TROVIK_API RenderCamera TurntableFrame(const RenderCamera& camera, int index, int count);

/// Like FrameMeshes, but for a turntable: at the distance of the returned camera, the meshes fit
/// into every frame.
TROVIK_API RenderCamera FrameTurntable(const std::vector<RenderMesh>& meshes,
                                       const Vector& direction,
                                       float verticalFieldOfView,
                                       float aspect,
                                       const Vector& up,
                                       int count,
                                       bool isOrthographic = false);

/// Builds a contact sheet from images of the same size, arranged in rows of `columns` images with
/// gaps of `gap` pixels between them. If `captions` has as many entries as there are images, a
/// caption is drawn under each one. Transparent images are composited over the sheet's background
/// (Porter, Duff: "Compositing Digital Images" (1984)); the sheet is opaque.
TROVIK_API RenderImage MakeContactSheet(const std::vector<RenderImage>& pictures,
                                        int columns,
                                        int gap,
                                        const std::vector<std::string>& captions);

}  // namespace trovik
