// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/detail/StrokeTessellator.h"
#include "framework/tessellation/EdgeOperations.h"

#include <vector>

namespace trovik {

/// The passes of StrokeTessellator over one region.
class RegionPasses {
public:
    RegionPasses(DetailRegion& region, const StrokeTessellator::Reach& reach, float length);

    /// \return the number of edits.
    int Run(const StrokeTessellator::Passes& passes);
    /// The edits, with vertices of the region's mesh, except that the removed vertex of a collapse
    /// is one of the level.
    const std::vector<StrokeTessellator::Edit>& Edits() const { return edits; }
    /// The number of splits after which Run stops, so that a dab with a very small target does not
    /// take too long; later dabs continue.
    static constexpr int maxSplits = 200000;

private:
    bool IsReached(uint32_t halfEdge) const;
    /// Whether the edge is too long and one of its faces is reached.
    bool IsToBeSplit(uint32_t halfEdge) const;
    void Touch(uint32_t vertex);
    bool IsTouched(uint32_t vertex) { return region.Data(vertex).isTouched; }
    int SplitLongEdges();
    /// Splits the edge, or a longer one that must be split first. \return the new vertex or `none`.
    uint32_t SplitTowards(uint32_t halfEdge);
    int CollapseShortEdges();
    int FlipEdges();
    void Relax();

    DetailRegion& region;
    EditableMesh& mesh;
    const StrokeTessellator::Reach& reach;
    EdgeLengths lengths;
    std::vector<StrokeTessellator::Edit> edits;
};

}  // namespace trovik
