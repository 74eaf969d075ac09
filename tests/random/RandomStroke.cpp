// SPDX-License-Identifier: Apache-2.0
#include "tests/random/RandomStroke.h"

#include "brush/Registration.h"
#include "framework/brushes/Falloff.h"
#include "framework/nodes/HostScene.h"
#include "tests/brush/ToolRows.h"
#include "tests/brush/ToolStrength.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/meshes/MirrorAtX.h"
#include "tests/stamps/StampFixture.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace trovik::test {

namespace {

const std::vector<ZooMesh>& Meshes() {
    static const std::vector<ZooMesh> meshes = [] {
        std::vector<ZooMesh> all = AllMeshes();
        all.push_back({"sphere", SphereQuads(1)});
        // Triangle meshes are listed several times, so that the vertex path runs as often as the
        // patch path.
        for (int i = 0; i < 4; ++i)
            for (ZooMesh& mesh : TriangleMeshes()) all.push_back(std::move(mesh));
        return all;
    }();
    return meshes;
}

MatrixTransform& CameraTransform() {
    auto* scene = dynamic_cast<HostScene*>(g_pKernel->Scene());
    scene->SetActiveCamera(nullptr);
    return scene->OwnCamera().Transform();
}

void ChooseTransform(RandomNumbers& random, MatrixTransform& place) {
    const Vector turn = random.In(-180.0f, 180.0f);
    const Vector move = random.In(-10.0f, 10.0f);
    switch (random.Below(6)) {
        case 0:
        case 1:
            return;
        case 2: {
            const float scale = random.OneOf({0.01f, 0.5f, 2.0f, 30.0f});
            place.Set({scale, scale, scale}, turn, move);
            return;
        }
        case 3: {
            const float x = random.OneOf({-1.0f, 1.0f});
            const float y = random.OneOf({-2.0f, -1.0f, 1.0f});
            place.Set({x, y, random.OneOf({-1.0f, 1.0f})}, turn, move);
            return;
        }
        case 4:
            // The scale of 0 makes the mesh flat in world space.
            place.Set({random.OneOf({0.0f, 1.0f}), 1.0f, 0.0f}, turn, move);
            return;
        default:
            place.Set(random.In(0.1f, 4.0f), turn, move);
            return;
    }
}

}  // namespace

HostSwitches::HostSwitches() { HostKernel::Instance(); }

HostSwitches::~HostSwitches() {
    HostKernel::Instance().SetTestMode(false);
    for (const Preferences::Bool* off :
         {&useOriginalDataForFlatten, &useVertexWeightsForFlatten, &waxFillsOnly, &waxScrapesOnly})
        off->attribute->SetValue(false, true);
    renderSwiftStroke.attribute->SetValue(true, true);
    CheckableFloatArray::s_bActive = false;
    CameraTransform().Set({1.0f, 1.0f, 1.0f}, {}, {});
}

void HostSwitches::Draw(RandomNumbers& random) {
    HostKernel::Instance().SetTestMode(random.Chance(0.2f));
    for (const Preferences::Bool* preference :
         {&useOriginalDataForFlatten, &useVertexWeightsForFlatten, &waxFillsOnly, &waxScrapesOnly})
        preference->attribute->SetValue(random.Chance(0.3f), true);
    renderSwiftStroke.attribute->SetValue(random.Chance(0.8f), true);
    CameraTransform().Set({1.0f, 1.0f, 1.0f}, {}, random.In(-6.0f, 6.0f));
}

RandomStrokeFixture::RandomStrokeFixture(RandomNumbers& numbers) : random(numbers) {
    const ZooMesh& zoo = Meshes()[random.Below(static_cast<uint32_t>(Meshes().size()))];
    const uint32_t levels = random.Below(4);
    bench = std::make_unique<StrokeFixture>(zoo.mesh, levels);
    if (random.Chance(0.2f)) bench->geometry->BindLevel(random.Below(levels + 1));
    LevelMesh& mesh = bench->Mesh();
    if (random.Chance(0.1f)) {
        const float size = random.OneOf({1e-5f, 1e5f});
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            mesh.SetPosition(v, mesh.Position(v) * size);
    }

    AxisAlignedBoundingBox box;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) box.Extend(mesh.Position(v));
    const Vector low(box.minX, box.minY, box.minZ);
    const Vector high(box.maxX, box.maxY, box.maxZ);
    extent = (high - low).Length();
    middle = (low + high) * 0.5f;
    if (random.Chance(0.7f)) {
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            mesh.SetPosition(v, mesh.Position(v) + random.In(-0.02f, 0.02f) * extent);
        mesh.ComputeNormals();
    }
    if (random.Chance(0.15f)) {
        // Degenerate faces: some vertices have the same position.
        for (uint32_t i = 0; i < 4; ++i) {
            const Vector place = mesh.Position(random.Below(mesh.VertexCount()));
            mesh.SetPosition(random.Below(mesh.VertexCount()), place);
        }
        mesh.ComputeNormals();
    }
    if (random.Chance(0.3f)) {
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            if (random.Chance(0.5f)) mesh.SetFreeze(v, static_cast<uint8_t>(random.Below(128)));
    }
    ChooseTransform(random, bench->geometry->Transform());
    if (random.Chance(0.4f)) {
        SculptLayer& layer = bench->AddLayer();
        if (random.Chance(0.4f)) layer.SetStrength(random.OneOf({0.0f, 0.5f, -1.0f, 2.0f}));
    }
    for (uint32_t i = random.Below(3); i > 0; --i) bench->AddRenderer(random.OneOf({0.0f, 1.0f}));

    std::ostringstream text;
    text << zoo.name << ", level " << bench->geometry->BoundIndex() << " of " << levels
         << (bench->layer != nullptr ? ", layer" : "");
    story = text.str();
}

// Tools whose displacement grows with the measured distance move vertices farther and farther apart
// if they are inverted or amplified. This is expected and does not indicate a fault.
bool RandomStrokeFixture::MovesByDistance() const {
    return bench->brush->isSmooth || bench->brush->isPinch || bench->brush->isPlaneTool;
}

bool RandomStrokeFixture::HasMildLayer() const {
    const SculptLayer* layer = bench->Mesh().ActiveLayer();
    return layer == nullptr || (layer->Strength() >= 0.0f && layer->Strength() <= 1.0f);
}

void RandomStrokeFixture::ChooseTool() {
    SwiftStroke& brush = *bench->brush;
    tool = allTools[random.Below(allTools.size())];
    if (tool == Tool::Smooth && !HasMildLayer()) tool = Tool::Sculpt;
    bench->Activate(tool, static_cast<int>(random.Below(9)));
    if (random.Chance(0.15f)) {
        std::vector<float> samples;
        for (uint32_t i = random.Below(6); i > 0; --i)
            samples.push_back(random.Between(0.0f, 1.0f));
        SetFalloffSamples(brush, samples);
    }
    brush.directionAttribute.SetValue(static_cast<int>(random.Below(13)), true);
    brush.buildUpRate.SetValue(random.OneOf({0.0f, 0.25f, 0.5f, 1.0f}), true);
    brush.bilinearSample.SetValue(random.Chance(0.5f), true);
    brush.globalPlane.SetValue(random.Chance(0.3f), true);
    brush.updatePlane.SetValue(random.Chance(0.7f), true);
    brush.affectAllLayers.SetValue(random.Chance(0.6f), true);
    brush.Settings().strengthBias = random.OneOf({0.0f, 50.0f, 100.0f});
    const bool byAngle = random.Chance(0.2f);
    const float angle = random.Between(0.0f, 120.0f);
    brush.SetFalloffBasedOnFacingAngle(byAngle, angle, random.OneOf({0.0f, 20.0f, 90.0f}));
}

Matrix RandomStrokeFixture::ChooseStampMatrix() {
    Matrix m;
    switch (random.Below(5)) {
        case 0:
            return m;
        case 1:
            // The whole mesh is mapped to one pixel, so the matrix has no inverse.
            for (int k = 0; k < 3; ++k) m.m[k][k] = 0.0f;
            return m;
        default:
            break;
    }
    const float pixels = random.OneOf({1.0f, 8.0f, 300.0f}) / extent;
    for (auto& row : m.m) {
        const Vector v = random.In(-pixels, pixels);
        row[0] = v.x;
        row[1] = v.y;
        row[2] = v.z;
    }
    const Vector start = random.In(-4.0f, 4.0f);
    m.m[3][0] = start.x;
    m.m[3][1] = start.y;
    m.m[3][2] = start.z;
    if (random.Chance(0.3f)) {
        // A perspective whose vanishing plane does not intersect the mesh.
        const Vector tilt = random.In(-0.05f, 0.05f) * (1.0f / extent);
        m.m[0][3] = tilt.x;
        m.m[1][3] = tilt.y;
        m.m[2][3] = tilt.z;
        m.m[3][3] = 1.0f - (middle | tilt);
    }
    return m;
}

void RandomStrokeFixture::ChooseStamp() {
    SwiftStroke& brush = *bench->brush;
    const bool mild = MovesByDistance();
    uint32_t kind = random.Below(6);
    if (kind < 3) return;
    // A vector stamp scales displacements by its own size.
    if (kind == 5 && mild && extent > 30.0f) kind = 4;
    if (kind == 3) {
        brush.SetStamp(true, QStringLiteral("not loaded"));
        return;
    }
    const uint32_t width = 1 + random.Below(9);
    const uint32_t height = random.Below(7);
    std::vector<float> pixels;
    for (uint32_t i = 0; i < width * height * 3; ++i)
        pixels.push_back(random.Between(mild ? 0.0f : -1.0f, 1.0f));
    TestImage& image = SetTestStamp(brush,
                                    kind == 4 ? QStringLiteral("plain") : QStringLiteral("ear_vdm"),
                                    width,
                                    height,
                                    pixels);
    image.kind = static_cast<int>(random.Below(2));
    BrushOperation::Private& settings = brush.Settings();
    settings.stampMatrix = ChooseStampMatrix();
    settings.stampTiled = random.Chance(0.5f);
    settings.stampInverted = random.Chance(0.4f);
    settings.stampBuildUp = random.Chance(0.5f);
    settings.stampFactor = random.OneOf({0.0f, mild ? 0.25f : -1.0f, 0.5f, 1.0f});
    settings.stampOffset = mild ? 0.0f : random.OneOf({0.0f, 0.25f, -0.5f});
    settings.mirroredStampRead = random.Chance(0.5f);
}

void RandomStrokeFixture::ChooseMirror() {
    mirrored = random.Chance(0.3f);
    MirrorConfiguration mirror;
    if (mirrored) {
        mirror.SetMirrorMode(
            random.OneOf({MirrorConfiguration::PlaneX, MirrorConfiguration::Topological}));
        mirror.SetPointMap(MirrorAtX(middle.x));
    }
    bench->brush->SetMirrorConfig(mirror);
}

SurfacePoint RandomStrokeFixture::ChooseHit() {
    LevelMesh& mesh = bench->Mesh();
    switch (random.Below(4)) {
        case 0:
            return bench->HitVertex(random.Below(mesh.VertexCount()));
        case 1: {
            // A hit that is no longer on the surface.
            SurfacePoint hit = bench->HitFace(random.Below(mesh.faceCount));
            hit.position += random.In(-0.1f, 0.1f) * extent;
            return hit;
        }
        default:
            return bench->HitFace(random.Below(mesh.faceCount));
    }
}

float RandomStrokeFixture::ChooseRadius() {
    switch (random.Below(8)) {
        case 0:
            return 0.0f;
        case 1:
            return extent * 1e-6f;
        case 2:
            return extent * random.OneOf({3.0f, 1e6f});
        default:
            return extent * random.Between(0.05f, 0.8f);
    }
}

float RandomStrokeFixture::ChooseStrength() {
    if (random.Chance(0.05f)) return 0.0f;
    if (HasStrengthInPercent(tool)) return random.Between(1.0f, 100.0f);
    return random.Between(0.0f, 0.3f) * extent;
}

void RandomStrokeFixture::Dab(const SurfacePoint& hit) {
    AxisAlignedBoundingBox box;
    const Vector center = random.Chance(0.9f)
                              ? bench->WorldOf(hit.position)
                              : bench->WorldOf(hit.position + random.In(-1.0f, 1.0f));
    const float radius = ChooseRadius();
    const float pressure = random.Between(0.0f, 1.0f);
    bench->brush->ApplyDab(hit, center, radius, pressure, ChooseStrength(), box);
}

void RandomStrokeFixture::DabWithMirror() {
    SwiftStroke& brush = *bench->brush;
    SurfacePoint hit = ChooseHit();
    if (random.Chance(0.8f))
        brush.SetPreviousPatchPosition(hit.position + random.In(-0.1f, 0.1f) * extent);
    else
        brush.SetPreviousPatchPosition({});
    Dab(hit);
    if (!mirrored) return;
    hit = ChooseHit();
    hit.mirror = true;
    Dab(hit);
}

void RandomStrokeFixture::ApplyToAll() {
    const float strength = ChooseStrength();
    bench->brush->ApplyToWholeMesh(&bench->Mesh(), strength, random.Chance(0.5f));
}

void RandomStrokeFixture::Stroke() {
    ChooseTool();
    ChooseStamp();
    ChooseMirror();
    auto modifier = random.OneOf({BrushOperation::ModifierNone,
                                  BrushOperation::ModifierNone,
                                  BrushOperation::ModifierSmooth,
                                  BrushOperation::ModifierInvert});
    if (!HasMildLayer() && modifier == BrushOperation::ModifierSmooth)
        modifier = BrushOperation::ModifierNone;
    const bool withoutBegin = random.Chance(0.05f);
    SwiftStroke& brush = *bench->brush;
    std::ostringstream text;
    text << "; " << toolNames[static_cast<std::size_t>(tool)] << " direction " << brush.Direction()
         << " modifier " << modifier << (brush.IsMaskEnabled(-1) ? " stamp" : "")
         << (mirrored ? " mirror" : "");
    story += text.str();

    if (withoutBegin) {
        ApplyToAll();
    } else {
        bench->Begin(modifier);
        for (uint32_t dabs = 1 + random.Below(4); dabs > 0; --dabs) {
            if (random.Chance(0.1f))
                ApplyToAll();
            else
                DabWithMirror();
        }
    }
    bench->End();
}

}  // namespace trovik::test
