// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// Marks declarations that cross a library boundary: visible by name, with one type identity
/// everywhere, so that dynamic casts and thrown pointers work between the host and its plug-ins.
#define TROVIK_API __attribute__((visibility("default")))

/// The stages of the vertex step must be inlined into the loop of each kernel; by default,
/// compilers keep most of them out of line.
#define TROVIK_FORCE_INLINE inline __attribute__((always_inline))

namespace trovik {

using std::int16_t;
using std::int32_t;
using std::int64_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

}  // namespace trovik
