// SPDX-License-Identifier: Apache-2.0

/// \file The extension module `trovik._core`: a low-level interface to documents. The Python files
/// of the package add names, defaults and docstrings.
#include "framework/errors/Cancelled.h"
#include "framework/images/ImageFile.h"
#include "framework/script/JournalRecovery.h"
#include "python/core/Errors.h"
#include "python/core/SessionArrays.h"

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

namespace trovik::python {

namespace {

using FloatArray = py::array_t<float, py::array::c_style | py::array::forcecast>;

void BeginStroke(Session& session,
                 const std::string& modifier,
                 std::optional<uint64_t> seed,
                 bool filters,
                 bool interactive,
                 py::handle progress) {
    PenStrokeOptions options = interactive ? PenStrokeOptions::Interactive() : PenStrokeOptions();
    if (modifier == "smooth")
        options.modifier = BrushOperation::ModifierSmooth;
    else if (modifier == "invert")
        options.modifier = BrushOperation::ModifierInvert;
    else if (modifier != "none")
        throw py::value_error("modifier: expected \"none\", \"smooth\" or \"invert\", got \"" +
                              modifier + "\"");
    options.seed = seed;
    options.isFiltered = filters;
    session.BeginStroke(options, progress);
}

py::list TakeEvents(Session& session) {
    using namespace py::literals;
    const EventQueue::Events events = session.TakeEvents();
    py::list list;
    for (const auto& [key, surface] : events.surface) {
        const auto& [level, what, patchLevel] = key;
        const std::vector<uint32_t> patches(surface.patches.begin(), surface.patches.end());
        list.append(py::make_tuple(
            "surface",
            py::dict("level"_a = level,
                     "what"_a = what,
                     "patch_level"_a = patchLevel,
                     "patches"_a = surface.all ? py::object(py::none())
                                               : py::object(py::array_t<uint32_t>(
                                                     static_cast<py::ssize_t>(patches.size()),
                                                     patches.data())))));
    }
    for (const std::string& name : events.names) {
        if (name == "modified")
            list.append(py::make_tuple(name, events.modified));
        else if (name == "problem")
            for (const std::string& problem : events.problems)
                list.append(py::make_tuple(name, problem));
        else
            list.append(py::make_tuple(name, py::none()));
    }
    return list;
}

void WriteStamp(const std::string& path, const FloatArray& pixels) {
    FloatImage image;
    image.height = static_cast<uint32_t>(pixels.shape(0));
    image.width = static_cast<uint32_t>(pixels.shape(1));
    image.channels = pixels.ndim() == 3 ? static_cast<uint32_t>(pixels.shape(2)) : 1;
    image.pixels.assign(pixels.data(), pixels.data() + pixels.size());
    const py::gil_scoped_release released;
    WriteFloatImageFile(path, image);
}

/// Runs a function that creates its own documents.
template <typename Work>
auto RunWork(py::handle progress, const Work& work) {
    if (EngineUse::IsOnThisThread())
        Raise("BusyError", "scripts and journals cannot be run in a progress callback");
    PythonJob job;
    PythonJob::Scope scope(job, progress);
    ScriptProgress listener;
    listener.job = &job;
    listener.dab = [&job] { job.NoteDab(); };
    try {
        return InEngine([&] { return work(listener); });
    } catch (const Cancelled&) {
        scope.ThrowCause();
        throw;
    }
}

py::dict RunScript(const std::string& script,
                   const std::string& output,
                   const std::string& trace,
                   unsigned traceEvery,
                   bool allowOutside,
                   py::handle progress) {
    using namespace py::literals;
    std::vector<std::string> warnings;
    const ScriptResult result = RunWork(progress, [&](ScriptProgress listener) {
        listener.warning = [&warnings](const std::string& text) { warnings.push_back(text); };
        ScriptRunner runner(script, output, std::move(listener));
        runner.AllowOutside(allowOutside);
        if (!trace.empty()) runner.SetTrace({trace, traceEvery});
        return runner.Run();
    });
    return py::dict("files"_a = result.files,
                    "dabs"_a = result.totals.dabs,
                    "vertices_moved"_a = result.totals.verticesMoved,
                    "vertices"_a = result.vertices,
                    "faces"_a = result.faces,
                    "levels"_a = result.levels,
                    "warnings"_a = warnings);
}

void Recover(const std::string& journal, const std::string& scene, py::handle progress) {
    RunWork(progress, [&](const ScriptProgress& listener) {
        RecoveryOptions options;
        options.progress = listener;
        // The recovered document is destroyed while this thread still uses the engine.
        RecoverJournal(journal, scene, options);
    });
}

void DefineSession(py::module_& module) {
    py::class_<Session>(module, "Session")
        .def_static("open", &Session::Open)
        .def_static("new", &Session::New)
        .def("do", &Session::Do)
        .def("close", &Session::Close)
        .def("move_to_this_thread", &Session::MoveToThread)
        .def("collect_events", &Session::CollectEvents)
        .def("take_events", &TakeEvents)
        .def("take_messages", &Session::TakeMessages)
        .def_property_readonly("closed", &Session::IsClosed)
        .def_property_readonly("written", &Session::Written)
        .def_property_readonly("views", &Session::Views)
        .def("leave", &Session::Leave)
        .def("begin_stroke", &BeginStroke)
        .def("add_samples", &Session::AddSamples)
        .def("tick", &Session::Tick)
        .def("end_stroke", &Session::EndStroke)
        .def_property_readonly("is_stroke_over", &Session::IsStrokeOver)
        .def("positions", &Positions)
        .def("normals", &Normals)
        .def("faces", &Faces)
        .def("uvs", &Uvs)
        .def("colors", &Colors)
        .def("mask", &Mask)
        .def("hidden_faces", &HiddenFaces)
        .def("layer_offsets", &LayerOffsets)
        .def("local_to_world", &LocalToWorld)
        .def("pick", &Pick)
        .def("nearest", &Nearest)
        .def("state", &StateOf);
}

PYBIND11_MODULE(_core, module) {
    module.doc() = "Documents of the Trovik host library.";
    RegisterErrors();
    const py::class_<ViewOwner> viewOwner(module, "_ViewOwner");
    DefineSession(module);
    module.def("write_stamp", &WriteStamp);
    module.def("run_script", &RunScript);
    module.def("recover", &Recover);
}

}  // namespace

}  // namespace trovik::python
