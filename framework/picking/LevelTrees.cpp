// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/LevelTrees.h"

namespace trovik {

PatchTree& LevelTrees::OfBound(JobControl* job) {
    std::erase_if(trees, [](const auto& tree) { return !tree->IsCurrent(); });
    for (const auto& tree : trees)
        if (tree->Level() == geometry.Bound()) return *tree;
    return *trees.emplace_back(std::make_unique<PatchTree>(geometry.Bound(), job));
}

uint64_t LevelTrees::Bytes() const {
    uint64_t bytes = 0;
    for (const auto& tree : trees) bytes += tree->Bytes();
    return bytes;
}

}  // namespace trovik
