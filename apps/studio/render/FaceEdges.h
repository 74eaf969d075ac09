// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/PatchLayout.h"

#include <cstdint>
#include <future>
#include <memory>
#include <vector>

namespace trovik::studio {

/// A range of an index buffer.
struct IndexRange {
    uint32_t first = 0;
    uint32_t count = 0;
};

/// The lines around the faces of a bucket layout, as pairs of vertex numbers within each patch.
struct FaceEdges {
    std::vector<uint16_t> lines;
    /// One for each patch.
    std::vector<IndexRange> patches;
};

/// Cost: a few tenths of a second for a million faces.
FaceEdges FaceEdgesOf(const PatchLayout& layout);

/// Computes the lines on another thread. The future does not block when it is destroyed.
std::future<FaceEdges> StartFaceEdges(std::shared_ptr<const PatchLayout> layout);

}  // namespace trovik::studio
