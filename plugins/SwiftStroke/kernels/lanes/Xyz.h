// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// \file The lane types hold one or more numbers and have the same operations at every width, so
/// that formulas are written once, as templates over these types. Each operation is one IEEE
/// operation per lane, without fused operations, so that all widths give bit-identical results.
///
/// - F32xN and I32xN hold N floats and N integers. A formula over them computes one component of N
///   vertices.
/// - LanesN names the types of a width. Its Vectors hold `vectors` vectors, each in four lanes in
///   the order of HWVector. Parameters named `at` are functions that return the argument for
///   vector j of a register.
///
/// Templates over lanes, and only these, may be included in the regions that are compiled for an
/// instruction set beyond the baseline (see batch/Stages8.cpp). Headers with templates over lanes
/// therefore contain nothing else, and include only headers that such a file has included before.
namespace trovik {

/// The x, y and z of one or more vectors.
template <class F>
struct Xyz {
    F x, y, z;

    TROVIK_FORCE_INLINE Xyz operator-(const Xyz& o) const { return {x - o.x, y - o.y, z - o.z}; }
};

}  // namespace trovik
