// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/DisplayVertex.h"

#include <cstddef>
#include <mutex>
#include <vector>

namespace trovik::studio {

/// Keeps the vertex arrays of surface updates that are no longer used, so that later updates can
/// reuse them. Clearing a new array of several megabytes and faulting in its pages takes as long as
/// packing it.
///
/// All functions: any thread.
class VertexArrays {
public:
    /// Returns an array of this size with unspecified contents.
    std::vector<DisplayVertex> Take(std::size_t size);
    /// Keeps the array for reuse, or frees it if many bytes are kept already.
    void Return(std::vector<DisplayVertex> array);

private:
    std::mutex mutex;
    std::vector<std::vector<DisplayVertex>> kept;
    std::size_t keptBytes = 0;
};

}  // namespace trovik::studio
