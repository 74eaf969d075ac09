// SPDX-License-Identifier: Apache-2.0
#include "python/core/Session.h"

#include "framework/errors/Cancelled.h"
#include "framework/history/TopologyStep.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PlainText.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptDocument.h"
#include "python/core/CancelledStep.h"
#include "python/core/Errors.h"
#include "python/core/JsonOf.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace trovik::python {

namespace {

/// Adds the engine's messages to a list for the duration of a command.
class Listening {
public:
    explicit Listening(Sculpture& sculpture)
        : messages([&sculpture](const std::string& text) {
              sculpture.messages.push_back(PlainText(QString::fromStdString(text)));
          }) {}

private:
    HUDListening messages;
};

nlohmann::json SetupOf(py::handle fields) {
    nlohmann::json setup = JsonOf(fields);
    setup["steps"] = nlohmann::json::array();
    return setup;
}

}  // namespace

Sculpture::~Sculpture() {
    if (isOpen) Document().RemoveObserver(events);
}

std::shared_ptr<Sculpture> Session::NewSculpture() {
    // A document may only be destroyed while no thread uses the engine.
    std::shared_ptr<Sculpture> opened;
    opened.reset(new Sculpture, [](Sculpture* sculpture) {
        EngineUse::Retire(std::shared_ptr<void>(std::unique_ptr<Sculpture>(sculpture)));
    });
    ScriptProgress progress;
    progress.job = &opened->job;
    progress.dab = [job = &opened->job] { job->NoteDab(); };
    progress.message = [target = opened.get()](const std::string& text) {
        target->messages.push_back(text);
    };
    opened->runner = std::make_unique<ScriptRunner>(stepName, ".", progress);
    // The calling program chooses the files, so paths are not restricted.
    opened->runner->AllowOutside(true);
    return opened;
}

template <typename Work>
void Session::Run(Sculpture& sculpture, py::handle progress, const Work& work) {
    PythonJob::Scope scope(sculpture.job, progress);
    try {
        InEngine([&] {
            const Listening listening(sculpture);
            work();
        });
    } catch (const Cancelled&) {
        scope.ThrowCause();
        throw;
    }
}

template <typename Work>
void Session::RunCall(py::handle progress, const Work& work) {
    const Call call(*this);
    Run(*sculpture, progress, work);
}

Session::Session(std::shared_ptr<Sculpture> opened) : sculpture(std::move(opened)) {
    sculpture->Document().AddObserver(sculpture->events);
    sculpture->isOpen = true;
}

std::unique_ptr<Session> Session::Open(py::handle setup,
                                       const std::string& journal,
                                       bool syncsJournal,
                                       py::handle progress) {
    if (EngineUse::IsOnThisThread())
        Raise("BusyError", "a document cannot be opened from a progress callback");
    const nlohmann::json script = ParseStrokeScript(SetupOf(setup).dump(), stepName);
    std::shared_ptr<Sculpture> opened = NewSculpture();
    if (!journal.empty())
        opened->runner->SetJournal(
            {.path = journal, .syncSteps = syncsJournal, .isInteractive = true});
    Run(*opened, progress, [&] { opened->runner->Open(script); });
    return std::unique_ptr<Session>(new Session(std::move(opened)));
}

std::unique_ptr<Session> Session::New(
    const std::string& name,
    const py::array_t<float, py::array::c_style | py::array::forcecast>& positions,
    const py::array_t<uint32_t, py::array::c_style | py::array::forcecast>& faceSizes,
    const py::array_t<uint32_t, py::array::c_style | py::array::forcecast>& faceVertices,
    py::handle setup,
    py::handle progress) {
    if (EngineUse::IsOnThisThread())
        Raise("BusyError", "a document cannot be created in a progress callback");
    const nlohmann::json script = ParseStrokeScript(SetupOf(setup).dump(), stepName);
    PolygonMesh polygons;
    polygons.name = name;
    const auto points = positions.unchecked<2>();
    for (py::ssize_t i = 0; i < points.shape(0); ++i)
        polygons.positions.push_back({points(i, 0), points(i, 1), points(i, 2)});
    polygons.faceSizes.assign(faceSizes.data(), faceSizes.data() + faceSizes.size());
    polygons.faceVertices.assign(faceVertices.data(), faceVertices.data() + faceVertices.size());
    std::shared_ptr<Sculpture> opened = NewSculpture();
    Run(*opened, progress, [&] {
        CheckPolygonMesh(polygons, name, &opened->job);
        opened->runner->Open(name, std::move(polygons), script);
    });
    return std::unique_ptr<Session>(new Session(std::move(opened)));
}

Sculpture& Session::Use() {
    if (IsClosed()) Raise("ClosedError", "the document is closed");
    if (owner != std::this_thread::get_id())
        Raise("ThreadError",
              "the document belongs to another thread; call move_to_this_thread() first, while no "
              "other thread uses it");
    if (EngineUse::IsOnThisThread())
        Raise("BusyError", "a document cannot be used in a progress callback");
    if (calls != 0) Raise("BusyError", "the document is in use by another call");
    return *sculpture;
}

void Session::MoveToThread() {
    if (IsClosed()) Raise("ClosedError", "the document is closed");
    if (EngineUse::IsOnThisThread())
        Raise("BusyError", "a document cannot be used in a progress callback");
    if (calls != 0)
        Raise("ThreadError", "the document cannot be moved while another thread uses it");
    const Call call(*this);
    InEngine([&] { sculpture->Document().SetOwnerThread(); });
    owner = std::this_thread::get_id();
}

void Session::RefuseViews(const std::string& work) const {
    if (views == 0) return;
    throw py::buffer_error("cannot " + work + " while " + std::to_string(views) +
                           (views == 1 ? " view" : " views") +
                           " of the positions exist; delete them or use copies");
}

bool Session::RefinesMesh() const {
    return sculpture->Document().Settings().detail.IsOn() &&
           sculpture->Geometry().WhyTopologyIsFixed().empty();
}

void Session::RequireNoViews(const nlohmann::json& step) {
    if (views == 0 || !step.is_object()) return;
    for (const char* name : {"subdivide",
                             "unsubdivide",
                             "deleteLevels",
                             "reset",
                             "decimate",
                             "remesh",
                             "repair",
                             "voxelRemesh",
                             "quadrangulate",
                             "append",
                             "extract"})
        if (step.contains(name)) RefuseViews(std::string("run \"") + name + "\"");
    if (step.contains("level") && step.at("level") != sculpture->Geometry().BoundIndex())
        RefuseViews("change the level");
    if (step.contains("stroke") && RefinesMesh()) RefuseViews("run a stroke with detail");
    for (const char* name : {"undo", "redo"}) {
        if (!step.contains(name) || !step.at(name).is_number_integer()) continue;
        const auto count = std::max<int64_t>(step.at(name).get<int64_t>(), 0);
        if (ChangesTopology(
                sculpture->Geometry().History(), static_cast<std::size_t>(count), name[0] == 'r'))
            RefuseViews(std::string(name) + " a change of the topology");
    }
}

std::vector<std::string> Session::Do(py::handle given, py::handle progress) {
    // The conversion can run Python code, which may close the document.
    const nlohmann::json step = JsonOf(given);
    Sculpture& used = Use();
    RequireNoViews(step);
    [[maybe_unused]] const Vertex* before = used.Geometry().Bound()->vertices.array;
    CommandRunner& runner = used.runner->Runner();
    RunCall(progress, [&] { UndoIfCancelled(used, [&] { runner.Do(step); }); });
    assert(views == 0 || before == used.Geometry().Bound()->vertices.array);
    return runner.Context().warnings;
}

std::vector<std::string> Session::TakeMessages() {
    return std::exchange(Use().messages, std::vector<std::string>());
}

void Session::EndWork(bool endsJournal) {
    Sculpture& used = Use();
    RunCall(py::none(), [&] {
        used.stroke.reset();
        if (endsJournal) used.runner->Close();
    });
}

void Session::Close(bool endsJournal) {
    if (IsClosed()) return;
    Use();
    RefuseViews("close the document");
    EndWork(endsJournal);
    sculpture.reset();
}

void Session::Leave(bool endsJournal) {
    if (IsClosed()) return;
    EndWork(endsJournal);
    isLeft = true;
    if (views == 0) sculpture.reset();
}

void Session::RemoveView() {
    if (--views == 0 && isLeft) sculpture.reset();
}

void Session::BeginStroke(const PenStrokeOptions& options, py::handle progress) {
    Sculpture& used = Use();
    if (RefinesMesh()) RefuseViews("begin a stroke with detail");
    RunCall(progress, [&] {
        PenStrokeOptions polled = options;
        polled.progress = [&used] { used.job.NoteDab(); };
        polled.poll =
            polled.mirrorPoll = [&used] { ReportOrThrow(&used.job, 0, 0, "Applying dabs"); };
        // Throws if a stroke is open.
        used.Document().RequireNoStroke("begin another stroke");
        used.stroke.emplace(used.Document(), polled);
    });
}

DocumentStroke& Session::OpenStroke() {
    Sculpture& used = Use();
    if (RefinesMesh()) RefuseViews("continue a stroke with detail");
    if (!used.stroke) Raise("Error", "the stroke is over");
    return *used.stroke;
}

void Session::AddSamples(py::handle given, py::handle progress) {
    const nlohmann::json list = JsonOf(given);
    Sculpture& used = Use();
    DocumentStroke& stroke = OpenStroke();
    RunCall(progress, [&] {
        const std::vector<PathSample> samples = PenSamples(FieldReader(list, stepName, ""));
        UndoIfCancelled(used, [&] { stroke.Add(samples); });
    });
}

void Session::Tick(double milliseconds) {
    DocumentStroke& stroke = OpenStroke();
    RunCall(py::none(), [&] { stroke.Tick(milliseconds / 1000.0); });
}

void Session::EndStroke(bool abandon, py::handle progress) {
    Sculpture& used = Use();
    if (!used.stroke) return;
    RunCall(progress, [&] {
        UndoIfCancelled(used, [&] {
            if (abandon)
                used.stroke->Abandon();
            else
                used.stroke->Release();
        });
        used.stroke.reset();
    });
}

}  // namespace trovik::python
