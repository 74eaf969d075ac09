// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapFile.h"
#include "framework/document/Document.h"
#include "framework/freeze/FreezeInView.h"
#include "framework/mesh/MeshSource.h"
#include "framework/script/FieldReader.h"
#include "framework/script/JournalRecorder.h"
#include "framework/script/ScriptFiles.h"
#include "framework/strokes/PathShape.h"
#include "framework/trace/TraceRecorder.h"

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// What the runner tells whoever started it.
struct ScriptProgress {
    /// Steps finished and their number, and the words for the one at work.
    std::function<void(std::size_t done, std::size_t count, const std::string& what)> step;
    /// A dab was made; for progress within a long stroke.
    std::function<void()> dab;
    /// Elements of a mesh file that were written, and how many there will be.
    WriteProgress file;
    /// A message of the brush to its user, as plain text; a note about a file; or a failure that
    /// costs memory but loses nothing, such as undo steps that cannot be moved to disk.
    std::function<void(const std::string&)> message;
    /// A step had no effect, or probably not the intended one (file, JSON pointer, reason; at most
    /// once per step), or safety that the user relies on was lost: the journal could not be kept.
    /// The work goes on. If empty, `message` receives what concerns safety.
    std::function<void(const std::string&)> warning;
    /// Asked between steps and dabs, and now and then while levels and files are made; answers true
    /// to stop: the run then throws WorkStopped. May be empty.
    std::function<bool()> stop;
};

/// What one step did.
struct StepReport {
    /// JSON pointer of the step, and its kind.
    std::string pointer, step;
    uint64_t dabs = 0;
    /// By strokes that ended in the step, each vertex once per stroke.
    uint64_t verticesMoved = 0;
    /// Of the whole step, not only in the brush.
    double milliseconds = 0.0;
    std::vector<std::string> warnings;
};

/// What a script left behind.
struct ScriptResult {
    StrokeTotals totals;
    uint64_t vertices = 0;
    uint64_t faces = 0;
    uint32_t levels = 0;
    /// Files written, in order.
    std::vector<std::string> files;
    /// In order.
    std::vector<StepReport> steps;
};

/// Runs a stroke script: its meaning is told in docs/stroke-script.md. Where files are looked for
/// and where they are written is described at ScriptFiles.
/// \throw HostError of one line: file, JSON pointer, reason. \throw WorkStopped when it was asked
/// to stop. Files written before stay.
class TROVIK_API ScriptRunner {
public:
    /// \param scriptPath  "-" for standard input.
    ScriptRunner(const std::string& scriptPath, std::string outputFolder, ScriptProgress progress);
    /// Allows the script to write outside of the output folder. Off by default.
    void AllowOutside(bool allowed) { files.AllowOutside(allowed); }
    /// Preferences to load before the work starts; those of the script take precedence. Without a
    /// file all preferences have their defaults, or what the process has set.
    void SetPreferencesFile(const std::string& file) { preferencesFile = file; }
    /// Writes a trace of the run; see docs/trace.md. To be called before Run.
    void SetTrace(const TraceOptions& options) { traceOptions = options; }
    /// Keeps a journal of the run; see docs/journal.md. To be called before Run or Open.
    void SetJournal(const JournalOptions& options) { journalOptions = options; }
    /// Makes warnings errors of their steps: Run throws instead of going on.
    void SetStrict(bool on) { strict = on; }
    ScriptResult Run();
    /// Checks the script, the files that it reads and its settings, instead of Run. Opens the mesh
    /// or scene, makes no strokes and writes nothing. Not found are errors that depend on what
    /// earlier steps made of the surface, such as numbers of faces and levels and names of layers.
    /// \return all errors found, each as one line; empty if there are none.
    std::vector<std::string> Check();

    /// For programs that give steps one by one, in place of Run. Sets up as a script does;
    /// \param setup  a script that ParseStrokeScript returned; its steps are passed over.
    void Open(const nlohmann::json& setup);
    /// Runs one step of a script. \param step  checked against the schema, as a part of one; it
    /// outlives the call. \param number  its place in the script, for messages.
    void Do(const nlohmann::json& step, std::size_t number);
    /// Writes the scene as a step "save" does, to this path.
    void Save(const std::string& scenePath);
    /// The work ended in good order: ends an open stroke, and the journal.
    void Close();
    /// What was opened. Strokes may be made by its loop between steps; they go into the journal.
    /// All other changes are steps.
    Document& GetDocument() { return *document; }

private:
    using StepFunction = void (ScriptRunner::*)(const FieldReader&);

    void SetUp(const FieldReader& script);
    /// \throw HostError unless the script has one of "mesh" and "scene".
    void CheckHasOneSource(const FieldReader& script) const;
    /// Before the mesh or scene is opened.
    void PrepareProcess(const FieldReader& script);
    void OpenSource(const FieldReader& script);
    void OpenMesh(const FieldReader& script);
    void OpenScene(const FieldReader& script);
    void SelectFirstTool();
    void SetView(const FieldReader& script);
    void CheckSetUp(const FieldReader& script, std::vector<std::string>& faults);
    void CheckStep(const FieldReader& step, std::vector<std::string>& faults);
    void CheckSettings(const FieldReader& settings, std::vector<std::string>& faults);
    void CheckStroke(const FieldReader& stroke);
    void CheckPath(const FieldReader& stroke) const;
    void CheckFreeze(const FieldReader& freeze);
    void CheckPicture(const FieldReader& picture);
    void CheckSheet(const FieldReader& sheet);
    void CheckExport(const FieldReader& options);
    void CheckBake(const FieldReader& bake);
    void CheckDisplace(const FieldReader& displace);
    void CheckSave(const FieldReader& file);
    void RunStep(const FieldReader& step);
    void StartTrace();
    void FinishTrace();
    void FinishTraceAfterError();
    void Do(const FieldReader& step);
    void StartJournal(const FieldReader& script);
    void TellProblems();
    void RunAndReport(const FieldReader& step);
    /// Counts the strokes of a script for NextStepLabel.
    void CountStrokes(const FieldReader& steps);
    /// The text that progress shows for a step. To be called once for each step, in order, because
    /// it numbers the strokes.
    std::string NextStepLabel(const FieldReader& step);
    void Warn(const std::string& reason) { stepWarnings.push_back(reason); }
    /// Passes notes about a file to `progress.message`.
    void ReportNotes(const std::string& file, const std::vector<std::string>& notes) const;
    void StopIfAsked() const;
    /// Of a file, and of dabs, for who works long on them.
    WriteProgress FileProgress() const;
    std::function<void()> DabProgress() const;
    void CheckOpenStroke(const FieldReader& step) const;
    /// What a stroke step must and must not have.
    void CheckStrokeKinds(const FieldReader& stroke) const;
    bool IsStrokeOpen() const;
    void RunTool(const FieldReader& name);
    void RunSettings(const FieldReader& settings);
    void RunStroke(const FieldReader& stroke);
    void StartWatchingStroke();
    /// \param before  totals before the step.
    void WarnOfIdleStroke(const FieldReader& stroke, const StrokeTotals& before);
    /// World points that are to lie on the surface. \param name  of the list in its step.
    /// \param reach  a point within this distance of the surface is near enough.
    void WarnOfFarPoints(const std::string& name, const std::vector<Vector>& points, float reach);
    /// Of the box of the bound level, world units.
    float Diagonal() const;
    void RunUndo(const FieldReader& count);
    void RunRedo(const FieldReader& count);
    void RunSubdivide(const FieldReader& count);
    void RunLevel(const FieldReader& level);
    void RunDeleteLevels(const FieldReader& which);
    void RunUnsubdivide(const FieldReader& count);
    void RunApplyToBase(const FieldReader& flag);
    void RunLayer(const FieldReader& layer);
    void RunFreeze(const FieldReader& freeze);
    std::vector<float> FreezeShares(const FieldReader& freeze, const std::string& what);
    std::vector<float> SharesOfShape(const FieldReader& freeze, const std::string& what);
    std::vector<float> SharesOfImage(const FieldReader& image, ViewReach reach);
    std::vector<float> SharesOfCavity(const FieldReader& cavity);
    uint32_t ShellVertex(const FieldReader& shell);
    void ChangeLayer(const FieldReader& layer,
                     std::shared_ptr<SculptLayer> changed,
                     const std::function<void(std::unique_ptr<UndoStep>)>& push);
    void RunTransform(const FieldReader& transform);
    void Place(const FieldReader& transform);
    void RunMirror(const FieldReader& mirror);
    void RunSymmetrize(const FieldReader& options);
    void RunCamera(const FieldReader& camera);
    void RunPicture(const FieldReader& picture);
    void RunSheet(const FieldReader& sheet);
    void RunExport(const FieldReader& options);
    void RunBake(const FieldReader& bake);
    void RunDisplace(const FieldReader& displace);
    void RunReset(const FieldReader& flag);
    void RunSave(const FieldReader& file);
    void RunPreferences(const FieldReader& preferences);

    void SetFalloff(const FieldReader& falloff);
    void SetDirection(const FieldReader& direction);
    void SetStamp(const FieldReader& stamp);
    std::string StampPath(const FieldReader& name) const;
    void StrokeDabs(const FieldReader& dabs);
    void LayDabs(const FieldReader& stroke);
    void LayPath(const FieldReader& stroke);
    void SetPen(const FieldReader& settings);
    PathShape ShapeOf(const FieldReader& given, std::size_t placeNumbers) const;
    std::vector<PathSample> PenOf(const FieldReader& pen) const;
    float RadiusAt(const Vector& place) const;
    std::vector<PathSample> Samples(const FieldReader& list, std::size_t placeNumbers) const;
    /// \param frames  of the turntable that starts with this view; 1 for a single picture.
    StrokeView ReadView(const FieldReader& camera, StrokeView view, int frames = 1);
    PictureOptions ReadPictureOptions(const FieldReader& fields, const StrokeView& view) const;
    /// The pictures of a step: one, or the frames of a turntable, each handed to `take` as soon as
    /// it is there.
    void MakePictures(const FieldReader& fields,
                      int frames,
                      const std::function<void(Picture, int index)>& take);
    void Subdivide(const FieldReader& where, int count);
    /// What the script says that the mesh file's numbers mean.
    MeshSpace ImportSpace(const FieldReader& script) const;
    /// The file that a field names, which must exist.
    std::string InputPath(const FieldReader& file) const;
    /// \throw HostError for a file that cannot be written so.
    MeshSpace ExportSpace(const FieldReader& options, const std::string& file) const;
    MapFileOptions MapFileOf(const FieldReader& bake);
    FloatImage ReadImage(const FieldReader& name) const;
    std::string ScenePath(const FieldReader& file);
    void CheckPictureKinds(const FieldReader& picture) const;
    /// The pictures that were kept under these names.
    std::vector<const Picture*> KeptPictures(const FieldReader& names) const;
    std::string OutputPath(const FieldReader& file);
    /// The path of each image file that a picture step writes, checked as by OutputPath; with
    /// "frames" one path per frame.
    std::vector<std::string> PictureTargets(const FieldReader& picture);
    /// A file is complete.
    void NoteWritten(const std::string& file);
    void KeepBefore();

    /// As given.
    std::string givenPath;
    /// Name of the script in messages.
    std::string path;
    ScriptFiles files;
    ScriptProgress progress;
    std::string preferencesFile;
    /// What Check knows of the strokes that it does not make.
    bool isChecking = false;
    bool leavesStrokeOpen = false;
    TraceOptions traceOptions;
    /// Outlives the document, whose brush it hears.
    std::unique_ptr<TraceRecorder> trace;
    std::unique_ptr<Document> document;
    JournalOptions journalOptions;
    /// Listens to the document until its own end.
    std::unique_ptr<JournalRecorder> journal;
    ScriptResult result;
    /// Bytes that the levels of one step may take together.
    uint64_t subdivideBudget = std::numeric_limits<uint64_t>::max();
    std::map<std::string, Picture> kept;
    /// The surface before the first stroke, for pictures of before and after.
    std::vector<Vector> positionsBefore;
    std::vector<PackedNormal> normalsBefore;
    bool wantsBefore = false;
    bool strict = false;
    /// Strokes of the script, and those that began up to the current step.
    std::size_t strokeCount = 0;
    std::size_t strokesBegun = 0;
    /// Of the current step.
    std::vector<std::string> stepWarnings;
    /// What tells at the end of a stroke whether it had any effect.
    struct StrokeStart {
        uint64_t dabs = 0;
        bool wholeMesh = false;
        /// Freeze amounts; of the freeze brush only.
        std::vector<uint8_t> frozen;
    } strokeStart;
    /// Whether the user was told what refinement does to triangles.
    bool triangleNoteGiven = false;
};

}  // namespace trovik
