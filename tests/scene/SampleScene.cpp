// SPDX-License-Identifier: Apache-2.0
#include "tests/scene/SampleScene.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/files/MeshFiles.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/strokes/DabStrength.h"
#include "tests/meshes/MeshZoo.h"

namespace trovik::test {

std::unique_ptr<Document> DocumentOn(const TemporaryFolder& folder, const PolygonMesh& mesh) {
    const std::string path = folder.Path("mesh.ply");
    WriteMeshFile(path, mesh);
    return std::make_unique<Document>(path);
}

std::unique_ptr<Document> RefinedDocument(const TemporaryFolder& folder, const PolygonMesh& mesh) {
    auto document = DocumentOn(folder, mesh);
    document->Subdivide();
    document->Subdivide();
    document->SelectTool("Sculpt");
    return document;
}

void StrokeOver(Document& document, const std::vector<uint32_t>& faces, float radius) {
    LevelMesh& mesh = *document.Geometry().Bound();
    document.Loop().Begin(BrushOperation::ModifierNone);
    for (const uint32_t face : faces) {
        StrokeDab dab;
        dab.hit = SurfacePoint(&mesh, 0, face % mesh.faceCount);
        document.Geometry().Transform().LocalToWorld(&dab.position, &dab.hit.position, 1.0f);
        dab.size = radius;
        dab.strength = DabStrength(document.Brush(), 1.0f, radius);
        document.Loop().Dab(dab);
    }
    document.Loop().End();
}

std::unique_ptr<Document> RichDocument(const TemporaryFolder& folder) {
    PolygonMesh cube = Cube();
    cube.name = "Würfel";
    auto document = DocumentOn(folder, cube);
    document->Geometry().Transform().Set(
        {2.0f, 1.5f, 1.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
    document->Subdivide();
    document->Subdivide();
    document->SetMirrors({{0, 2}, 1, 1});
    document->View().eye = {4.0f, 5.0f, 6.0f};
    document->View().verticalFieldOfView = 50.0f;
    document->View().width = 320;
    document->Settings().radius = 0.75f;
    document->Settings().spacing = 0.125f;
    document->Settings().seed = 77;
    document->Settings().strokesBegun = 5;
    DabDynamics& pen = document->Settings().dynamics;
    pen.strengthCurve = PressureCurve({{0.0f, 0.125f}, {0.5f, 0.25f}, {1.0f, 1.0f}});
    pen.randomSize = 0.375f;
    pen.tiltRotatesStamp = true;
    pen.tiltToSize = 1.5f;
    pen.tiltToStrength = -0.5f;
    pen.airbrush = 30.0f;
    document->SelectTool("Freeze");
    document->Brush().SetBrushStrength(62.5f);
    document->Brush().SetFalloffIndex(3);
    document->SelectTool("Sculpt");
    BrushOperation& brush = document->Brush();
    brush.SetBrushSize(33.0f);

    brush.SetBrushStrength(30.0f);
    StrokeOver(*document, {3, 4}, 1.0f);
    document->AddLayer("fine");
    document->SelectTool("Flatten");
    brush.Settings().strengthBias = 12.0f;
    StrokeOver(*document, {10, 50}, 1.0f);
    document->SetLayerStrength(0.5f);
    document->SelectTool("Wax");
    SetFalloffSamples(brush, {1.0f, 0.75f, 0.25f, 0.0f});
    StrokeOver(*document, {70}, 1.0f);
    document->AddLayer("second");
    document->ActiveLayer()->SetWritable(false);
    document->SelectLayer("fine");

    document->BindLevel(1);
    document->AddLayer("coarse");
    document->SelectTool("Bulge");
    brush.SetFalloffIndex(4);
    StrokeOver(*document, {1, 20}, 2.0f);
    std::vector<uint8_t> amounts(document->Geometry().Bound()->VertexCount());
    for (std::size_t v = 0; v < amounts.size(); ++v) amounts[v] = static_cast<uint8_t>(v * 5 % 128);
    document->Freeze(amounts, FreezeMode::Replace);
    document->UpdateCamera();
    return document;
}

std::string StateOf(Document& document, const TemporaryFolder& folder) {
    const std::string path = folder.Path("state.trovik");
    document.Save(path);
    return TemporaryFolder::Content(path);
}

std::unique_ptr<BrushOperation> NewBrush() {
    HostKernel::Instance();
    LoadPlugins();
    const ClassDesc* desc = ClassDesc::ByName(QStringLiteral("SwiftStroke"));
    return std::unique_ptr<BrushOperation>(dynamic_cast<BrushOperation*>(desc->Create()));
}

bool HasPatchMap(LevelMesh& level) {
    return level.ChildByClass(ClassDesc::ByName(QStringLiteral("PatchMap")), 0u) != nullptr;
}

std::vector<uint32_t> PatchTable(LevelMesh& level) {
    TreeNode* map = level.ChildByClass(ClassDesc::ByName(QStringLiteral("PatchMap")), 0u);
    if (map == nullptr) return {};
    SceneStream written;
    map->Serialize(written);
    // A map stores the data that every tree node has, and then its table.
    SceneStream ofNode;
    map->TreeNode::Serialize(ofNode);
    SceneStream read = written.Section(written.Data().data() + ofNode.Data().size(),
                                       written.Data().size() - ofNode.Data().size(),
                                       0,
                                       QStringLiteral("table"));
    Store<uint32_t> table;
    read.ReadStore(table);
    return {table.array, table.array + table.fill};
}

}  // namespace trovik::test
