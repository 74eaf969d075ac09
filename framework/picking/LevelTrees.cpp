// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/LevelTrees.h"

namespace trovik {

PatchTree& LevelTrees::OfBound(JobControl* job) {
    std::erase_if(trees, [](const auto& tree) { return !tree->IsCurrent(); });
    for (const auto& tree : trees)
        if (tree->Level() == geometry.Bound()) return *tree;
    return *trees.emplace_back(std::make_unique<PatchTree>(geometry.Bound(), job));
}

}  // namespace trovik
