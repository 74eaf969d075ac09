// SPDX-License-Identifier: Apache-2.0

/// \file Tests that documents used alternately in one process give results bit-identical to those
/// of each document used alone.
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>

namespace trovik::test {
namespace {

using Step = std::function<void(Document&)>;

/// Steps whose dabs depend on the camera, the facing angle and the symmetry. \param side  1 or -1;
/// distinguishes two documents.
std::vector<Step> Work(float side) {
    const auto at = [side](float x, float y) { return Vector(x, y, side); };
    const auto settings = [side](Document& d) {
        d.SelectTool(side > 0 ? "Sculpt" : "Wax");
        // Direction mode 8 is towards the camera.
        d.Brush().directionAttribute.SetValue(8, true);
        d.Brush().SetFalloffBasedOnFacingAngle(side > 0, 20.0f, 40.0f);
        d.View().eye = {2.0f * side, 1.0f, 4.0f * side};
        d.UpdateCamera();
        if (side < 0) d.SetMirrors({{0}});
    };
    return {settings,
            [=](Document& d) { Stroke(d, at(0, 0)); },
            [](Document& d) { d.Subdivide(); },
            [](Document& d) { BeginStroke(d, BrushOperation::ModifierNone, std::nullopt); },
            [=](Document& d) { Dab(d, at(0.2f, 0)); },
            [=](Document& d) { Dab(d, at(0.4f, 0.1f)); },
            [](Document& d) { d.Loop().RevertStroke(); },
            [=](Document& d) { Dab(d, at(0.4f, 0.2f)); },
            [](Document& d) { d.Loop().End(); },
            [](Document& d) { d.BindLevel(0); },
            [=](Document& d) { Stroke(d, at(-0.3f, 0.3f)); },
            [](Document& d) { d.SelectTool("Freeze"); },
            [=](Document& d) { Stroke(d, at(-0.3f, 0.3f)); },
            [](Document& d) { d.SelectTool("Flatten"); },
            [](Document& d) { d.Undo(); },
            [](Document& d) { d.BindLevel(1); },
            [=](Document& d) { Stroke(d, at(0.3f, -0.3f)); },
            [](Document& d) { d.JumpTo(2); },
            [](Document& d) { d.Redo(); },
            [](Document& d) { d.Reset(); },
            [](Document& d) { d.SelectTool("Sculpt"); },
            [=](Document& d) { Stroke(d, at(0.1f, 0.1f)); }};
}

/// The state after each step, for a document that is used alone.
std::vector<std::string> Alone(const std::vector<Step>& work) {
    const auto document = SphereDocument();
    std::vector<std::string> states;
    for (const Step& step : work) {
        step(*document);
        states.push_back(BitsOf(*document));
    }
    return states;
}

TEST(SeveralDocuments, InterleavedWorkIsBitIdenticalToSeparateWork) {
    const std::vector<Step> works[] = {Work(1.0f), Work(-1.0f)};
    const std::vector<std::string> expected[] = {Alone(works[0]), Alone(works[1])};
    ASSERT_NE(expected[0].back(), expected[1].back());
    // Alternating steps, and steps with one document ahead of the other.
    for (const std::size_t ahead : {0u, 1u, 4u, 7u}) {
        const std::unique_ptr<Document> documents[] = {SphereDocument(), SphereDocument()};
        for (std::size_t i = 0; i < works[0].size() + ahead; ++i) {
            for (std::size_t k = 0; k < 2; ++k) {
                const std::size_t step = k == 0 ? i : i - ahead;
                if (step >= works[k].size()) continue;
                works[k][step](*documents[k]);
                ASSERT_TRUE(BitsOf(*documents[k]) == expected[k][step])
                    << "document " << k << ", step " << step << ", ahead " << ahead;
            }
        }
    }
}

TEST(SeveralDocuments, LiveStrokesCanBeOpenAtTheSameTime) {
    const auto drawn = [](Document& document, float shift) {
        auto stroke = std::make_unique<DocumentStroke>(document);
        std::vector<PathSample> samples;
        for (int i = 0; i < 20; ++i) {
            PathSample sample({400.0f + 8.0f * static_cast<float>(i), 300.0f + shift, 0.0f});
            sample.time = 0.01 * i;
            samples.push_back(sample);
        }
        return std::make_pair(std::move(stroke), samples);
    };
    const auto prepared = [](const char* tool, float eye) {
        auto document = SphereDocument();
        document->Subdivide();
        document->SelectTool(tool);
        document->Brush().directionAttribute.SetValue(8, true);
        document->Settings().radius = 0.2f;
        document->View().eye = {0.0f, eye, 4.0f};
        document->UpdateCamera();
        return document;
    };
    std::string alone[2];
    for (int k = 0; k < 2; ++k) {
        const auto document = prepared(k == 0 ? "Sculpt" : "Wax", k == 0 ? 0.5f : -0.5f);
        auto [stroke, samples] = drawn(*document, 30.0f);
        for (const PathSample& sample : samples) stroke->Add(sample);
        stroke->Release();
        ASSERT_GT(document->Totals().verticesMoved, 0u);
        alone[k] = BitsOf(*document);
    }
    const auto first = prepared("Sculpt", 0.5f);
    const auto second = prepared("Wax", -0.5f);
    auto [one, samples] = drawn(*first, 30.0f);
    auto [other, same] = drawn(*second, 30.0f);
    for (const PathSample& sample : samples) {
        one->Add(sample);
        other->Add(sample);
    }
    one->Release();
    other->Release();
    EXPECT_TRUE(BitsOf(*first) == alone[0]);
    EXPECT_TRUE(BitsOf(*second) == alone[1]);
}

TEST(SeveralDocuments, SceneRestoresItsOwnFacingAngleOnly) {
    const TemporaryFolder folder;
    const auto first = SphereDocument();
    first->Brush().SetFalloffBasedOnFacingAngle(true, 10.0f, 20.0f);
    first->Save(folder.Path("a.trovik"));
    const auto second = SphereDocument();
    EXPECT_FALSE(second->Brush().UsesFalloffBasedOnFacingAngle());
    EXPECT_TRUE(first->Brush().UsesFalloffBasedOnFacingAngle());
    second->Save(folder.Path("b.trovik"));
    {
        const auto third = Document::OpenScene(folder.Path("b.trovik"));
        EXPECT_FALSE(third->Brush().UsesFalloffBasedOnFacingAngle());
        EXPECT_TRUE(Document::OpenScene(folder.Path("a.trovik"))->State()->tool.usesFacing);
        EXPECT_FALSE(third->Brush().UsesFalloffBasedOnFacingAngle());
    }
    EXPECT_TRUE(first->State()->tool.usesFacing);
    EXPECT_FALSE(second->State()->tool.usesFacing);
    EXPECT_TRUE(first->Brush().UsesFalloffBasedOnFacingAngle());
}

}  // namespace
}  // namespace trovik::test
