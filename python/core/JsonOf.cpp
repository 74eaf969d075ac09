// SPDX-License-Identifier: Apache-2.0
#include "python/core/JsonOf.h"

#include <cmath>
#include <pybind11/numpy.h>
#include <string>

namespace trovik::python {

namespace py = pybind11;
using nlohmann::json;

namespace {

json Convert(py::handle value, const std::string& pointer);

std::string Item(const std::string& pointer, py::ssize_t index) {
    return pointer + "/" + std::to_string(index);
}

std::string Where(const std::string& pointer) { return (pointer.empty() ? "/" : pointer) + ": "; }

json OfFloat(double number, const std::string& pointer) {
    if (!std::isfinite(number)) throw py::value_error(Where(pointer) + "the number is not finite");
    return number;
}

json OfInteger(py::handle value, const std::string& pointer) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow == 0) return number;
    const unsigned long long large = PyLong_AsUnsignedLongLong(value.ptr());
    if (PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        throw py::value_error(Where(pointer) + "the integer has more than 64 bits");
    }
    return large;
}

template <typename Number, typename Make>
json OfArray(const py::array_t<Number, py::array::c_style | py::array::forcecast>& array,
             py::ssize_t axis,
             const Number*& next,
             const std::string& pointer,
             const Make& make) {
    json list = json::array();
    for (py::ssize_t i = 0; i < array.shape(axis); ++i) {
        if (axis + 1 < array.ndim())
            list.push_back(OfArray(array, axis + 1, next, Item(pointer, i), make));
        else
            list.push_back(make(*next++, pointer, i));
    }
    return list;
}

json OfNumpy(const py::array& array, const std::string& pointer) {
    const char kind = array.dtype().kind();
    if (array.ndim() == 0) return Convert(array.attr("item")(), pointer);
    if (kind == 'f') {
        const py::array_t<double, py::array::c_style | py::array::forcecast> numbers(array);
        const double* next = numbers.data();
        return OfArray(
            numbers, 0, next, pointer, [](double one, const std::string& at, py::ssize_t i) {
                // The pointer text is only needed for an error.
                return std::isfinite(one) ? json(one) : OfFloat(one, Item(at, i));
            });
    }
    if (kind == 'i' || (kind == 'u' && array.itemsize() < 8)) {
        const py::array_t<std::int64_t, py::array::c_style | py::array::forcecast> numbers(array);
        const std::int64_t* next = numbers.data();
        return OfArray(
            numbers, 0, next, pointer, [](std::int64_t one, const std::string&, py::ssize_t) {
                return json(one);
            });
    }
    return Convert(array.attr("tolist")(), pointer);
}

json OfDictionary(const py::dict& fields, const std::string& pointer) {
    json object = json::object();
    const std::string start = pointer + "/";
    for (const auto& [key, field] : fields) {
        if (!py::isinstance<py::str>(key))
            throw py::type_error(Where(pointer) + "the names of fields must be strings");
        const auto name = key.cast<std::string>();
        object[name] = Convert(field, start + name);
    }
    return object;
}

/// Refuses values that contain themselves.
struct Nesting {
    Nesting() {
        if (Py_EnterRecursiveCall(" while converting a step") != 0) throw py::error_already_set();
    }
    ~Nesting() { Py_LeaveRecursiveCall(); }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
};

json Convert(py::handle value, const std::string& pointer) {
    const Nesting nesting;
    if (value.is_none()) return nullptr;
    if (py::isinstance<py::bool_>(value)) return value.cast<bool>();
    if (py::isinstance<py::int_>(value)) return OfInteger(value, pointer);
    if (py::isinstance<py::float_>(value)) return OfFloat(value.cast<double>(), pointer);
    if (py::isinstance<py::str>(value)) return value.cast<std::string>();
    if (py::isinstance<py::dict>(value))
        return OfDictionary(py::reinterpret_borrow<py::dict>(value), pointer);
    if (py::isinstance<py::array>(value))
        return OfNumpy(py::reinterpret_borrow<py::array>(value), pointer);
    if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) {
        json list = json::array();
        py::ssize_t index = 0;
        for (const py::handle one : value) list.push_back(Convert(one, Item(pointer, index++)));
        return list;
    }
    if (py::hasattr(value, "__fspath__"))
        return py::module_::import("os").attr("fspath")(value).cast<std::string>();
    // A NumPy scalar.
    if (py::hasattr(value, "item") && py::hasattr(value, "ndim"))
        return Convert(value.attr("item")(), pointer);
    throw py::type_error(Where(pointer) + "a value of type " +
                         std::string(Py_TYPE(value.ptr())->tp_name) +
                         " cannot be a field of a step");
}

}  // namespace

json JsonOf(py::handle value) { return Convert(value, ""); }

}  // namespace trovik::python
