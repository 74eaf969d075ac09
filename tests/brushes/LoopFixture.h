// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/BrushSettings.h"
#include "framework/images/StampImage.h"
#include "framework/nodes/HostKernel.h"
#include "framework/strokes/StrokePath.h"
#include "tests/fixture/StrokeFixture.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik::test {

/// A brush that moves no vertices and records the stroke loop's calls.
class RecordingBrush : public BrushOperation {
public:
    struct Dab {
        SurfacePoint hit;
        Vector position;
        float size;
        float pressure;
        float strength;
        Vector previous;
        Matrix stampMatrix;
        Matrix pointMap;
    };
    using BrushOperation::SetActiveConfiguration;

    void BeginStroke(trovik::Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    void EndStroke() override;
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    int StrokeDrawMode() const override { return drawMode; }

    /// Changes only the name of the active tool.
    void SetToolName(const char* tool);
    /// Enables a stamp of this size in pixels.
    void EnableStamp(uint32_t width, uint32_t height);

    std::vector<Dab> dabs;
    std::vector<std::string> calls;
    int drawMode = 0;
    /// ApplyDab throws after this many dabs; 0 means never.
    std::size_t throwAfter = 0;
};

/// A geometry, its tree, and a stroke loop with a borrowed brush.
class LoopFixture {
public:
    LoopFixture(BrushOperation& brush, const PolygonMesh& polygons, unsigned subdivisions = 0);
    LoopFixture(BrushOperation& brush, LevelGeometry& geometry);
    ~LoopFixture();

    /// A dab at a point on the surface, in world space.
    StrokeDab At(const Vector& place, float radius = 1.0f, float strength = 1.0f) const;
    PathOptions Options(float radius, float spacing) const;

    std::unique_ptr<LevelGeometry> own;
    LevelGeometry& geometry;
    PatchTree tree;
    StrokeLoop loop;
};

/// A grey image with these values, row by row.
FloatImage GreyImage(uint32_t width, uint32_t height, const std::vector<float>& values);
/// An image whose pixels all differ: (1 + pixel index) / 64.
FloatImage NumberedImage(uint32_t width, uint32_t height);
/// Enables a stamp that does not come from a file.
void SetStampImage(BrushOperation& brush, const FloatImage& image);

/// The stamp pixel at a mesh-local position.
Vector PixelOf(const Matrix& stampMatrix, const Vector& place);

}  // namespace trovik::test
