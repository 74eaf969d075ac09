// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// Exports a declaration from its library. An exported type has the same identity in the host and
/// in its plug-ins, so dynamic_cast and exceptions thrown by pointer work across the boundary.
#define TROVIK_API __attribute__((visibility("default")))

/// Forces inlining. The stages of the vertex step must be inlined into each kernel's loop, but
/// compilers leave most of them out of line by default.
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
