// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Vector.h"

#include <QColor>
#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace trovik::studio {

/// How the viewport draws the surface; panels and actions change it.
struct RenderSettings {
    /// A name from Matcaps::Names.
    QString matcap = QStringLiteral("clay");
    bool isFlat = false;
    bool hasWireframe = false;
    /// From 0 (off) to 1 (strong).
    float cavity = 0.4f;
    bool showsMask = true;
    bool showsGroups = false;
    bool hasGrid = true;
    bool hasGround = false;
    bool showsReferences = true;
    /// Background colours from the bottom to the top of the viewport.
    std::array<QColor, 2> background{QColor(38, 40, 44), QColor(70, 74, 80)};
    bool operator==(const RenderSettings&) const = default;
};

/// The camera of a frame. Row-vector convention; clip depth from -w to w.
struct RenderView {
    Matrix worldToClip;
    Vector eye;
    /// View direction of the camera, unit length.
    Vector forward;
    Vector right;
    Vector up;
    bool isOrthographic = false;
    /// Device pixels.
    int width = 1;
    int height = 1;
    /// World units that one pixel covers at distance 1 (perspective), or anywhere (orthographic).
    float pixelSize = 0.001f;
};

/// The brush ring: where the next dab would be applied, in world space.
struct BrushRing {
    Vector position;
    Vector normal;
    float radius = 0.0f;
    QColor color = Qt::white;
    /// Falloff from the centre to the rim, 0 to 1, for the preview; may be empty.
    std::vector<float> falloff;
};

/// Everything that is drawn over or next to the surface, apart from widgets. World space.
struct Overlays {
    std::optional<BrushRing> ring;
    /// The positions of mirrored dabs.
    std::vector<BrushRing> mirroredRings;
    /// Planes of symmetry as mesh-local axes 0, 1, 2.
    std::vector<int> symmetryPlanes;
    /// The line from the stabilised brush to the pen, in device pixels of the viewport.
    std::vector<std::array<float, 2>> lazyString;
    /// The box or lasso that is being drawn, in device pixels; closed.
    std::vector<std::array<float, 2>> selection;
};

/// Statistics of the last frame.
struct RenderStats {
    uint64_t patchesUploaded = 0;
    uint64_t bytesUploaded = 0;
    uint64_t drawCalls = 0;
    uint64_t trianglesDrawn = 0;
    uint64_t patchesCulled = 0;
    /// Bytes of all vertex and index buffers.
    uint64_t bufferBytes = 0;
    /// Bytes of updates that are waiting for upload.
    uint64_t bytesPending = 0;
};

}  // namespace trovik::studio
