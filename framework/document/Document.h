// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentJournal.h"
#include "framework/document/DocumentObserver.h"
#include "framework/document/DocumentState.h"
#include "framework/edits/Symmetry.h"
#include "framework/freeze/FreezeBlend.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/layers/LayerStack.h"
#include "framework/picking/LevelTrees.h"
#include "framework/render/RenderImage.h"
#include "framework/scene/SceneFile.h"
#include "framework/strokes/MirrorMaps.h"
#include "framework/strokes/StrokePath.h"
#include "framework/visibility/VisibilityChange.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace trovik {

struct DisplacementOptions;
struct MeshProjection;
struct PositionEdit;
struct ProjectionResult;
struct ReplacementReport;
struct SurfaceOperation;

/// A sculpture and its working state: levels, layers, mask, brush and tool settings, symmetry, view
/// and undo history. Applications, scripts and bindings change a sculpture only through this class.
/// Errors are reported as HostError.
///
/// Open strokes: while a stroke is open, every operation that would change the mesh, its levels and
/// layers, the tool, the mirrors or the renderers throws HostError and changes nothing; the stroke
/// stays open. These operations are Save, WriteScene, Reset, Subdivide, DeleteLevels, Unsubdivide,
/// ApplyToBase, BindLevel, Undo, Redo, JumpTo, Push, SelectTool, SetMirrors, SetTopologicalMirror,
/// MakeSymmetric, SetRenderers, AddLayer, SelectLayer, SetLayerStrength, ChangeVisibility,
/// SetTransform, Displace, Project, EditPositions, ReplaceSurface, RefreshSurface, and Freeze
/// during a stroke of the freeze brush. The following may change during a stroke: brush and stroke
/// settings (a new falloff takes effect with the next stroke), view and camera, observers and
/// listeners, and the undo budget. During a sculpting stroke, Freeze may change the mask.
///
/// Threads: a document has one owner thread, initially the one that constructs it; only State may
/// be called on other threads. Several documents can be used in turn on one thread, with the same
/// results as if each were used alone; their strokes may be interleaved. Engine and host share one
/// kernel per process. Brush, SculptBrush and Loop set the kernel's camera and mesh to those of
/// this document. Do not keep the references that they return: call them again after another
/// document has been used.
// Members are declared in the order in which they must be initialised.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
class TROVIK_API Document {
public:
    /// Opens a mesh file, splits the mesh where it is not an oriented manifold, and loads the
    /// plug-ins.
    /// \param given  units and up axis, which override those of the file.
    /// \throw Cancelled. OpenScene and the other public constructor throw it, too.
    explicit Document(const std::string& meshPath,
                      const MeshSpace& given = {},
                      JobControl* job = nullptr);
    /// Creates a document from polygons in memory. \param name  used in messages instead of a file
    /// name.
    Document(const std::string& name, PolygonMesh polygons, JobControl* job = nullptr);
    /// Opens a scene file and restores the state in which it was saved. See SaveScene for the
    /// contents of the file.
    static std::unique_ptr<Document> OpenScene(const std::string& scenePath,
                                               JobControl* job = nullptr);
    /// Ends an open stroke.
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    LevelGeometry& Geometry() { return *geometry; }
    /// The active brush and its stroke loop: those of the sculpting brush, of the freeze brush
    /// while the "Freeze" tool is active, or of another plug-in's brush while one of its tools is
    /// active. Call NoteToolChanged after changing settings of the brush.
    BrushOperation& Brush() {
        Activate();
        return PresentBrush();
    }
    StrokeLoop& Loop() {
        Activate();
        if (freezing) return *freezeLoop;
        return activePluginBrush == nullptr ? *loop : *activePluginBrush->loop;
    }
    bool IsStrokeOpen() const;
    /// \throw HostError "cannot WORK while a stroke is open; release or abandon it first".
    void RequireNoStroke(const char* work) const;
    /// Whether the "Freeze" tool is active.
    bool IsFreezing() const { return freezing; }
    /// The sculpting brush, even while another brush is active.
    BrushOperation& SculptBrush() {
        Activate();
        return *brush;
    }
    /// The pick tree of the current level. It is updated after every reported surface change. Each
    /// level has its own tree.
    PatchTree& Tree() { return *tree; }
    /// Call UpdateCamera after changing it.
    StrokeView& View() { return settings.view; }
    /// Radius, spacing and pen settings for subsequent strokes; callers may change them. Call
    /// NoteToolChanged after changing them.
    SceneSettings& Settings() { return settings; }

    /// Saves everything except the undo history to a scene file, which becomes the document's file.
    /// An attached journal restarts from that file.
    /// \throw HostError; Cancelled. In both cases, the old file and the journal remain unchanged.
    void Save(const std::string& scenePath, JobControl* job = nullptr);
    /// Writes a scene file without making it the document's file.
    /// \param header, beforeReplacing  see SaveScene. \throw HostError and Cancelled like Save.
    void WriteScene(
        const std::string& scenePath,
        const SceneStream& header = SceneStream(),
        const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {},
        JobControl* job = nullptr);
    /// Whether the sculpture differs from the last file that was opened or saved. Undoing back to
    /// the saved state makes it unmodified again. Changes to tools, symmetry and camera do not
    /// count.
    bool IsModified() const { return modified; }
    /// Parts of the mesh file or scene that were not loaded, one line each.
    const std::vector<std::string>& Notes() const { return notes; }

    /// Restores the mesh as it was imported, without layers, mask, hidden faces or undo steps, and
    /// adds `levels` levels. Until the new mesh is complete, both meshes are in memory.
    /// \param byteBudget  maximum size of the added levels in bytes.
    /// \throw HostError if the levels exceed the budget or the free memory; Cancelled. In both
    /// cases, nothing has changed or been reported.
    void Reset(uint32_t levels = 0,
               uint64_t byteBudget = LevelGeometry::unlimitedBytes,
               JobControl* job = nullptr);
    /// See LevelGeometry::Subdivide. Subdivide, DeleteLevels, Unsubdivide, ApplyToBase and
    /// BindLevel throw Cancelled if the job is cancelled; nothing has then changed or been
    /// reported.
    /// \param times  number of levels to add, each as its own undo step; either all of them are
    /// added or none. If `times` is greater than 1 and an exception is thrown, observers may have
    /// been notified of levels that were added and removed again.
    void Subdivide(uint64_t byteBudget = LevelGeometry::unlimitedBytes,
                   JobControl* job = nullptr,
                   uint32_t times = 1);
    /// Deletes the levels above the current one, or those below it. \return false if there are no
    /// such levels.
    bool DeleteLevels(bool lower, JobControl* job = nullptr);
    /// Adds a coarser level below level 0. \param times  as above.
    /// \throw HostError if level 0 is not a refinement.
    void Unsubdivide(JobControl* job = nullptr, uint32_t times = 1);
    /// Propagates the shape of the current level to the levels below. \return false if nothing
    /// moved.
    bool ApplyToBase(JobControl* job = nullptr);
    /// Makes a different level current.
    /// \return false for a level that does not exist.
    bool BindLevel(uint32_t level, JobControl* job = nullptr);

    /// Undoes or redoes one step together with the steps joined to it. \return false if there is no
    /// step.
    bool Undo();
    bool Redo();
    /// Undoes or redoes steps until `position` of them are applied. Joined steps stay together, and
    /// a position within such a group selects its start.
    /// \return false for a position beyond the newest step.
    bool JumpTo(std::size_t position);
    /// Deletes all undo steps.
    void ClearHistory();
    /// Deletes the steps that could be redone.
    void DropUndone();
    std::size_t HistoryPosition() const { return geometry->History().Position(); }
    /// Adds an undo step for a change that has already been made to the geometry, and updates
    /// everything that depends on the surface. Does nothing if the step is null.
    /// \param join  undo the step together with the previous one.
    /// \throw HostError if a stroke is open; in that case, the change has been rolled back.
    void Push(std::unique_ptr<UndoStep> step, bool join = false);
    /// Sets the memory budget of the undo history in bytes; without a value, the preference
    /// applies. Reset keeps the budget.
    void SetUndoBudget(std::optional<uint64_t> bytes);
    /// Call this after changing preferences of the undo history.
    void ApplyUndoSettings();

    /// Selects a tool of the sculpting brush or of another plug-in's brush, or "Freeze". Loads the
    /// tool's stamp if its file exists. \return false for an unknown name.
    bool SelectTool(const std::string& name);
    std::vector<std::string> ToolNames() const;
    /// Call this after changing settings through Brush, SculptBrush or Settings.
    void NoteToolChanged();

    /// Mirrors subsequent strokes across planes perpendicular to the mesh's own axes, and adds
    /// copies that are rotated about one of these axes.
    /// \throw HostError if there are more copies than maxMirrorMaps; the mirrors are then
    /// unchanged.
    void SetMirrors(const MirrorSetting& setting);
    /// Mirrors subsequent strokes by the mesh's connectivity, regardless of its pose.
    /// \throw HostError if the mesh has no topological mirror; Cancelled. In both cases, the
    /// mirrors are unchanged.
    void SetTopologicalMirror(JobControl* job = nullptr);
    /// Makes the current level symmetric; see trovik::MakeSymmetric. Creates one undo step.
    /// \return the number of vertices that moved.
    /// \throw Cancelled; nothing has then changed.
    uint32_t MakeSymmetric(int axis, SymmetrySide model, JobControl* job = nullptr);

    /// Adds a layer on the current level and activates it. AddLayer, SelectLayer and
    /// SetLayerStrength create one undo step each.
    void AddLayer(const std::string& name);
    /// Activates a layer of the current level by name; an empty name deactivates all layers.
    /// \return false for an unknown name.
    bool SelectLayer(const std::string& name);
    SculptLayer* ActiveLayer() const { return geometry->Bound()->ActiveLayer(); }
    /// Sets the strength of the active layer.
    void SetLayerStrength(float strength);

    /// Blends freeze amounts, one for each vertex of the current level, into the mask. Creates one
    /// undo step.
    void Freeze(const std::vector<uint8_t>& given, FreezeMode mode);
    /// Hides or shows faces of the current level and their counterparts on all other levels.
    /// Creates one undo step.
    /// \param chosen  see ChangeVisibilityAsStep. \return false if nothing changes.
    bool ChangeVisibility(VisibilityChange change, const FaceChoice& chosen = {});
    /// Sets the transform from mesh-local to world space. Creates one undo step.
    void SetTransform(const MatrixTransform& transform);
    /// See DisplaceByMap. Creates one undo step. \throw Cancelled; nothing has then changed.
    void Displace(const DisplacementOptions& options, JobControl* job = nullptr);
    /// See ProjectOntoFile. Creates one undo step. \throw Cancelled; nothing has then changed.
    ProjectionResult Project(const MeshProjection& projection, JobControl* job = nullptr);
    /// Moves the vertices of the current level; see trovik::EditPositions, FilterSurface and
    /// TransformVertices. Creates one undo step. \return the number of vertices that moved.
    /// \throw Cancelled; nothing has then changed.
    uint32_t EditPositions(const PositionEdit& edit, JobControl* job = nullptr);
    /// Replaces all levels by a new mesh that is computed from the current level; see
    /// SurfaceReplacement.h. Creates one undo step, or none if the operation changes nothing.
    /// \throw HostError; Cancelled. In both cases, nothing has changed.
    ReplacementReport ReplaceSurface(const SurfaceOperation& operation, JobControl* job = nullptr);

    /// Uses the document's view as the kernel's camera.
    void UpdateCamera();
    /// Adds renderers as child nodes of the current level. When another level becomes current, they
    /// are attached to it instead. They display nothing and only receive change notifications.
    /// \param updateFactors  one factor per renderer; see MeshRenderer.
    void SetRenderers(const std::vector<float>& updateFactors);
    /// Returns the visible faces of the current level for rendering. The result borrows the level's
    /// arrays.
    RenderMesh ShownMesh() const;
    /// Call this after changing the surface without a stroke and without Push.
    void RefreshSurface();

    /// Statistics for all strokes of the document.
    StrokeTotals Totals() const;
    /// The file that was opened.
    const std::string& MeshPath() const { return path; }
    /// The mesh as it was imported, after splitting into an oriented manifold.
    const PolygonMesh& Imported() const { return loaded; }

    /// Adds an observer; observers are called in the order in which they were added. Borrowed.
    /// Removing an observer that was not added has no effect.
    void AddObserver(DocumentObserver& observer);
    void RemoveObserver(DocumentObserver& observer);
    /// Reports a problem to the observers.
    void ReportProblem(const std::string& message);
    /// Returns and clears the last problem of the undo history; empty if there is none.
    std::string TakeHistoryProblem();

    /// Returns the values shown in panels. On the owner thread they are up to date. Other threads
    /// get the values as of the owner thread's last call, or the initial values. Cost: after a
    /// change O(levels + layers + undo steps), otherwise one atomic load.
    std::shared_ptr<const DocumentState> State() const;
    /// Transfers the document to the calling thread. No other thread may be using it.
    void SetOwnerThread() { owner = std::this_thread::get_id(); }

    /// From now on, records strokes and saves in this journal; null detaches the journal. Borrowed.
    void SetJournal(DocumentJournal* newJournal) { journal = newJournal; }
    /// Sets the observer of all calls into the brush; null removes it. Borrowed.
    void SetObserver(StrokeObserver* newObserver);
    /// Notifies the stroke observer before a command runs that may change the mesh.
    void AnnounceCommand(const std::string& name) {
        if (strokeObserver != nullptr) strokeObserver->BeforeCommand(SculptBrush(), name);
    }
    /// Sets the listener that receives the inputs of every stroke, after the journal has received
    /// them; null removes it. Borrowed.
    void SetInputListener(StrokeInputListener* newListener) { inputListener = newListener; }

private:
    class StrokeEvents;
    class SurfaceEvents;
    /// The brush of a plug-in other than the sculpting brush, and its stroke loop.
    struct PluginBrush {
        std::unique_ptr<BrushOperation> brush;
        std::unique_ptr<StrokeLoop> loop;
    };
    /// Its destructor removes the document from the process globals, even if a constructor of
    /// Document throws.
    struct Activation {
        Document& document;
        ~Activation();
    };
    Document(const std::string& scenePath,
             std::unique_ptr<BrushOperation> sceneBrush,
             JobControl* job);
    /// Builds the geometry from the imported mesh, with `levels` levels above it, and installs it
    /// in the document. If this throws, nothing has changed.
    void BuildGeometry(uint32_t levels, uint64_t byteBudget, JobControl* job);
    /// Selects the pick tree and creates the stroke loops of the current level.
    void FollowLevel(JobControl* job = nullptr);
    void ApplyMirrors();
    BrushOperation& PresentBrush() const;
    /// The brush that has the tool; null if there is none.
    BrushOperation* BrushOfTool(const BrushConfiguration& tool) const;
    /// The stroke loops of all brushes; empty before the geometry exists.
    std::vector<StrokeLoop*> Loops() const;
    void ResetLoops();
    /// Creates the brushes of all plug-ins that have tools, except the sculpting brush.
    void MakePluginBrushes();
    /// For SaveScene and LoadScene.
    std::vector<BrushOperation*> PluginBrushList() const;
    void PushLevels(std::unique_ptr<UndoStep> step);
    /// Creates `times` steps and pushes them. If creating one throws, the previous ones are
    /// reverted.
    template <typename MakeStep>
    void PushAllOrNone(uint32_t times, const MakeStep& makeStep);
    void PlaceRenderers();
    /// Sets the process globals to this document's values. Costs one comparison if the document is
    /// already active.
    void Activate() {
        if (active != this) BecomeActive();
    }
    void BecomeActive();
    /// Stores the process globals in the document to which they belong.
    static void StoreGlobals();
    /// Compares the document with its state at the last notification, and notifies the observers of
    /// the differences.
    void NotifyChanges();
    void NotifyCamera();
    template <typename Event>
    void Notify(const Event& event);
    template <typename Steps>
    bool WalkHistory(const char* work, const Steps& steps);
    std::string ToolName() const;
    std::shared_ptr<const DocumentState> BuildState() const;
    std::vector<DocumentState::Level> LevelsOfState() const;
    std::vector<DocumentState::Layer> LayersOfState() const;
    DocumentState::Tool ToolOfState() const;

    /// The document to which the process globals belong; null if there is none.
    static Document* active;

    std::string path;
    std::string scenePath;
    PolygonMesh loaded;
    std::unique_ptr<LevelGeometry> geometry;
    Activation activation{*this};
    std::unique_ptr<BrushOperation> brush;
    std::unique_ptr<LevelTrees> trees;
    PatchTree* tree = nullptr;
    std::unique_ptr<SurfaceEvents> surfaceEvents;
    std::unique_ptr<StrokeEvents> events;
    std::unique_ptr<StrokeLoop> loop;
    std::unique_ptr<FreezeBrush> freezeBrush;
    std::unique_ptr<StrokeLoop> freezeLoop;
    bool freezing = false;
    /// Does not change after construction.
    std::vector<PluginBrush> pluginBrushes;
    /// The plug-in brush whose tool was selected last; null if a tool of the sculpting brush was
    /// selected last. The freeze brush takes precedence.
    PluginBrush* activePluginBrush = nullptr;
    /// This document's values of the process globals, stored while another document is active: the
    /// kernel's camera, and whether the falloff depends on the facing angle.
    MatrixTransform camera;
    bool isCameraOrthographic = false;
    bool facingActive = false;
    StrokeTotals earlierTotals;
    SceneSettings settings;
    std::vector<std::string> notes;
    std::vector<float> rendererFactors;
    std::optional<uint64_t> undoBudget;
    StrokeObserver* strokeObserver = nullptr;
    StrokeInputListener* inputListener = nullptr;
    DocumentJournal* journal = nullptr;

    std::vector<DocumentObserver*> observers;
    HistoryEntries entries;
    uint64_t savedState = 0;
    bool modified = false;
    std::string historyProblem;
    /// State when the observers were last notified.
    std::vector<DocumentState::Level> notifiedLevels;
    uint32_t notifiedLevel = 0;
    std::vector<DocumentState::Layer> notifiedLayers;

    std::atomic<std::thread::id> owner = std::this_thread::get_id();
    /// Used on the owner thread only.
    mutable bool isStateCurrent = false;
    mutable std::atomic<std::shared_ptr<const DocumentState>> state;
};

}  // namespace trovik
