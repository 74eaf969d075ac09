// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"

#include <memory>
#include <vector>

namespace trovik {

/// The pick trees of a geometry's levels. Each tree is built when it is first needed. It is then
/// kept and updated when its level changes, so that switching between levels does not rebuild any
/// tree.
class TROVIK_API LevelTrees {
public:
    /// Borrows the geometry.
    explicit LevelTrees(LevelGeometry& ofGeometry) : geometry(ofGeometry) {}

    /// Returns the tree of the bound level. The reference stays valid until the first call after
    /// levels have been added or removed. Deletes the trees of levels that no longer exist, and all
    /// trees that were built for a previous level 0.
    /// \throw Cancelled if the job is cancelled while a tree is built.
    PatchTree& OfBound(JobControl* job = nullptr);

private:
    LevelGeometry& geometry;
    std::vector<std::unique_ptr<PatchTree>> trees;
};

}  // namespace trovik
