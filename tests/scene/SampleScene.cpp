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

std::unique_ptr<SculptSession> SessionOn(const TemporaryFolder& folder, const PolygonMesh& mesh) {
    const std::string path = folder.Path("mesh.ply");
    WriteMeshFile(path, mesh);
    return std::make_unique<SculptSession>(path);
}

std::unique_ptr<SculptSession> RefinedSession(const TemporaryFolder& folder,
                                              const PolygonMesh& mesh) {
    auto session = SessionOn(folder, mesh);
    session->Subdivide();
    session->Subdivide();
    session->SelectTool("Sculpt");
    return session;
}

void StrokeOver(SculptSession& session, const std::vector<uint32_t>& faces, float radius) {
    LevelMesh& mesh = *session.Geometry().Bound();
    session.Loop().Begin(BrushOperation::ModifierNone);
    for (const uint32_t face : faces) {
        StrokeDab dab;
        dab.hit = SurfacePoint(&mesh, 0, face % mesh.faceCount);
        session.Geometry().Place().LocalToWorld(&dab.position, &dab.hit.position, 1.0f);
        dab.size = radius;
        dab.strength = DabStrength(session.Brush(), 1.0f, radius);
        session.Loop().Dab(dab);
    }
    session.Loop().End();
}

std::unique_ptr<SculptSession> RichSession(const TemporaryFolder& folder) {
    PolygonMesh cube = Cube();
    cube.name = "Würfel";
    auto session = SessionOn(folder, cube);
    session->Geometry().Place().Set({2.0f, 1.5f, 1.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
    session->Subdivide();
    session->Subdivide();
    session->SetMirrors({{0, 2}, 1, 1});
    session->View().eye = {4.0f, 5.0f, 6.0f};
    session->View().verticalFieldOfView = 50.0f;
    session->View().width = 320;
    session->Settings().radius = 0.75f;
    session->Settings().spacing = 0.125f;
    session->Settings().seed = 77;
    session->Settings().strokesBegun = 5;
    DabDynamics& pen = session->Settings().dynamics;
    pen.strengthCurve = PressureCurve({{0.0f, 0.125f}, {0.5f, 0.25f}, {1.0f, 1.0f}});
    pen.randomSize = 0.375f;
    pen.tiltTurnsStamp = true;
    pen.tiltToSize = 1.5f;
    pen.tiltToStrength = -0.5f;
    pen.airbrush = 30.0f;
    session->SelectTool("Freeze");
    session->Brush().SetBrushStrength(62.5f);
    session->Brush().SetFalloffIndex(3);
    session->SelectTool("Sculpt");
    BrushOperation& brush = session->Brush();
    brush.SetBrushSize(33.0f);

    brush.SetBrushStrength(30.0f);
    StrokeOver(*session, {3, 4}, 1.0f);
    session->AddLayer("fine");
    session->SelectTool("Flatten");
    brush.Settings().strengthBias = 12.0f;
    StrokeOver(*session, {10, 50}, 1.0f);
    session->SetLayerStrength(0.5f);
    session->SelectTool("Wax");
    SetFalloffSamples(brush, {1.0f, 0.75f, 0.25f, 0.0f});
    StrokeOver(*session, {70}, 1.0f);
    session->AddLayer("second");
    session->ActiveLayer()->SetWritable(false);
    session->SelectLayer("fine");

    session->BindLevel(1);
    session->AddLayer("coarse");
    session->SelectTool("Bulge");
    brush.SetFalloffIndex(4);
    StrokeOver(*session, {1, 20}, 2.0f);
    std::vector<uint8_t> amounts(session->Geometry().Bound()->VertexCount());
    for (std::size_t v = 0; v < amounts.size(); ++v) amounts[v] = static_cast<uint8_t>(v * 5 % 128);
    session->Freeze(amounts, FreezeMode::Replace);
    session->UpdateCamera();
    return session;
}

std::string StateOf(SculptSession& session, const TemporaryFolder& folder) {
    const std::string path = folder.Path("state.trovik");
    session.Save(path);
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
    // The table is the whole of the map's own data, behind that of every tree node.
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
