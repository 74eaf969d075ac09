// SPDX-License-Identifier: Apache-2.0
#include "tests/brushes/LoopFixture.h"

#include "framework/strokes/DabAtHit.h"

#include <map>
#include <stdexcept>

namespace trovik::test {

void RecordingBrush::BeginStroke(trovik::Mesh* mesh, Modifier modifier, TriggerType trigger) {
    BrushOperation::BeginStroke(mesh, modifier, trigger);
    calls.emplace_back("begin");
}

void RecordingBrush::EndStroke() {
    BrushOperation::EndStroke();
    calls.emplace_back("end");
}

void RecordingBrush::ApplyDab(const SurfacePoint& hit,
                              const Vector& position,
                              float size,
                              float pressure,
                              float strength,
                              AxisAlignedBoundingBox& box) {
    calls.emplace_back(hit.mirror ? "mirrored" : "dab");
    if (throwAfter != 0 && dabs.size() == throwAfter) throw std::runtime_error("enough");
    dabs.push_back({hit,
                    position,
                    size,
                    pressure,
                    strength,
                    PreviousPatchPosition(),
                    MaskMatrix(-1),
                    MirrorConfig().PointMap()});
    box.Extend(position);
}

void RecordingBrush::SetToolName(const char* tool) {
    static std::map<std::string, BrushConfiguration*> rows;
    BrushConfiguration*& row = rows[tool];
    if (row == nullptr) {
        row = new BrushConfiguration(RuntimeClass(),
                                     static_cast<uint32_t>(rows.size()),
                                     QString::fromLatin1(tool),
                                     QString::fromLatin1(tool),
                                     PredefinedCategory::Sculpt,
                                     QString(),
                                     0);
        AddConfiguration(row);
    }
    SetActiveConfiguration(row);
}

void RecordingBrush::EnableStamp(uint32_t width, uint32_t height) {
    SetStampImage(*this, NumberedImage(width, height));
}

LoopFixture::LoopFixture(BrushOperation& brush, const PolygonMesh& polygons, unsigned subdivisions)
    : own([&] {
          auto made = std::make_unique<LevelGeometry>(polygons);
          for (unsigned i = 0; i < subdivisions; ++i) made->Subdivide();
          return made;
      }()),
      geometry(*own),
      tree(geometry.Bound()),
      loop(brush, geometry, tree) {
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(Matrix());
}

LoopFixture::LoopFixture(BrushOperation& brush, LevelGeometry& borrowed)
    : geometry(borrowed), tree(geometry.Bound()), loop(brush, geometry, tree) {
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(Matrix());
}

LoopFixture::~LoopFixture() {
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(Matrix());
}

StrokeDab LoopFixture::At(const Vector& place, float radius, float strength) const {
    StrokeDab dab = DabAt(geometry, HitNear(geometry, tree, place).value());
    dab.size = radius;
    dab.strength = strength;
    return dab;
}

PathOptions LoopFixture::Options(float radius, float spacing) const {
    PathOptions options;
    options.radius = radius;
    options.spacing = spacing;
    options.strength = [](float pressure) { return pressure * 10.0f; };
    return options;
}

FloatImage GreyImage(uint32_t width, uint32_t height, const std::vector<float>& values) {
    FloatImage image;
    image.width = width;
    image.height = height;
    image.channels = 1;
    image.pixels = values;
    image.isFloat = true;
    return image;
}

FloatImage NumberedImage(uint32_t width, uint32_t height) {
    std::vector<float> values;
    for (uint32_t i = 1; i <= width * height; ++i) values.push_back(static_cast<float>(i) / 64.0f);
    return GreyImage(width, height, values);
}

void SetStampImage(BrushOperation& brush, const FloatImage& image) {
    brush.SetStamp(true, QString());
    brush.Settings().stampImage = std::make_shared<StampImage>(image, 0);
}

Vector PixelOf(const Matrix& stampMatrix, const Vector& place) {
    return stampMatrix.ProjectedTransform(place, 1.0f);
}

}  // namespace trovik::test
