// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

#include <pybind11/pybind11.h>

namespace trovik::python {

/// Converts a Python value to JSON: None, bool, int, float, str, os.PathLike, lists, tuples,
/// dictionaries with string keys, NumPy scalars and arrays of numbers. Numbers keep their value, so
/// a script with the same numbers gives the same step.
/// \throw TypeError for other types, ValueError for numbers that are not finite and for integers of
/// more than 64 bits; both with the JSON pointer of the value.
nlohmann::json JsonOf(pybind11::handle value);

}  // namespace trovik::python
