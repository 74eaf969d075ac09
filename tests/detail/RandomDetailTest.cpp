// SPDX-License-Identifier: Apache-2.0
#include "tests/detail/DetailDocument.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

constexpr const char* tools[] = {"Sculpt",
                                 "Smear",
                                 "Bulge",
                                 "Foamy",
                                 "Spray",
                                 "Repeat",
                                 "Imprint",
                                 "Amplify",
                                 "Flatten",
                                 "Scrape",
                                 "Fill",
                                 "Wax",
                                 "Smooth",
                                 "Pinch",
                                 "Knife"};

PolygonMesh RandomMesh(RandomNumbers& numbers) {
    switch (numbers.Below(5)) {
        case 0:
            return Triangles(SphereQuads(2 + numbers.Below(2)));
        case 1:
            return Triangles(GridMesh(5, 4));
        case 2:
            return Triangles(Torus(10, 6));
        case 3:
            return Triangles(Cube());
        default:
            return Triangles(OpenCylinder(8, 5));
    }
}

/// TROVIK_DETAIL_STROKES sets the number of strokes.
TEST(RandomDetail, MeshIsValidAfterEachStrokeAndUndoRestoresEveryBit) {
    const uint32_t documents = CountFromEnvironment("TROVIK_DETAIL_STROKES", 60) / 4;
    for (uint32_t seed = 0; seed < documents; ++seed) {
        SCOPED_TRACE(seed);
        RandomNumbers numbers(seed + 1);
        const auto document = DetailDocument(RandomMesh(numbers), 0.1f);
        LevelMesh& level = *document->Geometry().Bound();
        if (numbers.Chance(0.3f)) {
            MirrorSetting mirrors;
            mirrors.planes = {0};
            mirrors.copies = numbers.Chance(0.5f) ? 3 : 1;
            document->SetMirrors(mirrors);
        }
        if (numbers.Chance(0.3f)) {
            std::vector<uint8_t> mask(level.VertexCount());
            for (uint8_t& amount : mask) amount = static_cast<uint8_t>(numbers.Below(128));
            document->Freeze(mask, FreezeMode::Replace);
        }
        std::vector<std::string> states = {BitsOf(*document)};
        std::vector<std::string> done;
        std::size_t steps = document->Geometry().History().StepCount();
        for (int stroke = 0; stroke < 4; ++stroke) {
            const char* tool = tools[numbers.Below(std::size(tools))];
            document->SelectTool(tool);
            document->Settings().radius = numbers.Between(0.15f, 1.2f);
            DetailSettings& detail = document->Settings().detail;
            detail.length = numbers.Between(0.08f, 0.6f);
            detail.splits = !numbers.Chance(0.15f);
            detail.collapses = !detail.splits || !numbers.Chance(0.15f);
            detail.creaseAngle = numbers.Chance(0.3f) ? 40.0f : 180.0f;
            done.emplace_back(tool);
            const float strength =
                numbers.Between(0.0f, 1.0f) *
                (std::string(tool) == "Smooth" || stroke % 2 == 0 ? 20.0f : 0.1f);
            BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
            const uint32_t dabs = 1 + numbers.Below(5);
            for (uint32_t dab = 0; dab < dabs; ++dab) {
                Dab(*document, numbers.In(-1.5f, 1.5f), strength);
                if (numbers.Chance(0.05f)) document->Loop().RevertStroke();
            }
            document->Loop().End();
            ASSERT_EQ(FaultOf(*document), "") << testing::PrintToString(done);
            // A stroke that changes nothing has no step.
            if (document->Geometry().History().StepCount() == steps) continue;
            steps = document->Geometry().History().StepCount();
            states.push_back(BitsOf(*document));
        }
        for (std::size_t i = states.size() - 1; i-- > 0;) {
            ASSERT_TRUE(document->Undo());
            ASSERT_EQ(BitsOf(*document) == states[i], true) << i << testing::PrintToString(done);
            ASSERT_EQ(FaultOf(*document), "");
        }
        for (std::size_t i = 1; i < states.size(); ++i) {
            ASSERT_TRUE(document->Redo());
            ASSERT_EQ(BitsOf(*document) == states[i], true) << i;
        }
        ASSERT_EQ(FaultOf(*document), "");
    }
}

}  // namespace
}  // namespace trovik::test
