// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/Symmetry.h"
#include "framework/freeze/FreezeBlend.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/layers/LayerStack.h"
#include "framework/render/Picture.h"
#include "framework/scene/SceneFile.h"
#include "framework/strokes/MirrorMaps.h"
#include "framework/strokes/StrokePath.h"
#include "framework/visibility/VisibilityChange.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// One mesh being sculpted: its geometry, the brush with its tools, layers, mirrors, undo and the
/// view. What the command and every other application drive. Everything reports by HostError.
///
/// While a stroke of Loop is open, everything that would change the mesh, its levels and layers,
/// the tool, the mirrors or the renderers under it throws HostError, changes nothing, and the
/// stroke goes on: Save, Reset, Subdivide, DeleteLevels, Unsubdivide, ApplyToBase, BindLevel, Undo,
/// Redo, Push, SelectTool, SetMirrors, SetTopologicalMirror, MakeSymmetric, SetRenderers, AddLayer,
/// SelectLayer, SetLayerStrength, ChangeVisibility, RefreshSurface, and Freeze during a stroke of
/// the freeze brush. The rest is free: settings of brush and strokes (a falloff counts from the
/// next stroke), view and camera, observers and listeners, the undo budget, and Freeze during a
/// sculpting stroke.
class TROVIK_API SculptSession {
public:
    /// Opens a mesh file, splits what is no oriented manifold, and loads the plug-ins.
    /// \param given  what the file's numbers mean, before what the file itself says.
    explicit SculptSession(const std::string& meshPath, const MeshSpace& given = {});
    /// The same for polygons that are no file. \param name  stands for the file in messages.
    SculptSession(const std::string& name, PolygonMesh polygons);
    /// Opens a scene file and goes on where it was saved; see SaveScene for what it holds.
    static std::unique_ptr<SculptSession> OpenScene(const std::string& scenePath);
    ~SculptSession();
    SculptSession(const SculptSession&) = delete;
    SculptSession& operator=(const SculptSession&) = delete;

    LevelGeometry& Geometry() { return *geometry; }
    /// The brush at work, and the loop that drives it: those of the sculpting brush, or with the
    /// tool "Freeze" those of the freeze brush.
    BrushOperation& Brush() {
        if (freezing) return *freezeBrush;
        return *brush;
    }
    StrokeLoop& Loop() { return freezing ? *freezeLoop : *loop; }
    /// \throw HostError "cannot WORK while a stroke is open; release or abandon it first".
    void RequireNoStroke(const char* work) const;
    /// Whether the tool "Freeze" is at work.
    bool IsFreezing() const { return freezing; }
    /// The brush that the plug-in brings, whichever is at work.
    BrushOperation& SculptBrush() { return *brush; }
    PatchTree& Tree() { return *tree; }
    StrokeView& View() { return settings.view; }
    /// Radius, spacing and pen of the strokes to come are to be read and set here.
    SceneSettings& Settings() { return settings; }

    /// Writes all but the undo history into a scene file.
    /// \throw HostError; the old file then is as it was.
    /// \param header, beforeReplacing  see SaveScene.
    void Save(const std::string& scenePath,
              const SceneStream& header = SceneStream(),
              const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});
    /// What was left out of the mesh file or scene, one line each.
    const std::vector<std::string>& Notes() const { return notes; }

    /// Puts the mesh back as it was imported: level 0, no layers, no freeze, nothing hidden, no
    /// undo.
    void Reset();
    /// See LevelGeometry::Subdivide. \return false when `options.stop` stopped it.
    bool Subdivide(const SubdivideOptions& options = {});
    /// Deletes the levels above the bound one, or those below it. \return false when there is none.
    bool DeleteLevels(bool lower);
    /// Puts a coarser level below the base. \throw HostError when the base is no refinement.
    void Unsubdivide();
    /// Gives the shape of the bound level to those below it. \return false when nothing moved.
    bool ApplyToBase();
    /// \return false for a level that does not exist.
    bool BindLevel(uint32_t level);
    /// \return false when there is nothing to take back.
    bool Undo();
    bool Redo();
    /// Takes the step of something that was done to the geometry, and brings what follows from the
    /// surface up to date; null for nothing done. \param join  undone together with the step
    /// before. While a stroke is open the step is applied once more, which takes the work back,
    /// before HostError is thrown.
    void Push(std::unique_ptr<UndoStep> step, bool join = false);
    /// Bytes for the undo history, also after a reset; without, the preference counts.
    void SetUndoBudget(std::optional<uint64_t> bytes);
    /// To be called when preferences of the undo history have changed.
    void ApplyUndoSettings();
    /// Who hears of every call into the brush; null for nobody. Borrowed.
    void SetObserver(StrokeObserver* newObserver);
    /// Announces a command that may change the mesh to the observer, if there is one.
    void AnnounceCommand(const std::string& name) {
        if (observer != nullptr) observer->BeforeCommand(*brush, name);
    }
    /// Who hears of what the stroke loop is told to do; null for nobody. Borrowed.
    void SetInputListener(StrokeInputListener* newListener);
    /// One of the sculpting brush's tools, or "Freeze". Reads the tool's stamp where it names one
    /// that is there. \return false for a name that is no tool.
    bool SelectTool(const std::string& name);
    std::vector<std::string> ToolNames() const;

    /// Mirrors the next strokes over planes of the mesh's own axes and about one of them.
    /// \throw HostError for more copies than mostMirrorMaps; the mirrors stay as they were.
    void SetMirrors(const MirrorSetting& setting);
    /// Makes the bound level symmetric; see trovik::MakeSymmetric. One step of undo. \return the
    /// number of vertices that moved.
    uint32_t MakeSymmetric(int axis, SymmetrySide model);
    /// Puts renderers under the bound level, whichever that is: they show nothing and are there to
    /// be told of changes. \param updateFactors  one for each; see MeshRenderer.
    void SetRenderers(const std::vector<float>& updateFactors);
    /// Mirrors the next strokes by how the mesh's faces hang together, whatever its pose.
    /// \throw HostError when the mesh has no topological mirror; the mirrors stay as they were.
    void SetTopologicalMirror();
    /// Brings the kernel's camera to the view's place.
    void UpdateCamera();

    /// Adds a layer on the bound level and makes it active. One step of undo, like the next two.
    void AddLayer(const std::string& name);
    /// By name among the bound level's; empty: none active. \return false for an unknown name.
    bool SelectLayer(const std::string& name);
    SculptLayer* ActiveLayer() const { return geometry->Bound()->ActiveLayer(); }
    /// Of the active layer.
    void SetLayerStrength(float strength);

    /// Blends amounts, one for each vertex of the bound level, into those that are there. One step
    /// of undo.
    void Freeze(const std::vector<uint8_t>& given, FreezeMode mode);

    /// Hides and shows faces of the bound level, with all above them. One step of undo.
    /// \param chosen  see ChangeVisibilityAsStep. \return false when nothing changes.
    bool ChangeVisibility(VisibilityChange change, const FaceChoice& chosen = {});

    /// The visible faces of the bound level for a picture; borrows its arrays.
    PictureMesh ShownMesh() const;
    /// After the surface changed otherwise than by a stroke.
    void RefreshSurface();

    /// Totals of all strokes of the session.
    StrokeTotals Totals() const;
    const std::string& MeshPath() const { return path; }
    /// The mesh as it was imported, an oriented manifold.
    const PolygonMesh& Imported() const { return loaded; }

private:
    SculptSession(const std::string& scenePath, std::unique_ptr<BrushOperation> sceneBrush);
    void BuildGeometry();
    void RebuildLoop();
    void PlaceMirrors();
    void PushLevels(std::unique_ptr<UndoStep> step);
    void PlaceRenderers();

    std::string path;
    PolygonMesh loaded;
    std::unique_ptr<LevelGeometry> geometry;
    std::unique_ptr<BrushOperation> brush;
    std::unique_ptr<PatchTree> tree;
    std::unique_ptr<StrokeLoop> loop;
    std::unique_ptr<FreezeBrush> freezeBrush;
    std::unique_ptr<StrokeLoop> freezeLoop;
    bool freezing = false;
    StrokeTotals earlierTotals;
    SceneSettings settings;
    std::vector<std::string> notes;
    std::vector<float> rendererFactors;
    std::optional<uint64_t> undoBudget;
    StrokeObserver* observer = nullptr;
    StrokeInputListener* inputListener = nullptr;
};

}  // namespace trovik
