// SPDX-License-Identifier: Apache-2.0
#include "framework/script/JournalRecovery.h"

#include "framework/document/DocumentStroke.h"
#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"
#include "framework/jobs/JobControl.h"
#include "framework/script/ScriptDocument.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <limits>
#include <optional>

namespace trovik {

namespace {

/// Thrown to abort a step after its last complete dab.
struct EndOfJournal : std::exception {};

/// Counts the dabs of a step, and aborts the step when the count reaches a limit.
class DabCounter final : public StrokeInputListener {
public:
    uint32_t count = 0;
    uint32_t limit = std::numeric_limits<uint32_t>::max();

    void OnStrokeBegun(BrushOperation::Modifier, uint64_t) override {}
    void OnDab(const StrokeDab&, bool failed) override {
        if (!failed) Count();
    }
    void OnWholeMesh(float, bool) override { Count(); }
    void OnReverted() override {}
    void OnStrokeEnded(bool) override {}

private:
    void Count() {
        if (++count >= limit) throw EndOfJournal();
    }
};

bool HasExpectedContent(const JournalFile& file, JobControl* job) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file.path, ignored)) return false;
    return HashFile(file.path, job) == file.content;
}

/// Replays the steps of a journal.
class Redo {
public:
    Redo(const std::string& journalPath, RecoveredWork& recovered, const RecoveryOptions& given)
        : path(journalPath), work(recovered), content(recovered.content), options(given) {}
    /// The document may outlive this object while a stroke is still open; the end of that stroke is
    /// then not counted.
    ~Redo() {
        if (isListening) work.runner->GetDocument().SetInputListener(nullptr);
    }
    Redo(const Redo&) = delete;
    Redo& operator=(const Redo&) = delete;

    void Run() {
        CheckStamps();
        const std::size_t first = ChooseStart();
        const nlohmann::json setup = CheckSteps(first);
        ScriptProgress quiet;
        quiet.job = options.progress.job;
        // Journals from versions that did not confine scripts to an output folder contain no such
        // folder.
        const std::string& output = content.base.output;
        work.runner = std::make_unique<ScriptRunner>(
            content.base.script, output.empty() ? "." : output, quiet);
        work.runner->AllowOutside(output.empty() || content.base.outsideAllowed);
        work.runner->Open(setup);
        for (const nlohmann::json& carried : content.base.carried) work.runner->Do(carried, 0);
        work.runner->GetDocument().SetInputListener(&counter);
        isListening = true;
        NoteState();
        for (std::size_t i = first; i < content.steps.size(); ++i) {
            if (options.progress.step)
                options.progress.step(i, content.steps.size(), Name(content.steps[i]));
            ThrowIfCancelled();
            step = &content.steps[i];
            if (step->step.is_null())
                RedoStroke();
            else
                RedoStep(i);
            NoteState();
        }
        work.runner->GetDocument().Loop().End([this] { ThrowIfCancelled(); });
        NoteState();
    }

private:
    void NoteState() const {
        if (options.afterStep) options.afterStep(work.runner->GetDocument());
    }

    void ThrowIfCancelled() const { ReportOrThrow(options.progress.job, 0, 0, "Redoing steps"); }

    [[noreturn]] void Fail(const std::string& reason) const {
        throw HostError(path + ": " + reason);
    }

    static std::string Name(const JournalStep& step) {
        return step.step.is_null() ? "stroke" : step.step.begin().key();
    }

    void CheckStamps() const {
        for (const JournalFile& stamp : content.stamps) {
            if (!HasExpectedContent(stamp, options.progress.job))
                Fail("the file " + stamp.path +
                     " has changed since the work was recorded (expected sha256 " +
                     stamp.content.sha256 + ")");
        }
    }

    /// Determines where the replay can start. \return the index of the first step to replay.
    std::size_t ChooseStart() {
        if (options.fromStart && UseSource()) return 0;
        std::vector<JournalSave> saves = content.saves;
        // A later save leaves less work to replay.
        if (!options.fromStart) std::reverse(saves.begin(), saves.end());
        for (const JournalSave& save : saves)
            if (CanStartAt(content, save.stepsBefore) &&
                HasExpectedContent(save.scene, options.progress.job))
                return StartFrom(save);
        if (!options.fromStart && UseSource()) return 0;
        for (const JournalSave& save : saves)
            if (HasExpectedContent(save.scene, options.progress.job)) return StartFrom(save);
        Fail("the source file of the work, " + content.base.source +
             ", is missing or has changed (expected sha256 " + content.base.content.sha256 +
             "); restore it and try again");
    }

    /// Starts from the file from which the journal starts, or from its copy. \return false if
    /// neither has the expected content.
    bool UseSource() {
        for (const std::string& source :
             {content.base.source, KeptSourceOf(path, content.base.source)}) {
            if (!HasExpectedContent({source, content.base.content}, options.progress.job)) continue;
            nlohmann::json& setup = content.base.setup;
            setup[setup.contains("scene") ? "scene" : "mesh"] = source;
            return true;
        }
        return false;
    }

    std::size_t StartFrom(const JournalSave& save) {
        if (options.fromStart)
            work.notes.push_back(path + ": the replay starts from " + save.scene.path +
                                 ", because " + content.base.source + " is missing or has changed");
        nlohmann::json setup = nlohmann::json::object();
        for (const char* field :
             {"preferences", "testMode", "memoryLimit", "undoBudget", "renderers"})
            if (content.base.setup.contains(field)) setup[field] = content.base.setup.at(field);
        setup["scene"] = save.scene.path;
        content.base.setup = std::move(setup);
        content.base.carried = save.carried;
        return save.stepsBefore;
    }

    /// Checks the steps as one script and changes old field names to the current ones.
    /// \return the script.
    nlohmann::json CheckSteps(std::size_t first) {
        nlohmann::json script = content.base.setup;
        script["steps"] = nlohmann::json::array();
        for (const nlohmann::json& carried : content.base.carried)
            script["steps"].push_back(carried);
        for (std::size_t i = first; i < content.steps.size(); ++i)
            if (!content.steps[i].step.is_null()) script["steps"].push_back(content.steps[i].step);
        script = ParseStrokeScript(script.dump(), path);
        auto checked = script.at("steps").begin();
        for (nlohmann::json& carried : content.base.carried) carried = *checked++;
        for (std::size_t i = first; i < content.steps.size(); ++i)
            if (!content.steps[i].step.is_null()) content.steps[i].step = *checked++;
        return script;
    }

    /// Repeats the effects of a cancelled stroke without dabs: it was counted, and it ended the
    /// open stroke.
    void SkipCancelled() {
        if (!step->step.contains("stroke")) return;
        Document& document = work.runner->GetDocument();
        if (!step->step.at("stroke").value("continue", false)) ++document.Settings().strokesBegun;
        document.Loop().Break();
    }

    void RedoStep(std::size_t number) {
        if (step->cancelled && step->dabs == 0) {
            SkipCancelled();
            return;
        }
        if (!step->isOver && step->dabs == 0) {
            work.notes.push_back(path + ": the last step, \"" + Name(*step) +
                                 "\", was not finished and is skipped");
            return;
        }
        counter.count = 0;
        const bool isWhole = step->isOver && !step->cancelled;
        counter.limit = isWhole ? std::numeric_limits<uint32_t>::max() : step->dabs;
        bool failed = false;
        try {
            work.runner->Do(step->step, number);
        } catch (const EndOfJournal&) {
            if (!step->cancelled)
                work.notes.push_back(path +
                                     ": the last stroke ends after its last complete dab, number " +
                                     std::to_string(step->dabs));
        } catch (const HostError& error) {
            if (!step->failed) Fail("byte " + std::to_string(step->byte) + ": " + error.what());
            failed = true;
        }
        counter.limit = std::numeric_limits<uint32_t>::max();
        Compare(failed);
        ++work.steps;
        work.dabs += counter.count;
    }

    void Compare(bool failed) const {
        const bool alike = step->isOver ? failed == step->failed && counter.count == step->dabs
                                        : counter.count == step->dabs;
        if (alike) return;
        Fail("byte " + std::to_string(step->byte) + ": the step \"" + Name(*step) + "\" made " +
             std::to_string(counter.count) + " dabs, but the journal has " +
             std::to_string(step->dabs) +
             "; this program's results differ from those of the program that recorded it (" +
             content.base.program + ")");
    }

    void RedoStroke() {
        counter.count = 0;
        Document& document = work.runner->GetDocument();
        try {
            if (step->start) {
                document.Settings().strokesBegun = step->start->strokesBegun;
                document.Geometry().History().SetNextLabel(step->label);
                BeginLoop(document,
                          static_cast<BrushOperation::Modifier>(step->start->modifier),
                          step->start->seed);
            }
            for (const StrokeCall& call : step->calls) Repeat(document, call);
            if (step->endsStroke) RepeatEnd(document);
        } catch (const HostError& error) {
            Fail("byte " + std::to_string(step->byte) + ": " + error.what());
        } catch (Error* error) {
            const std::string reason = error->Message().toStdString();
            Error::Dispose(error);
            Fail("byte " + std::to_string(step->byte) + ": " + reason);
        }
        ++work.steps;
        work.dabs += counter.count;
    }

    void RepeatEnd(Document& document) const {
        StrokeLoop& loop = document.Loop();
        if (!step->failed) {
            loop.End([this] { ThrowIfCancelled(); });
            return;
        }
        // The original end of the stroke may have failed for a reason that does not recur.
        try {
            loop.Break();
        } catch (const HostError&) {
        } catch (Error* error) {
            Error::Dispose(error);
        }
    }

    void Repeat(Document& document, const StrokeCall& call) {
        if (!document.Loop().IsActive()) Fail("a stroke in the journal has no beginning");
        if (call.kind == RecordKind::StrokeRevert) {
            document.Loop().RevertStroke();
        } else if (call.kind == RecordKind::StrokeWhole) {
            document.Loop().WholeMesh(call.whole.strength, call.whole.byFacing != 0);
        } else {
            RepeatDab(document, call.dab);
        }
    }

    void RepeatDab(Document& document, const StrokeInput& input) {
        LevelMesh& mesh = *document.Geometry().Bound();
        if (input.face >= mesh.faceCount)
            Fail("a dab in the journal refers to face " + std::to_string(input.face) +
                 ", but the mesh has only " + std::to_string(mesh.faceCount));
        const auto vector = [](const std::array<float, 3>& v) { return Vector(v[0], v[1], v[2]); };
        StrokeDab dab;
        dab.hit = SurfacePoint(&mesh, 0, input.face);
        dab.hit.position = vector(input.hitPosition);
        dab.hit.normal = vector(input.hitNormal);
        dab.position = vector(input.position);
        dab.heading = vector(input.heading);
        dab.stampTop = vector(input.stampTop);
        dab.size = input.size;
        dab.pressure = input.pressure;
        dab.strength = input.strength;
        dab.keepPosition = (input.flags & StrokeInput::keepsPosition) != 0;
        if ((input.flags & StrokeInput::failed) == 0) {
            document.Loop().Dab(dab);
            return;
        }
        try {
            document.Loop().Dab(dab);
        } catch (const HostError&) {
            return;
        } catch (Error* error) {
            Error::Dispose(error);
            return;
        }
        Fail("a dab that failed when it was recorded has now succeeded");
    }

    const std::string& path;
    RecoveredWork& work;
    JournalContent& content;
    const RecoveryOptions& options;
    DabCounter counter;
    bool isListening = false;
    const JournalStep* step = nullptr;
};

}  // namespace

RecoveredWork RedoJournal(const std::string& journalPath, const RecoveryOptions& options) {
    RecoveredWork work;
    work.content = ReadJournal(journalPath, options.untilDamage);
    work.notes = work.content.notes;
    Redo(journalPath, work, options).Run();
    return work;
}

RecoveredWork RecoverJournal(const std::string& journalPath,
                             const std::string& scenePath,
                             const RecoveryOptions& options) {
    CheckWritable(scenePath);
    RecoveredWork work = RedoJournal(journalPath, options);
    work.runner->Save(scenePath);
    return work;
}

}  // namespace trovik
