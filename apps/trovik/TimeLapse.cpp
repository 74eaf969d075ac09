// SPDX-License-Identifier: Apache-2.0
#include "TimeLapse.h"

#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "framework/errors/HostError.h"
#include "framework/math/SameBits.h"
#include "framework/render/RenderFile.h"
#include "framework/render/RenderedLevel.h"
#include "framework/script/JournalRecovery.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <optional>

namespace trovik {

namespace {

/// Detects whether the surface looks different after a step.
class SurfaceWatch final : public DocumentObserver {
public:
    void SurfaceChanged(const SurfaceChange& change) override {
        hasChanged = hasChanged || change.all || !change.patches.empty();
    }
    void LevelsChanged() override { hasChanged = true; }

    /// Returns whether the surface has changed since the last call. The first call starts to
    /// observe the document, which must not be used after this object is destroyed.
    bool Take(Document& document) {
        const Matrix& now = document.Geometry().Transform().ToWorld();
        if (!transform) document.AddObserver(*this);
        // Observers are not notified of transforms.
        const bool isDifferent = hasChanged || (transform && !SameBits(*transform, now));
        transform = now;
        hasChanged = false;
        return isDifferent;
    }

private:
    bool hasChanged = false;
    std::optional<Matrix> transform;
};

/// Replays a journal.
/// \param visit  receives the number of changes of the surface so far, from 0, and the document;
/// called once for each number.
/// \return the work in its final state.
RecoveredWork Replay(const std::string& journal,
                     bool untilDamage,
                     const ScriptProgress& progress,
                     SurfaceWatch& watch,
                     const std::function<void(std::size_t, Document&)>& visit) {
    std::size_t changes = 0;
    bool isFirst = true;
    RecoveryOptions options;
    options.untilDamage = untilDamage;
    options.fromStart = true;
    options.progress = progress;
    options.afterStep = [&](Document& document) {
        const bool hasChanged = watch.Take(document);
        if (!isFirst && !hasChanged) return;
        if (!isFirst) ++changes;
        isFirst = false;
        visit(changes, document);
    };
    return RedoJournal(journal, options);
}

/// What the first replay determines.
struct Survey {
    std::size_t changes = 0;
    RenderCamera camera;
    std::vector<std::string> notes;
};

RenderCamera CameraOf(const TimeLapseArguments& wanted, Document& document) {
    const RenderedLevel level(document.Geometry(), wanted.options.shading);
    // As in RenderFrames, vertices out of range are reported as such.
    const RenderScene checked({level.Mesh()});
    return CameraFor(wanted, 1, level.Mesh(), wanted.fit == "view" ? &document.View() : nullptr);
}

Survey SurveyOf(const TimeLapseArguments& wanted,
                const std::string& journal,
                bool untilDamage,
                ProgressLine& line) {
    Survey survey;
    ScriptProgress progress;
    progress.job = &line;
    progress.step = [&line](std::size_t done, std::size_t count, const std::string& what) {
        line.Step(done, count, what);
    };
    SurfaceWatch watch;
    const RecoveredWork work =
        Replay(journal, untilDamage, progress, watch, [&](std::size_t changes, Document& document) {
            survey.changes = changes;
            if (changes == 0 && wanted.fit == "first") survey.camera = CameraOf(wanted, document);
        });
    line.Finish();
    if (survey.changes == 0)
        throw HostError(journal + ": none of the " + std::to_string(work.content.steps.size()) +
                        " steps changes the surface");
    if (wanted.fit != "first") survey.camera = CameraOf(wanted, work.runner->GetDocument());
    survey.notes = work.notes;
    return survey;
}

/// Returns the numbers of changes after which a frame is rendered, in ascending order.
std::vector<std::size_t> FrameStates(const TimeLapseArguments& wanted, std::size_t changes) {
    std::vector<std::size_t> states;
    if (wanted.count == 0) {
        for (std::size_t i = 0; i < changes; i += wanted.every) states.push_back(i);
        states.push_back(changes);
        return states;
    }
    const std::size_t steps = std::min(wanted.count - 1, changes);
    for (std::size_t i = 0; i <= steps; ++i) states.push_back((i * changes + steps / 2) / steps);
    return states;
}

void CheckHasSteps(const std::string& journal, const JournalContent& content) {
    if (!content.steps.empty()) return;
    throw HostError(journal + ": the journal has no steps" +
                    (content.past.empty()
                         ? std::string()
                         : " since " + content.base.source + " was saved; it only lists the " +
                               std::to_string(content.past.size()) + " steps before"));
}

/// Returns the notes of the journal and of the replay, without repetitions.
std::vector<std::string> AllNotes(const JournalContent& content, const Survey& survey) {
    std::vector<std::string> notes = content.notes;
    for (const std::string& note : survey.notes)
        if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(note);
    return notes;
}

}  // namespace

void AddTimeLapseArguments(CLI::App& command, TimeLapseArguments& arguments) {
    CLI::Option* frames = command.add_option("--frames",
                                             arguments.destination,
                                             "Writes a time lapse instead of the list, to a folder "
                                             "or a video (images frame_0001.png and "
                                             "so on, or *.mp4, which requires the program ffmpeg)");
    CLI::Option* every =
        command
            .add_option("--every",
                        arguments.every,
                        "Renders a frame for every N steps that change the surface (default 1)")
            ->check(CLI::PositiveNumber)
            ->type_name("N");
    CLI::Option* count =
        command
            .add_option("--count", arguments.count, "Distributes N frames evenly over these steps")
            ->check(CLI::Range(2, maxFrames))
            ->excludes(every);
    CLI::Option* fit =
        command
            .add_option("--fit",
                        arguments.fit,
                        "Surface that the camera frames (default: final); view uses the camera at "
                        "the end of the work")
            ->check(CLI::IsMember({"final", "first", "view"}));
    std::vector<CLI::Option*> dependent = AddFrameSequenceArguments(command, arguments);
    dependent.insert(dependent.end(), {every, count, fit});
    for (CLI::Option* option : AddCameraAndPictureArguments(command, arguments))
        dependent.push_back(option);
    for (CLI::Option* option : dependent) option->needs(frames);
}

void WriteTimeLapse(const TimeLapseArguments& given,
                    const std::string& file,
                    const std::string& journal,
                    const JournalContent& content,
                    bool untilDamage) {
    TimeLapseArguments wanted = given;
    wanted.options = PictureOptionsOf(given);
    CheckCameraArguments(wanted);
    ProgressLine line(wanted.quiet);
    FrameSequence sequence(wanted, wanted.options, "a time lapse");
    CheckHasSteps(journal, content);
    const Survey survey = SurveyOf(wanted, journal, untilDamage, line);
    CheckRenderCamera(wanted, survey.camera);
    const std::vector<std::string> notes = AllNotes(content, survey);
    for (const std::string& note : notes) line.Message(note);
    const std::vector<std::size_t> states = FrameStates(wanted, survey.changes);
    if (states.size() > maxFrames)
        throw HostError(journal + ": " + std::to_string(states.size()) +
                        " frames are more than the maximum of " + std::to_string(maxFrames) +
                        "; use --every or --count");

    const std::vector<std::string> names = sequence.FrameNames(states.size());
    std::size_t frame = 0;
    ScriptProgress progress;
    progress.job = &line;
    SurfaceWatch watch;
    Replay(journal, untilDamage, progress, watch, [&](std::size_t changes, Document& document) {
        if (frame == states.size() || changes != states[frame]) return;
        ThrowIfInterrupted();
        line.Step(frame, states.size(), names[frame]);
        const RenderedLevel level(document.Geometry(), wanted.options.shading);
        const RenderScene scene({level.Mesh()}, &line);
        const RenderImage picture = scene.Render(survey.camera, wanted.options, &line);
        ThrowIfInterrupted();
        sequence.Add(picture);
        ++frame;
    });
    line.Finish();
    sequence.Finish();
    if (wanted.json) {
        PrintJson(
            {{"file", file},
             {"destination", wanted.destination},
             {"files", sequence.Files()},
             {"frames", states.size()},
             {"framesPerSecond", wanted.framesPerSecond},
             {"changes", survey.changes},
             {"width", wanted.options.width},
             {"height", wanted.options.height},
             {"shading", ShadingModeNames()[static_cast<std::size_t>(wanted.options.shading)]},
             {"camera", CameraJson(survey.camera)},
             {"notes", notes}});
    } else if (!wanted.quiet) {
        sequence.PrintSummary();
    }
}

}  // namespace trovik
