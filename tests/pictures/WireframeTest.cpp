// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests the width of wireframe lines.
#include "tests/pictures/SphereRender.h"

#include <algorithm>

namespace trovik::test {
namespace {

/// A square of 6 x 6 faces in the plane y = 0, 2 units wide.
class GridRender : public SphereRender {
protected:
    GridRender() {
        shown = VisibleLevel(grid);
        const float toPlane[16] = {
            1.0f / 3, 0, 0, 0, 0, 0, -1.0f / 3, 0, 0, 1.0f / 3, 0, 0, -1, 0, 1, 1};
        std::copy(toPlane, toPlane + 16, shown.localToWorld);
        options.width = 300;
        options.height = 220;
        options.samples = 16;
    }

    /// Returns the widths in pixels of the five inner lines that cross the middle of a column of
    /// faces, from top to bottom. A width is measured as the total darkening relative to that in
    /// the middle of a line.
    std::vector<double> Widths() {
        options.wireframe = false;
        const RenderImage plain = Make();
        options.wireframe = true;
        const RenderImage wired = Make();
        // The column halfway between two lines that recede from the eye.
        const int x = 150 + 14;
        std::vector<double> widths;
        double sum = 0.0;
        double most = 0.0;
        bool inLine = false;
        for (int y = 0; y < options.height; ++y) {
            const double before = Brightness(plain, x, y);
            const double taken = (before - Brightness(wired, x, y)) / before;
            if (taken > 0.03) {
                sum += taken;
                most = std::max(most, taken);
                inLine = true;
            } else if (inLine) {
                widths.push_back(sum);
                sum = 0.0;
                inLine = false;
            }
        }
        EXPECT_GT(most, 0.3);
        return widths;
    }

    LevelGeometry grid{GridMesh(6, 6)};
};

TEST_F(GridRender, LinesHaveTheSameWidthAtAGrazingAngle) {
    camera = {{0, 5, 0.01f}, {0, 0, 0}, {0, 1, 0}, 35.0f};
    const std::vector<double> above = Widths();
    ASSERT_EQ(above.size(), 7u);
    // The eye is twelve degrees above the plane.
    camera = {{0, 1.05f, 4.9f}, {0, 0, 0}, {0, 1, 0}, 35.0f};
    const std::vector<double> grazing = Widths();
    ASSERT_EQ(grazing.size(), 7u);
    for (std::size_t line = 1; line < 6; ++line) {
        EXPECT_NEAR(grazing[line], above[line], above[line] * 0.2) << line;
        EXPECT_GT(above[line], 0.5);
    }
}

TEST_F(GridRender, LinesHaveTheSameWidthFromFarAway) {
    camera = {{0, 5, 0.01f}, {0, 0, 0}, {0, 1, 0}, 35.0f};
    const std::vector<double> near = Widths();
    camera.eye.y = 8.0f;
    camera.verticalFieldOfView = 35.0f * 5.0f / 8.0f;
    const std::vector<double> far = Widths();
    ASSERT_EQ(far.size(), near.size());
    for (std::size_t line = 1; line < 6; ++line) EXPECT_NEAR(far[line], near[line], 0.15);
}

TEST_F(GridRender, FacesAroundTheEyeHaveLines) {
    camera = {{0.1f, 0.2f, 0.0f}, {0.1f, 0.0f, -1.0f}, {0, 1, 0}, 70.0f};
    options.wireframe = false;
    const RenderImage plain = Make();
    options.wireframe = true;
    const RenderImage wired = Make();
    int darker = 0;
    for (int y = 150; y < 220; ++y)
        for (int x = 0; x < 300; ++x)
            if (Brightness(wired, x, y) < Brightness(plain, x, y) * 8 / 10) ++darker;
    EXPECT_GT(darker, 100);
    EXPECT_LT(darker, 3000);
}

TEST_F(SphereRender, DenseMeshStaysVisibleUnderTheLines) {
    LevelGeometry dense{SphereQuads(6)};
    shown = VisibleLevel(dense);
    options.wireframe = true;
    const RenderImage wired = Make();
    EXPECT_GT(Brightness(wired, 50, 35), 200);
    EXPECT_GT(Brightness(wired, 50, 35), Brightness(wired, 72, 57) + 40);
}

}  // namespace
}  // namespace trovik::test
