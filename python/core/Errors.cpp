// SPDX-License-Identifier: Apache-2.0
#include "python/core/Errors.h"

#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "host/Error.h"

#include <exception>
#include <pybind11/pybind11.h>

namespace trovik::python {

namespace py = pybind11;

namespace {

void Set(const char* type, const std::string& message) {
    const py::object kind = py::module_::import("trovik._errors").attr(type);
    PyErr_SetObject(kind.ptr(), kind(message).ptr());
}

// The type that pybind11 requires.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void Translate(std::exception_ptr exception) {
    try {
        if (exception) std::rethrow_exception(exception);
    } catch (const HostError& error) {
        Set("Error", error.what());
    } catch (const Cancelled& error) {
        Set("Cancelled", error.what());
    } catch (Error* error) {
        const std::string message = error->Message().toStdString();
        Error::Dispose(error);
        Set("Error", message);
    }
}

}  // namespace

void Raise(const char* type, const std::string& message) {
    Set(type, message);
    throw py::error_already_set();
}

void RegisterErrors() { py::register_exception_translator(&Translate); }

}  // namespace trovik::python
