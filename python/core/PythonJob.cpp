// SPDX-License-Identifier: Apache-2.0
#include "python/core/PythonJob.h"

namespace trovik::python {

namespace py = pybind11;

namespace {

/// Whether the value is False, as a Python or a NumPy Boolean. Comparisons of array elements return
/// NumPy Booleans.
bool IsFalse(const py::object& value) {
    if (value.is(py::bool_(false))) return true;
    if (value.is_none() || value.is(py::bool_(true))) return false;
    const py::object numpyBool = py::module_::import("numpy").attr("bool_");
    return py::isinstance(value, numpyBool) && !value.cast<bool>();
}

}  // namespace

PythonJob::Scope::Scope(PythonJob& reportedTo, py::handle progress) : job(reportedTo) {
    job.progress = progress;
    job.cause.reset();
    job.isCancelled = false;
    job.dabs = 0;
    job.lastCall = Clock::now();
}

PythonJob::Scope::~Scope() {
    job.progress = py::handle();
    job.cause.reset();
}

void PythonJob::Scope::ThrowCause() {
    if (!job.cause) return;
    py::error_already_set error = std::move(*job.cause);
    job.cause.reset();
    throw error;
}

// Acquiring the GIL can take milliseconds while other threads run Python code. Reports without a
// total are made for each dab, so they are passed on only at intervals.
bool PythonJob::Report(uint64_t done, uint64_t total, const char*) {
    if (isMuted) return true;
    if (isCancelled) return false;
    const Clock::time_point now = Clock::now();
    const bool isPoll = total == 0 && done == 0;
    if (isPoll && now - lastCall < Pace().interval) return true;
    lastCall = now;
    isCancelled = !(isPoll ? CallPython(dabs, 0) : CallPython(done, total));
    return !isCancelled;
}

bool PythonJob::CallPython(uint64_t done, uint64_t total) {
    const py::gil_scoped_acquire acquired;
    try {
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (!progress || progress.is_none()) return true;
        return !IsFalse(progress(done, total));
    } catch (py::error_already_set& error) {
        cause.emplace(std::move(error));
        return false;
    }
}

}  // namespace trovik::python
