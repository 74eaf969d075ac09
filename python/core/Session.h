// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentStroke.h"
#include "framework/script/ScriptRunner.h"
#include "python/core/EngineUse.h"
#include "python/core/EventQueue.h"
#include "python/core/PythonJob.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <pybind11/numpy.h>
#include <string>
#include <thread>
#include <vector>

namespace trovik::python {

namespace py = pybind11;

/// The name that messages give for the source of a step; the Python code removes it.
inline constexpr const char* stepName = "python";

/// A document and everything that refers to it. Contains no Python objects, so that it can be
/// destroyed without the GIL.
struct Sculpture {
    PythonJob job;
    EventQueue events;
    /// Messages of the engine since the last command, one line each.
    std::vector<std::string> messages;
    std::unique_ptr<ScriptRunner> runner;
    /// Whether the runner has a document, which `events` observes.
    bool isOpen = false;
    /// Destroyed first.
    std::optional<DocumentStroke> stroke;

    ~Sculpture();
    trovik::Document& Document() { return runner->GetDocument(); }
    LevelGeometry& Geometry() { return Document().Geometry(); }
};

/// A document in Python. All functions require the GIL; those that use the engine release it.
///
/// A document belongs to one thread, initially the one that opened it. Calls from other threads,
/// calls from a progress callback, and calls after Close throw and change nothing.
class Session {
public:
    /// Opens a mesh or scene. \param setup  a script without steps.
    static std::unique_ptr<Session> Open(py::handle setup,
                                         const std::string& journal,
                                         bool syncsJournal,
                                         py::handle progress);
    /// Creates a document from arrays. \param faceVertices  the vertices of all faces, face by
    /// face.
    static std::unique_ptr<Session> New(
        const std::string& name,
        const py::array_t<float, py::array::c_style | py::array::forcecast>& positions,
        const py::array_t<uint32_t, py::array::c_style | py::array::forcecast>& faceSizes,
        const py::array_t<uint32_t, py::array::c_style | py::array::forcecast>& faceVertices,
        py::handle setup,
        py::handle progress);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Runs one step of a stroke script. \return the warnings.
    std::vector<std::string> Do(py::handle step, py::handle progress);
    /// Ends an open stroke and destroys the document. Does nothing if the document is closed.
    /// \param endsJournal  whether to end the journal normally; otherwise, it can be recovered as
    /// after a crash.
    void Close(bool endsJournal);
    /// Does the same, but also while views exist: the document can no longer be used, and it is
    /// destroyed with the last view.
    void Leave(bool endsJournal);
    bool IsClosed() const { return sculpture == nullptr || isLeft; }
    void AddView() { ++views; }
    void RemoveView();
    /// Transfers the document to the calling thread.
    void MoveToThread();
    void CollectEvents(bool on) { Use().events.Collect(on); }
    EventQueue::Events TakeEvents() { return Use().events.Take(); }
    std::vector<std::string> TakeMessages();
    /// Files written so far.
    std::vector<std::string> Written() { return Use().runner->Runner().Context().written; }

    void BeginStroke(const PenStrokeOptions& options, py::handle progress);
    /// \param samples  as in the field "pen" of a stroke.
    void AddSamples(py::handle samples, py::handle progress);
    void Tick(double milliseconds);
    void EndStroke(bool abandon, py::handle progress);
    bool IsStrokeOver() { return !Use().stroke || Use().stroke->IsOver(); }

    /// A call that uses the document while the GIL is released. While it exists, other calls are
    /// refused, and the document is not destroyed. Construct and destroy it while holding the GIL.
    class Call {
    public:
        explicit Call(Session& calledSession) : session(calledSession), held(session.sculpture) {
            ++session.calls;
        }
        ~Call() { --session.calls; }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        Session& session;
        std::shared_ptr<Sculpture> held;
    };

    /// Returns the document, after checking that the call is permitted. Python code may close the
    /// document, so call this function again after running such code.
    Sculpture& Use();
    /// The number of existing views of the current level.
    std::size_t Views() const { return views; }

private:
    explicit Session(std::shared_ptr<Sculpture> opened);
    static std::shared_ptr<Sculpture> NewSculpture();
    /// Runs a function that may be cancelled. A cancelled stroke is undone.
    template <typename Work>
    static void Run(Sculpture& sculpture, py::handle progress, const Work& work);
    /// Does the same for this document, inside a Call.
    template <typename Work>
    void RunCall(py::handle progress, const Work& work);
    /// \throw BufferError "cannot WORK while N views of the positions exist" if there are any.
    void RefuseViews(const std::string& work) const;
    /// Ends an open stroke, and the journal if `endsJournal` is set.
    void EndWork(bool endsJournal);
    /// Whether strokes may change the topology.
    bool RefinesMesh() const;
    /// Calls RefuseViews if the step would invalidate views.
    void RequireNoViews(const nlohmann::json& step);
    /// \throw Error if there is no live stroke.
    DocumentStroke& OpenStroke();

    std::shared_ptr<Sculpture> sculpture;
    std::thread::id owner = std::this_thread::get_id();
    /// Changes only while the GIL is held.
    std::size_t views = 0;
    /// Number of Call objects. Changes only while the GIL is held.
    std::size_t calls = 0;
    bool isLeft = false;
};

}  // namespace trovik::python
