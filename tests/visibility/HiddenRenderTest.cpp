// SPDX-License-Identifier: Apache-2.0
#include "tests/pictures/SphereRender.h"
#include "tests/visibility/VisibilityState.h"

namespace trovik::test {
namespace {

/// Hides the half of the sphere on the positive side of x.
void HideHalf(LevelGeometry& geometry) {
    const LevelMesh& level = *geometry.Bound();
    FaceChoice chosen(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        float sum = 0.0f;
        for (uint32_t k = 0; k < 4; ++k)
            sum += level.Position(level.faceVertexIndices.array[face * 4 + k]).x;
        chosen[face] = sum > 0.0f ? 1 : 0;
    }
    Change(geometry, VisibilityChange::Hide, chosen);
}

class HiddenRender : public SphereRender {};

TEST_F(HiddenRender, HiddenFacesAreInvisibleAndCastNoShadow) {
    options.transparent = true;
    const RenderImage whole = Make();
    HideHalf(geometry);
    shown = VisibleLevel(geometry);
    const RenderImage half = Make();
    std::size_t gone = 0;
    for (int y = 0; y < half.height; ++y) {
        for (int x = half.width / 2 + 3; x < half.width; ++x) {
            ASSERT_EQ(half.alpha[PixelAt(half, x, y)], 0) << x << ", " << y;
            gone += whole.alpha[PixelAt(whole, x, y)] != 0;
        }
    }
    EXPECT_GT(gone, 500u);
    EXPECT_EQ(half.alpha[PixelAt(half, 45, 45)], 255);
}

/// The render is byte-identical to that of a mesh without the hidden faces.
TEST_F(HiddenRender, EqualsTheRenderOfTheVisibleFacesAlone) {
    HideHalf(geometry);
    const LevelMesh& level = *geometry.Bound();
    std::vector<uint32_t> indices;
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + face * 4;
        if (!level.IsFaceHidden(face)) indices.insert(indices.end(), v, v + 4);
    }
    shown = VisibleLevel(geometry);
    RenderMesh part = shown;
    part.faceFlags = nullptr;
    part.faceVertexIndices = indices.data();
    part.faceCount = static_cast<uint32_t>(indices.size() / 4);
    for (const bool wireframe : {false, true}) {
        options.wireframe = wireframe;
        const RenderImage expected = RenderOnce({part}, camera, options);
        EXPECT_TRUE(Make().rgb == expected.rgb) << wireframe;
    }
}

TEST_F(HiddenRender, CamerasFrameTheVisibleFaces) {
    const RenderCamera whole = FrameMeshes({shown}, {0, 0, -1}, 35.0f, 1.0f);
    EXPECT_NEAR(whole.target.x, 0.0f, 1e-3f);
    HideHalf(geometry);
    const RenderCamera half = FrameMeshes({VisibleLevel(geometry)}, {0, 0, -1}, 35.0f, 1.0f);
    EXPECT_NEAR(half.target.x, -0.5f, 0.02f);
    Change(geometry, VisibilityChange::Hide, FaceChoice(geometry.Bound()->faceCount, 1));
    EXPECT_EQ(FrameMeshes({VisibleLevel(geometry)}, {0, 0, -1}, 35.0f, 1.0f).target, Vector());
    shown = VisibleLevel(geometry);
    options.transparent = true;
    const RenderImage none = Make();
    EXPECT_EQ(std::count(none.alpha.begin(), none.alpha.end(), 0),
              static_cast<std::ptrdiff_t>(none.alpha.size()));
}

TEST_F(HiddenRender, HiddenFacesAreNotTintedAsMasked) {
    LevelMesh& level = *geometry.Bound();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) level.SetFreeze(v, 127);
    shown = VisibleLevel(geometry);
    const RenderImage frozen = Make();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) level.SetFreeze(v, 0);
    HideHalf(geometry);
    shown = VisibleLevel(geometry);
    EXPECT_EQ(shown.freeze, nullptr) << "hiding is not masking";
    EXPECT_NE(Make().rgb[PixelAt(frozen, 45, 45) * 3], frozen.rgb[PixelAt(frozen, 45, 45) * 3]);
}

}  // namespace
}  // namespace trovik::test
