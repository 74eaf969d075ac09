// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"

#include <memory>
#include <vector>

namespace trovik {

/// The pick trees of a geometry's levels. A tree is built when its level is first needed. It is
/// then kept and follows the changes of its level, so that switching back and forth between levels
/// rebuilds nothing.
class TROVIK_API LevelTrees {
public:
    /// Borrows the geometry.
    explicit LevelTrees(LevelGeometry& ofGeometry) : geometry(ofGeometry) {}

    /// The tree of the bound level. The reference is valid until the next call after levels were
    /// added or removed. Deletes the trees of levels that no longer exist or whose level 0 was
    /// replaced.
    /// \throw Cancelled while a tree is built.
    PatchTree& OfBound(JobControl* job = nullptr);

private:
    LevelGeometry& geometry;
    std::vector<std::unique_ptr<PatchTree>> trees;
};

}  // namespace trovik
