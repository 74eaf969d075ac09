// SPDX-License-Identifier: Apache-2.0

/// \file Tests, with random edits of each test mesh, that all changes of the surface are reported.
/// An observer keeps a copy of the bound level and updates it from the reported patches alone.
/// After every dab and every other edit, the copy equals the level byte for byte, and the pick tree
/// of the document gives the same hits as a tree that is built from scratch. The default run is
/// short; TROVIK_RANDOM_EDITS sets the number of edits.
#include "framework/document/Document.h"
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/math/SameBits.h"
#include "framework/multires/Steps.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/edits/ReportedCopy.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace trovik::test {
namespace {

/// Makes random edits of a document.
class RandomDocument {
public:
    RandomDocument(RandomNumbers& numbers, const ZooMesh& zoo)
        : random(numbers),
          document(zoo.name, zoo.mesh),
          copy([this]() -> LevelGeometry& { return document.Geometry(); }) {
        const uint32_t levels = random.Below(4);
        for (uint32_t i = 0; i < levels; ++i)
            if (document.Geometry().Bound()->faceCount < 1000) document.Subdivide();
        reach = Reach();
    }

    void Edit() {
        switch (random.Below(12)) {
            case 0:
                Freeze();
                break;
            case 1:
            case 2:
                Level();
                break;
            case 3:
            case 4:
                Layer();
                break;
            case 5:
                Symmetry();
                break;
            case 6:
                story = "undo";
                for (uint32_t n = random.Below(4); n > 0 && document.Undo(); --n) Check();
                for (uint32_t n = random.Below(3); n > 0 && document.Redo(); --n) Check();
                break;
            case 7:
                Rare();
                break;
            default:
                Stroke();
                break;
        }
        Check();
    }
    void UndoAll() {
        story = "undo all";
        while (document.Undo()) Check();
        story = "redo all";
        while (document.Redo()) Check();
    }

    /// Checks that the copy equals the level and that the tree equals a newly built one.
    void Check() {
        ASSERT_EQ(copy.Difference(), "") << "after " << story;
        const PatchTree fresh(document.Geometry().Bound());
        const AxisAlignedBoundingBox bounds = fresh.Bounds();
        const AxisAlignedBoundingBox kept = document.Tree().Bounds();
        // If there are zeros of both signs, either may be the bound.
        const auto values = [](const AxisAlignedBoundingBox& box) {
            return std::array{box.minX, box.minY, box.minZ, box.maxX, box.maxY, box.maxZ};
        };
        ASSERT_EQ(values(bounds), values(kept)) << "after " << story;
        // On a surface that was flattened to a line, rounding decides which face is hit.
        const auto extents = values(bounds);
        int extended = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (extents[axis + 3] - extents[axis] > 1e-3f * reach) ++extended;
        for (int i = 0; i < 4 && extended > 1; ++i) {
            Ray ray;
            ray.origin = random.In(-2.0f * reach, 2.0f * reach);
            ray.direction = RandomSurfacePoint() - ray.origin;
            ExpectSame(fresh.Pick(ray), document.Tree().Pick(ray));
            ExpectSame(fresh.Nearest(ray.origin), document.Tree().Nearest(ray.origin));
        }
    }
    const std::string& CaseDescription() const { return story; }

private:
    void ExpectSame(const std::optional<PickHit>& a, const std::optional<PickHit>& b) {
        ASSERT_EQ(a.has_value(), b.has_value()) << "after " << story;
        if (!a) return;
        ASSERT_EQ(a->face, b->face) << "after " << story;
        ASSERT_TRUE(SameBits(a->t, b->t)) << "after " << story;
        ASSERT_TRUE(SameBits(a->position, b->position));
    }
    float Reach() {
        float most = 0.0f;
        const LevelMesh& mesh = *document.Geometry().Bound();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector p = mesh.Position(v);
            const float far = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
            if (!(far <= most)) most = far;
        }
        return most;
    }
    Vector RandomSurfacePoint() {
        const LevelMesh& mesh = *document.Geometry().Bound();
        return mesh.Position(
            mesh.faceVertexIndices.array[random.Below(mesh.faceVertexIndices.fill)]);
    }

    void Stroke() {
        if (!(Reach() < 20.0f * reach)) return;
        const std::vector<std::string> tools = document.ToolNames();
        const std::string& tool = tools[random.Below(static_cast<uint32_t>(tools.size()))];
        document.SelectTool(tool);
        const bool byPercent = random.Chance(0.5f);
        StrokeLoop& loop = document.Loop();
        const auto modifier = random.OneOf({BrushOperation::ModifierNone,
                                            BrushOperation::ModifierInvert,
                                            BrushOperation::ModifierSmooth});
        story = "stroke of " + tool;
        loop.Begin(modifier, random.Below(1000));
        const uint32_t dabs = random.Below(5);
        for (uint32_t i = 0; i < dabs; ++i) {
            const auto hit = document.Tree().Nearest(RandomSurfacePoint());
            if (!hit) break;
            StrokeDab dab = DabAt(document.Geometry(), *hit);
            dab.size = reach * random.Between(0.05f, 0.6f);
            dab.strength = byPercent ? random.Between(1.0f, 60.0f) : 0.05f * reach;
            loop.Dab(dab);
            story = "dab " + std::to_string(i) + " of " + tool;
            Check();
        }
        if (random.Chance(0.1f)) {
            loop.WholeMesh(byPercent ? 20.0f : 0.02f * reach, random.Chance(0.5f));
            story = "whole mesh by " + tool;
            Check();
        }
        if (random.Chance(0.2f)) {
            loop.RevertStroke();
            story = "reverting a stroke of " + tool;
            Check();
        }
        if (random.Chance(0.2f))
            loop.Break();
        else
            loop.End();
        story = "the end of a stroke of " + tool;
    }

    void Freeze() {
        story = "freeze";
        std::vector<uint8_t> amounts(document.Geometry().Bound()->VertexCount());
        const float share = random.OneOf({0.02f, 0.5f, 1.0f});
        for (uint8_t& amount : amounts)
            if (random.Chance(share)) amount = static_cast<uint8_t>(random.Below(128));
        document.Freeze(amounts,
                        random.OneOf({FreezeMode::Raise,
                                      FreezeMode::Replace,
                                      FreezeMode::Add,
                                      FreezeMode::Subtract,
                                      FreezeMode::Multiply}));
    }

    void Level() {
        const LevelGeometry& geometry = document.Geometry();
        const uint32_t rare = random.Below(10);
        story = "level";
        if (rare == 0) {
            document.DeleteLevels(random.Chance(0.5f));
        } else if (rare == 1) {
            document.ApplyToBase();
        } else if (rare == 2) {
            try {
                document.Unsubdivide();
            } catch (const HostError&) {
                // Not every base is the refinement of another mesh.
            }
        } else if (rare < 5 && geometry.LevelCount() < 6 &&
                   geometry.Level(geometry.LevelCount() - 1)->faceCount < 1500) {
            document.Subdivide();
        } else {
            document.BindLevel(random.Below(geometry.LevelCount()));
        }
    }

    void Layer() {
        LevelGeometry& geometry = document.Geometry();
        const auto layers = geometry.Layers().OfLevel(*geometry.Bound());
        story = "layer";
        if (layers.empty() || random.Chance(0.2f)) {
            document.AddLayer("layer");
            return;
        }
        SculptLayer& layer = *layers[random.Below(static_cast<uint32_t>(layers.size()))];
        SculptLayer::Properties given = layer.UserProperties();
        switch (random.Below(6)) {
            case 0:
                document.Push(RemoveLayerAsStep(geometry, layer));
                return;
            case 1:
                given.visible = !given.visible;
                break;
            case 2:
                document.Push(SelectLayerAsStep(geometry, &layer));
                return;
            case 3:
                document.Push(DuplicateLayerAsStep(geometry, layer, "copy"));
                return;
            case 4:
                if (layer.UserProperties().writable)
                    document.Push(EraseLayerByFreezeAsStep(geometry, layer));
                return;
            default:
                given.strength = random.OneOf({0.0f, 0.3f, 1.0f, 1.2f});
                break;
        }
        document.Push(SetLayerPropertiesAsStep(geometry, layer, given));
    }

    void Symmetry() {
        story = "symmetry";
        try {
            document.MakeSymmetric(
                static_cast<int>(random.Below(3)),
                random.Chance(0.5f) ? SymmetrySide::Positive : SymmetrySide::Negative);
        } catch (const HostError&) {
            // Not every mesh has a mirror.
        }
    }

    void Rare() {
        story = "setting";
        switch (random.Below(5)) {
            case 0:
                document.RefreshSurface();
                break;
            case 1:
                document.Geometry().Transform().Set(
                    {1.0f, random.OneOf({0.5f, 1.0f, 2.0f}), 1.0f}, random.In(-90.0f, 90.0f), {});
                break;
            case 2:
                if (random.Chance(0.3f)) document.Reset();
                break;
            case 3:
                try {
                    document.SetTopologicalMirror();
                } catch (const HostError&) {
                    // Not every mesh has a mirror.
                }
                break;
            default: {
                MirrorSetting setting;
                for (int axis = 0; axis < 3; ++axis)
                    if (random.Chance(0.4f)) setting.planes.push_back(axis);
                document.SetMirrors(setting);
            }
        }
    }

    RandomNumbers& random;
    Document document;
    ReportedCopy copy;
    float reach = 0.0f;
    std::string story = "nothing";
};

TEST(SurfaceReport, CopyUpdatedFromReportsEqualsTheLevel) {
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_EDITS", 500);
    constexpr uint32_t editsPerMesh = 25;
    const std::vector<ZooMesh> meshes = AllMeshes();
    for (uint32_t edit = 0; edit < wanted; edit += editsPerMesh) {
        RandomNumbers random(91130 + edit);
        const ZooMesh& zoo = meshes[random.Below(static_cast<uint32_t>(meshes.size()))];
        RandomDocument document(random, zoo);
        for (uint32_t i = 0; i < editsPerMesh; ++i) {
            SCOPED_TRACE("edit " + std::to_string(edit + i) + " of " + zoo.name);
            document.Edit();
            if (testing::Test::HasFailure()) return;
        }
        SCOPED_TRACE("edits of " + std::to_string(edit) + " of " + zoo.name);
        document.UndoAll();
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace trovik::test
